#include "client_platform.h"

namespace dsl_test {

const char* missing_client_library() { return "/no/such/folder/libclntsh.so"; }
// Loaded by every process of the host build already (the library links zlib).
const char* library_without_oci() { return "libz.so.1"; }

}  // namespace dsl_test
