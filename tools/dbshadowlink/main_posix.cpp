// Entry point on POSIX: the arguments are taken as UTF-8 bytes; the parser refuses any that
// are not.
#include <string>
#include <vector>

#include "host.h"

int main(int argc, char** argv) {
  return host::host_main(std::vector<std::string>(argv + 1, argv + argc));
}
