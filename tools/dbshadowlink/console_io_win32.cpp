#include "console_io.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>

#include "system_text.h"
#include "utf.h"

namespace host {

namespace {

bool is_console(DWORD which) {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(which), &mode) != 0;
}

void write_stream(FILE* stream, DWORD which, std::string_view utf8) {
  if (utf8.empty()) return;
  if (is_console(which)) {
    std::u16string wide;
    size_t bad_offset = 0;
    if (utf8_to_utf16(utf8, wide, bad_offset)) {
      fflush(stream);
      DWORD written = 0;
      WriteConsoleW(GetStdHandle(which), wide.data(), static_cast<DWORD>(wide.size()), &written,
                    /*lpReserved=*/nullptr);
      return;
    }
  }
  fwrite(utf8.data(), 1, utf8.size(), stream);
}

}  // namespace

void init_console_io() {
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
}

void write_stdout(std::string_view utf8) { write_stream(stdout, STD_OUTPUT_HANDLE, utf8); }

void write_stderr(std::string_view utf8) {
  write_stream(stderr, STD_ERROR_HANDLE, utf8);
  fflush(stderr);
}

void flush_stdout() { fflush(stdout); }

bool read_whole_file(const std::string& path, std::string& bytes, std::string& error) {
  std::string result;
  if (path == "-") {
    char buffer[65536];
    size_t got = 0;
    while ((got = fread(buffer, 1, sizeof buffer, stdin)) > 0) result.append(buffer, got);
    if (ferror(stdin)) {
      error = "cannot read standard input";
      return false;
    }
    bytes = std::move(result);
    return true;
  }
  std::u16string wide;
  size_t bad_offset = 0;
  if (!utf8_to_utf16(path, wide, bad_offset)) {
    error = "the path is not valid UTF-8";
    return false;
  }
  HANDLE file = CreateFileW(reinterpret_cast<const wchar_t*>(wide.c_str()), GENERIC_READ,
                            FILE_SHARE_READ | FILE_SHARE_WRITE, /*lpSecurityAttributes=*/nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, /*hTemplateFile=*/nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    error = system_error_text(GetLastError());
    return false;
  }
  char buffer[65536];
  for (;;) {
    DWORD got = 0;
    if (!ReadFile(file, buffer, sizeof buffer, &got, /*lpOverlapped=*/nullptr)) {
      error = system_error_text(GetLastError());
      CloseHandle(file);
      return false;
    }
    if (got == 0) break;
    result.append(buffer, got);
  }
  CloseHandle(file);
  bytes = std::move(result);
  return true;
}

}  // namespace host
