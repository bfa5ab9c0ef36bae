#include "oci_library.h"

#include "test_platform.h"

namespace ocisim_test {

std::string oci_library_t::built_path() {
  return env_value("DSL_BIN_DIR") + "/ocisim/" + file_name();
}

bool oci_library_t::bind_all(std::string& error) {
  for (const auto& entry : specific::oracle::oci_entries(api_)) {
    *entry.slot = symbol(entry.name);
    if (*entry.slot == nullptr) {
      error = std::string("entry point ") + entry.name + " is missing";
      return false;
    }
  }
  return true;
}

}  // namespace ocisim_test
