// log_step_t: a scoped piece of work in the log. It writes its text as a step line, indents
// what comes in between, and ends with "<text> ok." when ok() was called, or "<text> Failed."
// when it is left without it (an exception or an early return). Belongs to the thread that
// made it; the destructor never throws.
#pragma once
#include <string>

#include "common/logging/log_channel.h"

namespace logging {

class log_step_t {
 public:
  log_step_t(const log_channel_t& channel, const std::string& text);
  log_step_t(const log_channel_t& channel, const std::string& tmpl, const std::string& a1);
  // On the "oralib" channel.
  log_step_t(const std::string& tmpl, const std::string& a1, const std::string& a2);
  log_step_t(const std::string& tmpl, const std::string& a1, const std::string& a2,
             const std::string& a3);
  ~log_step_t();

  log_step_t(const log_step_t&) = delete;
  log_step_t& operator=(const log_step_t&) = delete;

  void ok();

 private:
  void start();
  void failed();

  bool closed_ = false;
  const log_channel_t* channel_;
  std::string text_;
};

}  // namespace logging
