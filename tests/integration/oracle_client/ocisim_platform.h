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
// Loads the built simulated client a second time with the platform's loader and unloads it
// again (the gate keeps its own load); false when either step failed. Takes the loader's lock,
// as any load does.
bool load_and_unload_client();

}  // namespace ocisim_test
