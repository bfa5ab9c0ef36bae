// What the client-layer unit tests need to know of the platform: a library that cannot be
// found and a system library that has none of the OCI entry points. Any thread.
#pragma once

namespace dsl_test {

const char* missing_client_library();
const char* library_without_oci();

}  // namespace dsl_test
