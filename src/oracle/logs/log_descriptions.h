// The description files of backed-up archived logs and the list text built from them. Every
// log that the log backup offers gets one file "<guid>.xml" beside its copy in the logs folder,
// whose one element `archived_log` says where the agent reads the log and what it is; the list
// `archived_logs` holds copies of those elements. The enumeration rebuilds the list from the
// folder alone, and the removal deletes copies and descriptions the agent has taken.
// On the operation's thread; nothing is locked.
//
// Encoding: documents are UTF-8 here and their wide texts are converted as UTF-8, also for
// paths, so that a path with characters outside the system code page survives the round trip
// from the backup through the agent to the removal.
#pragma once
#include <string>

#include "oracle/logs/arch_log_info.h"

namespace specific::oracle::logs {

// The sixteen attributes of one `archived_log` element in their order of writing.
extern const char* const kDescriptionAttributes[16];

// The element text of one log, as written into its description file (one line, no
// declaration): `creationTimeUtc` is the run's time stamp.
std::string description_text(const SArchLogInfo& log, const std::string& creationTimeUtc);

// Writes one description file per log (at its xmlLogPath) in list order, each under the step
// "Saving oracle log description to: %1", and answers the list text. A failure throws with
// "Failed to save oracle log description"; the files written so far stay.
std::u16string write_descriptions(const arch_log_list_t& logs, const std::string& creationTimeUtc);

// The list of the description files in `folder`: every regular file whose name ends in ".xml"
// (case-sensitive) contributes the first element of its document, whatever its name; empty
// files are passed over. A missing folder gives an empty list and is not created. One
// unreadable or unparsable file fails the whole call with "Failed to enum oracle logs
// description".
std::u16string enumerate_descriptions(const std::u16string& folder);

// Deletes, for each child element of the first element of `logsXml`, the log copy (only when
// `isLogCopied` is not false: a log that was not copied is the database's own file) and the
// description (`xmlLogPath`, or `logPath` with its extension replaced by "xml"). A failure of
// one element is logged as "Failed to remove log [%1]" and the next follows; a text that does
// not parse, or an element without `logPath`, ends the call with "Failed to save oracle log
// description". An element without `logPath` stops the walk there: the elements before it are
// handled, those after it are not.
// Only files that lie directly in `folder`, the logs folder, are ever deleted: every copy and
// every description that a backup wrote lies there. A path elsewhere (a list naming the
// database's own log without `isLogCopied`, or any other file of the machine) is logged as a
// warning and left alone, since this process runs as LocalSystem and the list comes from
// outside.
void remove_described_logs(const std::u16string& logsXml, const std::u16string& folder);

// True when `path` names a file directly in `folder` (compared part by part, without regard to
// case); "." and ".." never do, nor the meta file OracleMeta.xml. Only regular files are
// removed: a folder of that name stays.
bool lies_in_logs_folder(const std::string& path, const std::u16string& folder);

// The removal's rule for `isLogCopied`: missing, or any value but "false" and "0" (any case),
// reads as true.
bool is_log_copied_value(const std::string* value);

// Where the description of `logPath` lies when the element does not say: the extension of the
// last part replaced by "xml" (the text from the last "." on), or ".xml" added when there is
// none.
std::string derived_description_path(const std::string& logPath);

}  // namespace specific::oracle::logs
