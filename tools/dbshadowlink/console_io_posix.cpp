#include "console_io.h"

#include <cerrno>
#include <cstdio>

#include "system_text.h"

namespace host {

void init_console_io() {}

void write_stdout(std::string_view utf8) { fwrite(utf8.data(), 1, utf8.size(), stdout); }

void write_stderr(std::string_view utf8) {
  fwrite(utf8.data(), 1, utf8.size(), stderr);
  fflush(stderr);
}

void flush_stdout() { fflush(stdout); }

bool read_whole_file(const std::string& path, std::string& bytes, std::string& error) {
  FILE* file = path == "-" ? stdin : fopen(path.c_str(), "rb");
  if (file == nullptr) {
    error = system_error_text(errno);
    return false;
  }
  std::string result;
  char buffer[65536];
  size_t got = 0;
  while ((got = fread(buffer, 1, sizeof buffer, file)) > 0) result.append(buffer, got);
  const bool failed = ferror(file) != 0;
  const int cause = errno;
  if (file != stdin) fclose(file);
  if (failed) {
    error = system_error_text(cause);
    return false;
  }
  bytes = std::move(result);
  return true;
}

}  // namespace host
