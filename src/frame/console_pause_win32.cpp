#include <windows.h>

#include <cstdlib>

#include "frame/console_pause.h"

namespace specific::oracle {

void console_pause() {
  DWORD mode = 0;
  if (!GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode)) return;
  std::system("pause");
}

}  // namespace specific::oracle
