#include "common/exc/exc_log.h"

#include "common/exc/exc_base.h"
#include "common/text/fmt.h"
#include "common/text/numbers.h"

namespace exc {

namespace {

const char kNoMessage[] = "Exception message is not available.";
// The leading line feed makes the sentence a line of its own in the log.
const char kThreadLine[] = "\nAn exception was thrown from thread [%1].";

// `text`, then the exception's own lines below it when it has any.
std::string with_what(const std::string& text, const std::exception& e) {
  const char* what = e.what();
  if (what == nullptr) return text;
  return text + "\n" + what;
}

void warn_with(const logging::log_channel_t& channel, const std::string& text,
               const std::exception& e) {
  channel.warn(with_what(text, e));
}

void error_with(const logging::log_channel_t& channel, const std::string& text,
                const std::exception& e) {
  channel.error(with_what(text, e) + thread_line(e));
}

}  // namespace

std::string thread_line(const std::exception& e) {
  const auto* own = dynamic_cast<const exc_base_t*>(&e);
  return thread_line(own != nullptr ? own->thread_id() : 0);
}

std::string thread_line(uint32_t thread_id) {
  return util::fmt_t::format(kThreadLine, thread_id != 0 ? util::to_str(thread_id) : "n/a");
}

// Every operation below runs where a failure is already being handled: building the text must
// not raise a second one.

void log_warn(const logging::log_channel_t& channel, const std::exception& e) {
  try {
    const char* what = e.what();
    if (what == nullptr) {
      channel.error(kNoMessage);
    } else {
      channel.warn(what);
    }
  } catch (const std::exception&) {
  }
}

void log_warn(const logging::log_channel_t& channel, const std::string& text,
              const std::exception& e) {
  try {
    warn_with(channel, text, e);
  } catch (const std::exception&) {
  }
}

void log_warn(const logging::log_channel_t& channel, const std::string& tmpl,
              const std::string& a1, const std::exception& e) {
  try {
    warn_with(channel, util::fmt_t::format(tmpl, a1), e);
  } catch (const std::exception&) {
  }
}

void log_warn(const logging::log_channel_t& channel, const std::string& tmpl,
              const std::string& a1, const std::string& a2, const std::exception& e) {
  try {
    warn_with(channel, util::fmt_t::format(tmpl, a1, a2), e);
  } catch (const std::exception&) {
  }
}

void log_error(const logging::log_channel_t& channel, const std::exception& e) {
  try {
    const char* what = e.what();
    channel.error(std::string(what != nullptr ? what : kNoMessage) + thread_line(e));
  } catch (const std::exception&) {
  }
}

void log_error(const logging::log_channel_t& channel, const std::string& text,
               const std::exception& e) {
  try {
    error_with(channel, text, e);
  } catch (const std::exception&) {
  }
}

void log_error(const logging::log_channel_t& channel, const std::string& tmpl,
               const std::string& a1, const std::exception& e) {
  try {
    error_with(channel, util::fmt_t::format(tmpl, a1), e);
  } catch (const std::exception&) {
  }
}

}  // namespace exc
