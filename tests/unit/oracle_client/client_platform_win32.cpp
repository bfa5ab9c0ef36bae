#include "client_platform.h"

namespace dsl_test {

const char* missing_client_library() { return "C:\\no\\such\\folder\\OCI.dll"; }
const char* library_without_oci() { return "kernel32.dll"; }

}  // namespace dsl_test
