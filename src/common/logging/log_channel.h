// log_channel_t: a named way into the shared log. All Oracle code writes on "oralib"; the
// common library's own warnings go to the default (unnamed) channel. Warnings and errors are
// never indented; information and step lines use the calling thread's indent.
#pragma once
#include <memory>
#include <string>

#include "common/logging/line_format.h"
#include "common/logging/log.h"

namespace logging {

class log_channel_t {
 public:
  log_channel_t(std::shared_ptr<log_t> log, const std::string& name);

  void info(const std::string& text) const;
  void info(const std::string& tmpl, const std::string& a1) const;
  void info(const std::string& tmpl, const std::string& a1, const std::string& a2) const;
  void info(const std::string& tmpl, const std::string& a1, const std::string& a2,
            const std::string& a3) const;
  void info(const std::string& tmpl, const std::string& a1, const std::string& a2,
            const std::string& a3, const std::string& a4) const;
  void info_at(int indent, const std::string& text) const;
  void step_line(const std::string& text) const;
  void warn(const std::string& text) const;
  void warn(const std::string& tmpl, const std::string& a1) const;
  void warn(const std::string& tmpl, const std::string& a1, const std::string& a2) const;
  void error(const std::string& text) const;
  // Any level at a given indent; the operations above end here.
  void write(int level, int indent, const std::string& text) const;

  const std::shared_ptr<log_t>& log() const { return log_; }
  const std::shared_ptr<format::line_format_t>& format() const { return format_; }

 private:
  std::shared_ptr<log_t> log_;
  std::shared_ptr<format::line_format_t> format_;
};

// The channels of this program, built on first use on the singleton log ("dbg" excepted: it
// has a log of its own, set up with the debug receiver at start-up).
const log_channel_t& default_channel();
const log_channel_t& oralib();
const log_channel_t& cli();

}  // namespace logging
