#include "common/logging/log_file_rotation.h"

#include "common/exc/rethrow.h"
#include "common/logging/zip_writer.h"
#include "common/text/compare.h"
#include "common/text/fmt.h"
#include "common/text/convert.h"
#include "common/win/path_ops.h"
#include "common/win/safe_folder.h"

namespace logging {

namespace {

const char kSizeFailed[] = "Unable to validate log size limit. Log path: [%1].";
const char kAgeFailed[] =
    "Cannot age file. File path: [%1]. Extension: [%2]. Ages limit: [%3].";

std::string path_for_text(const receiver::log_file_t& file) {
  try {
    return file.path();
  } catch (const std::exception&) {
    return std::string();
  }
}

}  // namespace

void check_log_size(receiver::log_file_t& file) {
  uint64_t size = 0;
  try {
    size = file.size();
  } catch (const std::exception& failure) {
    exc::rethrow_with_trace(kSizeFailed, path_for_text(file), failure);
  }
  if (size < kLogSizeLimit) return;
  const std::string archive = file.path() + ".gz";
  age_file(archive, kArchiveExtension);
  // The archive is opened by zlib, which follows links: in the data folder nothing may stand
  // in its place but a plain file (ageing has just moved any away).
  win::check_not_link(util::from_utf8(archive), /*writes=*/true);
  receiver::zip_writer_t zip(archive);
  file.compress_into(zip);
}

std::string aged_name(const std::string& path, const std::string& extension, int age) {
  if (age == 0) return path;
  const std::string n = std::to_string(age);
  const size_t dot = path.rfind('.');
  if (!extension.empty() && extension[0] == '.') {
    if (path.size() >= extension.size() && util::ends_with_nocase(path, extension)) {
      return path.substr(0, path.size() - extension.size()) + "." + n + extension;
    }
  } else if (extension.find('.') == std::string::npos && dot != std::string::npos &&
             util::ends_with_nocase(path, "." + extension) &&
             path.size() - dot - 1 == extension.size()) {
    // A dotless extension is a whole last ending, kept as the name spells it; matched as a
    // plain suffix it would split a name part ("X.gz" would age to "X..1gz").
    return path.substr(0, dot) + "." + n + path.substr(dot);
  }
  if (dot == std::string::npos) return path + "." + n;
  if (dot + 1 == path.size()) return path + n;
  return path + "." + n;
}

void age_file(const std::string& path, const std::string& extension) {
  try {
    for (int age = kArchiveAgeLimit; age >= 0; --age) {
      const win::path_holder_t aged(aged_name(path, extension, age));
      if (!win::file_exists(aged)) continue;
      if (age == kArchiveAgeLimit) {
        win::remove_file(aged);
      } else {
        win::rename_file(aged, win::path_holder_t(aged_name(path, extension, age + 1)));
      }
    }
  } catch (const std::exception& failure) {
    exc::rethrow_with_trace(
        util::fmt_t::format(kAgeFailed, path, extension, std::to_string(kArchiveAgeLimit)),
        failure);
  }
}

void install_rotation(log_t& log) {
  log.set_rotate_handler([](log_t& owner) {
    const auto file = owner.file();
    if (file) check_log_size(*file);
  });
}

}  // namespace logging
