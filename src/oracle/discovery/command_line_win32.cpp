#include <cstdlib>

#include "common/text/convert.h"
#include "oracle/discovery/command_line.h"

namespace specific::oracle {

int run_command_line(const std::u16string& commandLine) {
  // `system` hands the line to the interpreter that COMSPEC names, in the system code page.
  return std::system(util::to_multibyte(commandLine).c_str());
}

}  // namespace specific::oracle
