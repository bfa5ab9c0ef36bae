#include "frame/error_frame.h"

#include <cstdlib>
#include <cstring>

#include "common/exc/exc_log.h"
#include "common/text/convert.h"

namespace specific::oracle::frame {

DSL_WCHAR* make_out_string(const std::u16string& text) {
  static_assert(sizeof(DSL_WCHAR) == sizeof(char16_t), "exported text is UTF-16");
  const size_t bytes = text.size() * 2 + 2;
  auto* out = static_cast<DSL_WCHAR*>(std::malloc(bytes));
  std::memcpy(out, text.c_str(), bytes);
  return out;
}

std::u16string copy_arg(const DSL_WCHAR* arg) {
  return std::u16string(reinterpret_cast<const char16_t*>(arg));
}

DSL_WCHAR* exception_to_text(const std::string& context, const std::exception& e) {
  std::u16string text;
  const char* what = e.what();
  if (what != nullptr) text = util::to_unicode_safe(what);
  exc::log_error(logging::oralib(), context, e);
  return make_out_string(text);
}

}  // namespace specific::oracle::frame
