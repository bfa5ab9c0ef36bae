// The host's standard streams and input files. Everything the host writes is UTF-8; on Windows
// the streams are switched to binary mode so that no code page or line-end translation touches
// the bytes. Main thread only.
#pragma once
#include <string>
#include <string_view>

namespace host {

// Call once before any output or input.
void init_console_io();

// Writes UTF-8 text. A Windows console gets the text as UTF-16 so that it shows every
// character; a file or pipe gets the UTF-8 bytes.
void write_stdout(std::string_view utf8);
void write_stderr(std::string_view utf8);
void flush_stdout();

// Reads a whole file whose path is UTF-8; "-" reads standard input to its end. On failure
// returns false and sets `error` to what the system answered.
[[nodiscard]] bool read_whole_file(const std::string& path, std::string& bytes, std::string& error);

}  // namespace host
