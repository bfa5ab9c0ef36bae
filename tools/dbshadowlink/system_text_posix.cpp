#include "system_text.h"

#include <cstring>

namespace host {

std::string system_error_text(unsigned long code) {
  return std::string(std::strerror(static_cast<int>(code))) + " (errno " + std::to_string(code) +
         ")";
}

}  // namespace host
