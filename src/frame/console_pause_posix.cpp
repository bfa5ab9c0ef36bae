#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <string>

#include "frame/console_pause.h"

namespace specific::oracle {

void console_pause() {
  if (!isatty(STDIN_FILENO)) return;
  std::cout << "Press Enter to continue . . ." << std::flush;
  std::string line;
  std::getline(std::cin, line);
}

}  // namespace specific::oracle
