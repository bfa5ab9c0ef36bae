#include <stdlib.h>

#include "oracle/client/env_variable.h"

namespace specific::oracle {

bool put_env_assignment(const std::string& assignment) {
  // _putenv changes the C runtime's environment and the process's own, so the client sees
  // the value whichever of the two it reads.
  return ::_putenv(assignment.c_str()) == 0;
}

}  // namespace specific::oracle
