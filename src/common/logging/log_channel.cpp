#include "common/logging/log_channel.h"

#include <utility>

#include "common/text/fmt.h"

namespace logging {

log_channel_t::log_channel_t(std::shared_ptr<log_t> log, const std::string& name)
    : log_(std::move(log)), format_(std::make_shared<format::line_format_t>(name)) {}

void log_channel_t::info(const std::string& text) const {
  write(kLevelInfo, log_ ? log_->current_indent() : 0, text);
}

void log_channel_t::info(const std::string& tmpl, const std::string& a1) const {
  info(util::fmt_t::format(tmpl, a1));
}

void log_channel_t::info(const std::string& tmpl, const std::string& a1,
                         const std::string& a2) const {
  info(util::fmt_t::format(tmpl, a1, a2));
}

void log_channel_t::info(const std::string& tmpl, const std::string& a1, const std::string& a2,
                         const std::string& a3) const {
  info(util::fmt_t::format(tmpl, a1, a2, a3));
}

void log_channel_t::info(const std::string& tmpl, const std::string& a1, const std::string& a2,
                         const std::string& a3, const std::string& a4) const {
  info(util::fmt_t::format(tmpl, a1, a2, a3, a4));
}

void log_channel_t::info_at(int indent, const std::string& text) const {
  write(kLevelInfo, indent, text);
}

void log_channel_t::step_line(const std::string& text) const {
  write(kLevelStep, log_ ? log_->current_indent() : 0, text);
}

// Warnings and errors stand at the left edge whatever the nesting, so that they are found.
void log_channel_t::warn(const std::string& text) const { write(kLevelWarning, 0, text); }

void log_channel_t::warn(const std::string& tmpl, const std::string& a1) const {
  warn(util::fmt_t::format(tmpl, a1));
}

void log_channel_t::warn(const std::string& tmpl, const std::string& a1,
                         const std::string& a2) const {
  warn(util::fmt_t::format(tmpl, a1, a2));
}

void log_channel_t::error(const std::string& text) const { write(kLevelError, 0, text); }

void log_channel_t::write(int level, int indent, const std::string& text) const {
  if (log_) log_->write(level, indent, format_.get(), text);
}

// The channels live as long as the process, for the same reason as the log itself: clean-up
// during exit may still report.
const log_channel_t& default_channel() {
  static const auto* const channel = new log_channel_t(log_t::instance(), "");
  return *channel;
}

const log_channel_t& oralib() {
  static const auto* const channel = new log_channel_t(log_t::instance(), "oralib");
  return *channel;
}

const log_channel_t& cli() {
  static const auto* const channel = new log_channel_t(log_t::instance(), "cli");
  return *channel;
}

}  // namespace logging
