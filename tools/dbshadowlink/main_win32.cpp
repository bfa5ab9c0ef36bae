// Entry point on Windows: the arguments arrive as UTF-16 (wmain, linked with -municode) and
// are handed on as UTF-8.
#include <string>
#include <vector>

#include "host.h"
#include "utf.h"

int wmain(int argc, wchar_t** argv) {
  std::vector<std::string> args;
  for (int i = 1; i < argc; ++i) {
    const std::wstring arg(argv[i]);
    args.push_back(host::utf16_to_utf8(std::u16string(arg.begin(), arg.end())));
  }
  return host::host_main(args);
}
