#include "common/logging/log_step.h"

#include "common/monitoring/thread_trace.h"
#include "common/text/fmt.h"

namespace logging {

log_step_t::log_step_t(const log_channel_t& channel, const std::string& text)
    : channel_(&channel), text_(text) {
  start();
}

log_step_t::log_step_t(const log_channel_t& channel, const std::string& tmpl,
                       const std::string& a1)
    : channel_(&channel), text_(util::fmt_t::format(tmpl, a1)) {
  start();
}

log_step_t::log_step_t(const std::string& tmpl, const std::string& a1, const std::string& a2)
    : channel_(&oralib()), text_(util::fmt_t::format(tmpl, a1, a2)) {
  start();
}

log_step_t::log_step_t(const std::string& tmpl, const std::string& a1, const std::string& a2,
                       const std::string& a3)
    : channel_(&oralib()), text_(util::fmt_t::format(tmpl, a1, a2, a3)) {
  start();
}

log_step_t::~log_step_t() {
  // Leaving without ok(), by an exception or an early return, is what "Failed." reports.
  try {
    failed();
  } catch (...) {
    // An exception must not leave a destructor, least of all during unwinding.
  }
  monitoring::pop_step();
  text_.clear();
}

void log_step_t::start() {
  monitoring::push_step(text_);
  channel_->step_line(text_);
  if (channel_->log()) channel_->log()->indent_more();
}

void log_step_t::ok() {
  if (closed_) return;
  closed_ = true;
  if (channel_->log()) channel_->log()->indent_less();
  channel_->step_line(text_ + " ok.");
}

void log_step_t::failed() {
  if (closed_) return;
  closed_ = true;
  if (channel_->log()) channel_->log()->indent_less();
  const int indent = channel_->log() ? channel_->log()->current_indent() : 0;
  channel_->write(kLevelInfo, indent, text_ + " Failed.");
}

}  // namespace logging
