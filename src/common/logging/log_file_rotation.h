// Keeping the log small: at kLogSizeLimit bytes its contents go into "<log>.gz", the older
// archives move up one age ("X.log.gz" to "X.1.log.gz" ... "X.10.log.gz", the oldest dropped),
// and the live file starts again from empty. Runs inside the write path, under the log's lock,
// on whichever thread's write made the check due.
#pragma once
#include <cstdint>
#include <string>

#include "common/logging/log.h"
#include "common/logging/receiver.h"

namespace logging {

constexpr uint64_t kLogSizeLimit = 0xF00000;  // 15 MiB
constexpr int kArchiveAgeLimit = 10;
constexpr char kArchiveExtension[] = ".log.gz";

// The rotation step: nothing below kLogSizeLimit; at or above it the archive "<path>.gz" is
// aged and written afresh from the file's contents, and the file is emptied. A failure to
// read the size gets the trace line "Unable to validate log size limit. Log path: [%1].".
void check_log_size(receiver::log_file_t& file);

// The name of `path` at `age` (0 is `path` itself). An `extension` with its leading dot that
// ends the name gets the age before it ("X.log.gz" and ".log.gz" give "X.<age>.log.gz"); a
// dotless one that is the name's whole last ending likewise ("X.GZ" and "gz" give
// "X.<age>.GZ"). Otherwise a name without a dot gets ".<age>", a name ending in "." gets
// "<age>", and any other name ".<age>".
std::string aged_name(const std::string& path, const std::string& extension, int age);

// Makes room for a fresh `path`: the file of age kArchiveAgeLimit is deleted, then each lower
// age that exists is renamed one up, from the oldest down; ages that do not exist stay gaps.
// A failure gets the trace line "Cannot age file. File path: [%1]. Extension: [%2]. Ages
// limit: [%3].".
void age_file(const std::string& path, const std::string& extension);

// Lets `log`'s size checks run check_log_size on its receiver.
void install_rotation(log_t& log);

}  // namespace logging
