// Where the built simulated client is, as this platform loads it. Main thread only.
#pragma once
#include <string>

namespace backup_test {

std::string ocisim_library();

}  // namespace backup_test
