#include "common/exc/rethrow.h"

#include <system_error>

#include "common/text/convert.h"
#include "common/text/fmt.h"

namespace exc {

namespace {

// The foreign exception as a member of the family: its text as the first line and, for a
// system error, its code. The text of a system error comes in the system's code page.
runtime_exc_t adopt_foreign(const std::exception& caught) {
  const char* what = caught.what();
  std::string text = what ? what : "";
  uint32_t code = 0;
  if (const auto* sys = dynamic_cast<const std::system_error*>(&caught)) {
    code = static_cast<uint32_t>(sys->code().value());
    text = util::multibyte_to_utf8(text);
  }
  return runtime_exc_t(text, code);
}

[[noreturn]] void rethrow_with_line(const std::string& text, bool is_trace,
                                    const std::exception& caught, const trace_info_t& info) {
  if (const auto* own = dynamic_cast<const exc_base_t*>(&caught)) {
    // The same object goes on, so its dynamic type, code and thread id survive.
    auto* e = const_cast<exc_base_t*>(own);
    if (is_trace) {
      e->add_trace(text);
    } else {
      e->add_message(text);
    }
    e->merge_trace_info(info);
    throw;
  }
  runtime_exc_t replacement = adopt_foreign(caught);
  if (is_trace) {
    replacement.add_trace(text);
  } else {
    replacement.add_message(text);
  }
  replacement.merge_trace_info(info);
  throw replacement;
}

}  // namespace

void rethrow_with_context(const std::string& text, const std::exception& caught,
                          const trace_info_t& info) {
  rethrow_with_line(text, false, caught, info);
}

void rethrow_with_trace(const std::string& text, const std::exception& caught,
                        const trace_info_t& info) {
  rethrow_with_line(text, true, caught, info);
}

void rethrow_with_trace(const std::string& tmpl, const std::string& a1,
                        const std::exception& caught) {
  rethrow_with_line(util::fmt_t::format(tmpl, a1), true, caught, {});
}

void rethrow_with_trace(const std::string& tmpl, const std::string& a1, const std::string& a2,
                        const std::exception& caught) {
  rethrow_with_line(util::fmt_t::format(tmpl, a1, a2), true, caught, {});
}

exc_ptr_t capture(const std::exception& caught) {
  if (const auto* own = dynamic_cast<const exc_base_t*>(&caught)) return own->clone();
  const char* what = caught.what();
  return std::make_shared<runtime_exc_t>(what ? what : "", 0);
}

}  // namespace exc
