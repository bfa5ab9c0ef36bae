#include <cstdlib>

#include "common/text/convert.h"
#include "common/win/path_map_posix.h"
#include "oracle/discovery/command_line.h"

namespace specific::oracle {

namespace {

std::string host_path_of(const std::string& windowsPath) {
  return win::host::host_path(util::from_utf8(windowsPath));
}

}  // namespace

int run_command_line(const std::u16string& commandLine) {
  // `system` runs /bin/sh -c; the program and the redirection target are Windows paths of
  // the machine this build stands for, so they are mapped as the file layer maps them.
  return std::system(map_command_line_paths(util::to_utf8(commandLine), host_path_of).c_str());
}

}  // namespace specific::oracle
