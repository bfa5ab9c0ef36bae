// Where the library's log lies and how its file is opened: the directory from the machine's
// settings (LogDirectory) or the standard folder, the choice among candidate paths with its
// fallback, and the numbered names that let several processes of one name each have a file.
// Called by the start-up on the thread of OracleVssInitLib.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "common/logging/receiver.h"

namespace logging {

// The value of the product's settings key that names the log directory.
constexpr char kLogDirectoryValue[] = "LogDirectory";
// How many names open_log tries: the path itself and the numbers 1 to 999.
constexpr int kLogNameAttempts = 1000;

// Reads LogDirectory; true when a value was found. A missing key or value and any failure on
// the way count as no value; `dir` is then not touched.
bool log_dir_from_registry(std::u16string& dir);

// The common application data folder followed by "\Trelo\Backup\"; empty when the system
// cannot name that folder.
std::u16string default_log_dir();

// An empty `dir` gives `name`; a `dir` ending in "/" or "\" gives dir + name; any other gives
// dir + "\" + name.
std::u16string join_log_dir(const std::u16string& dir, const std::u16string& name);

// LogDirectory, else the standard folder, joined with `name`.
std::u16string default_log_path(const std::u16string& name);

// The first path of `paths` (narrow) whose folders exist or can be created. When none can be,
// and the first lies at or below LogDirectory, the standard folder with the first path's file
// name (its folders created); otherwise the last failure passes on. An empty list fails with
// runtime_exc_t "Log paths list is empty.".
std::string select_log_path(const std::vector<std::string>& paths);

// The name of the `number`th attempt: "X.log" gives "X.<n>.log" (the ending's letter case
// kept), "X." gives "X.<n>", any other "P" gives "P.<n>.log". Number 0 is `path` itself.
std::string numbered_log_name(const std::string& path, int number);

// Opens the log file at `path` or, while that is held by another open, at the numbered names
// 1 to 999; `used_path` tells which. All held: runtime_exc_t "All log files are locked.".
// Other failures of an open pass on at once.
std::shared_ptr<receiver::log_file_t> open_log(const std::string& path, std::string& used_path);

}  // namespace logging
