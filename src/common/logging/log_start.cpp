#include "common/logging/log_start.h"

#include <atomic>
#include <iostream>
#include <memory>
#include <mutex>

#include "common/logging/header_block.h"
#include "common/logging/log_file_rotation.h"
#include "common/logging/log_path.h"
#include "common/logging/receiver_stdout.h"
#include "common/text/compare.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"

namespace logging {

namespace {

const char kLogFailed[] = "Failed to initialize log [%1].";
const char kStdoutFailed[] = "Failed to initialize stdout log.";
const char16_t kLogArgument[] = u"-log";
const char16_t kVerboseArgument[] = u"-verbose";

std::atomic<bool> g_verbose{false};

struct started_t {
  std::mutex lock;
  std::u16string name;
};

started_t& started() {
  static auto* const state = new started_t;
  return *state;
}

// The log is what failed, so the console is where it is told.
void tell_console(const std::string& text, const std::exception& failure) {
  try {
    const char* what = failure.what();
    std::cout << text << "\n" << (what != nullptr ? what : "") << std::endl;
  } catch (...) {
  }
}

}  // namespace

bool attach_receiver(log_t& log, const std::vector<std::string>& paths, bool rotate_enabled) {
  std::shared_ptr<receiver::log_file_t> file;
  if (!paths.empty()) {
    try {
      std::string used_path;
      file = open_log(select_log_path(paths), used_path);
      check_log_size(*file);
    } catch (const std::exception& failure) {
      file.reset();
      tell_console(util::fmt_t::format(kLogFailed, paths.front()), failure);
    }
  } else {
    try {
      file = std::make_shared<receiver::stdout_log_file_t>();
    } catch (const std::exception& failure) {
      tell_console(kStdoutFailed, failure);
    }
  }
  if (!file) return false;
  install_rotation(log);
  log.set_file(file);
  log.mark_opened();
  log.set_rotate_enabled(rotate_enabled);
  return true;
}

bool attach_receiver(const std::vector<std::string>& paths, bool rotate_enabled) {
  return attach_receiver(*log_t::instance(), paths, rotate_enabled);
}

std::u16string log_start(const log_channel_t& channel, const std::u16string& name,
                         const std::vector<std::u16string>& args) {
  {
    std::lock_guard<std::mutex> guard(started().lock);
    started().name = name;
  }
  try {
    std::u16string path;
    const auto log_at = util::find_arg(args, kLogArgument);
    if (log_at && *log_at + 1 < args.size()) {
      path = args[*log_at + 1];
    } else {
      path = default_log_path(name);
    }
    g_verbose = util::find_arg(args, kVerboseArgument).has_value();

    // The system code page, as the agent's own tools name files; the file layer then reads
    // the text as UTF-8, so a name beyond ASCII may reach the system changed.
    const std::string narrow = util::to_multibyte(path);
    std::vector<std::string> paths;
    if (!narrow.empty()) paths.push_back(narrow);
    const std::shared_ptr<log_t>& log = channel.log() ? channel.log() : log_t::instance();
    attach_receiver(*log, paths, /*rotate_enabled=*/true);
    write_header_block(channel);
    return path;
  } catch (const std::exception&) {
    // A library without a log is still a working library.
    return std::u16string();
  }
}

std::u16string log_start(const std::u16string& name, const std::vector<std::u16string>& args) {
  return log_start(default_channel(), name, args);
}

bool verbose() { return g_verbose; }

std::u16string started_log_name() {
  std::lock_guard<std::mutex> guard(started().lock);
  return started().name;
}

}  // namespace logging
