#include "common/logging/log_path.h"

#include <exception>

#include "common/exc/exc_base.h"
#include "common/product.h"
#include "common/logging/log_file.h"
#include "common/text/compare.h"
#include "common/text/convert.h"
#include "common/win/path.h"
#include "common/win/path_ops.h"
#include "common/win/reg_key.h"

namespace logging {

namespace {

const char kEmptyList[] = "Log paths list is empty.";
const char kAllLocked[] = "All log files are locked.";

}  // namespace

bool log_dir_from_registry(std::u16string& dir) {
  try {
    const win::win_reg_key_ptr_t key =
        win::open_subkey(/*parent=*/0, product::kSettingsKey, win::kKeyRead64);
    if (!key) return false;
    std::u16string value;
    if (!key->query_string(util::from_utf8(kLogDirectoryValue), value)) return false;
    dir = value;
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

std::u16string default_log_dir() {
  std::u16string common;
  if (win::common_appdata_folder(common) != 0) return std::u16string();
  return common + u"\\" + product::kDataFolder + u"\\";
}

std::u16string join_log_dir(const std::u16string& dir, const std::u16string& name) {
  return win::join_path(dir, name, u"\\");
}

std::u16string default_log_path(const std::u16string& name) {
  std::u16string dir;
  if (!log_dir_from_registry(dir)) dir = default_log_dir();
  return join_log_dir(dir, name);
}

std::string select_log_path(const std::vector<std::string>& paths) {
  if (paths.empty()) throw exc::runtime_exc_t(kEmptyList);
  std::exception_ptr last_failure;
  for (const std::string& path : paths) {
    try {
      win::create_directories(win::path_holder_t(path));
      return path;
    } catch (const std::exception&) {
      last_failure = std::current_exception();
    }
  }
  // A configured directory that cannot be used must not cost the log: the standard folder
  // takes the file instead. A path the caller chose elsewhere is the caller's to mend.
  std::u16string configured;
  if (log_dir_from_registry(configured)) {
    const std::u16string first = util::from_utf8(paths.front());
    const int relation = win::path_relation(first, configured);
    if (relation == win::kPathInside || relation == win::kPathEqual) {
      const std::string fallback = util::to_utf8(
          join_log_dir(default_log_dir(), util::from_utf8(win::file_name(paths.front()))));
      win::create_directories(win::path_holder_t(fallback));
      return fallback;
    }
  }
  std::rethrow_exception(last_failure);
}

std::string numbered_log_name(const std::string& path, int number) {
  if (number == 0) return path;
  const std::string n = std::to_string(number);
  const size_t dot = path.rfind('.');
  if (dot != std::string::npos) {
    const std::string ending = path.substr(dot);
    if (util::ends_with_nocase(ending, ".log") && ending.size() == 4) {
      return path.substr(0, dot) + "." + n + ending;
    }
    if (dot + 1 == path.size()) return path.substr(0, dot) + "." + n;
  }
  return path + "." + n + ".log";
}

std::shared_ptr<receiver::log_file_t> open_log(const std::string& path, std::string& used_path) {
  for (int i = 0; i < kLogNameAttempts; ++i) {
    const std::string candidate = numbered_log_name(path, i);
    try {
      auto file = std::make_shared<receiver::win_log_file_t>(candidate);
      used_path = candidate;
      return file;
    } catch (const exc::file_locked_exc_t&) {
      // Another process writes there: the next number is tried.
    }
  }
  throw exc::runtime_exc_t(kAllLocked);
}

}  // namespace logging
