#include <cstdlib>

#include "image_env.h"

namespace ocisim::image {

void set_variable(const std::string& name, const std::string& value) {
  ::setenv(name.c_str(), value.c_str(), 1);
}

}  // namespace ocisim::image
