#include "input_text.h"

#include "host_errors.h"
#include "utf.h"

namespace host {

std::string checked_input_text(std::string bytes, const std::string& file) {
  const std::string name = file == "-" ? std::string("standard input") : "'" + file + "'";
  if (bytes.size() >= 3 && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
  if (bytes.size() >= 2 && (bytes.compare(0, 2, "\xFF\xFE") == 0 || bytes.compare(0, 2, "\xFE\xFF") == 0)) {
    throw usage_error_t(name + " is UTF-16 text; save it as UTF-8");
  }
  std::u16string ignored;
  size_t bad_offset = 0;
  if (!utf8_to_utf16(bytes, ignored, bad_offset)) {
    throw usage_error_t(name + " is not valid UTF-8 (byte " + std::to_string(bad_offset) + ")");
  }
  const size_t nul = bytes.find('\0');
  if (nul != std::string::npos) {
    throw usage_error_t(name + " holds a NUL character (byte " + std::to_string(nul) + ")");
  }
  return bytes;
}

}  // namespace host
