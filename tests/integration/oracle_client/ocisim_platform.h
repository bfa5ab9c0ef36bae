// What the client-layer integration tests need from the platform: where the built ocisim
// client is, and a path the client library cannot be loaded from. Main thread only.
#pragma once
#include <string>

namespace ocisim_test {

// The built simulated client: <bin>/ocisim/OCI.dll or <bin>/ocisim/libclntsh.so, where <bin>
// is DSL_BIN_DIR (as CTest sets it; a Unix path under Wine is turned into a DOS path), else
// the folder of the test executable.
std::string ocisim_library();
std::string missing_library();
// Whether a worker cut off at the time-out is terminated (Windows) rather than abandoned to
// finish its hung call (host build).
bool cut_off_worker_is_terminated();

}  // namespace ocisim_test
