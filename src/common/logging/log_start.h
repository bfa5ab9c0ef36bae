// Starting the library's log: choosing its file from the arguments or the machine's settings,
// attaching the receiver to the process-wide log, and writing the header block. Called once,
// by OracleVssInitLib, on its thread, before any other export; it never fails the caller: a
// log that cannot be started is reported on standard output and the library runs without.
#pragma once
#include <string>
#include <vector>

#include "common/logging/log.h"
#include "common/logging/log_channel.h"

namespace logging {

// Gives `log` a receiver: with `paths`, the log file (select_log_path, open_log and a first
// size check, so that a file left too large is rotated at once); without, the standard
// output. Rotation is then installed and enabled as asked. On failure the reason goes to
// standard output ("Failed to initialize log [<first path>]." or "Failed to initialize stdout
// log." and the failure's text) and no receiver is attached. True when one was.
bool attach_receiver(log_t& log, const std::vector<std::string>& paths, bool rotate_enabled);
// The same for the process-wide log.
bool attach_receiver(const std::vector<std::string>& paths, bool rotate_enabled);

// The start-up on `channel`'s log, with `name` as the module name: the path is the one after
// "-log" in `args` (letter case aside), else default_log_path(name); "-verbose" sets verbose().
// Attaches the receiver with rotation, writes the header block on `channel`, and answers the
// path. Any failure is swallowed and answered with an empty path.
std::u16string log_start(const log_channel_t& channel, const std::u16string& name,
                         const std::vector<std::u16string>& args);
// The same on the default channel: what OracleVssInitLib calls.
std::u16string log_start(const std::u16string& name, const std::vector<std::u16string>& args);

// Whether the last start-up was asked for "-verbose". Nothing in the library reads it.
bool verbose();

// The module name of the last start-up, empty before the first.
std::u16string started_log_name();

}  // namespace logging
