#include <system_error>

#include "common/exc/sys_text.h"
#include "common/exc/win32_error_texts.h"

namespace exc {

std::string system_error_text(uint32_t code) {
  // The platform layer reports Win32 codes; their Windows texts keep messages identical on both
  // builds. Any other code is read as the host's own error number.
  if (const char* text = win32_error_text(code)) return text;
  std::string text;
  try {
    text = std::system_category().message(static_cast<int>(code));
  } catch (...) {
    text.clear();
  }
  if (text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0) text.resize(text.size() - 2);
  return text;
}

// The host build has no COM error objects.
std::string com_error_description() { return std::string(); }

}  // namespace exc
