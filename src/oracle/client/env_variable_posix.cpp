#include <cstdlib>

#include "oracle/client/env_variable.h"

namespace specific::oracle {

bool put_env_assignment(const std::string& assignment) {
  const size_t equals = assignment.find('=');
  if (equals == std::string::npos || equals == 0) return false;
  const std::string name = assignment.substr(0, equals);
  const std::string value = assignment.substr(equals + 1);
  // As _putenv does, an empty value removes the variable.
  if (value.empty()) return ::unsetenv(name.c_str()) == 0;
  return ::setenv(name.c_str(), value.c_str(), /*overwrite=*/1) == 0;
}

}  // namespace specific::oracle
