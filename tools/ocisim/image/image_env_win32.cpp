#include <windows.h>

#include "image_env.h"

namespace ocisim::image {

// The machine reads its variables with GetEnvironmentVariableW.
void set_variable(const std::string& name, const std::string& value) {
  SetEnvironmentVariableA(name.c_str(), value.c_str());
}

}  // namespace ocisim::image
