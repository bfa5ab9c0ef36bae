// The pieces of the database collector that need no session: the statements it sends and how
// it reads their rows. Pure functions, any thread; the collector (db_info_collector.cpp) and
// its unit tests share them.
#pragma once
#include <string>
#include <vector>

#include "oracle/logs/arch_log_info.h"

namespace specific::oracle {

struct SDbLogRecInfo;

namespace collect_sql {
extern const char* const kLogFiles;        // members of the online logs with their group's size
extern const char* const kDataFiles;
extern const char* const kTempFiles;
extern const char* const kControlFiles;
extern const char* const kLogGroups;
extern const char* const kIsCdb;
extern const char* const kPdbs;
extern const char* const kArchiveCurrent;
extern const char* const kArchiveAll;
extern const char* const kListeners;
extern const char* const kNewestLogRecord;
}  // namespace collect_sql

// The archived-log query: seven columns, the two times in UTC as "yyyy/mm/dd hh24:mi:ss".
std::string archived_logs_sql();

// One row of that query as a record; empty when the row does not have seven columns.
arch_log_ptr_t arch_log_from_row(const std::vector<std::u16string>& row);

// A name with its first "+" at position 0 lies in an ASM disk group.
bool is_asm_path(const std::u16string& path);

// One row of the listener query (name, value): a name beginning "local_" sets `local`, one
// beginning "remote_" sets `remote`; other rows and rows of another width change nothing.
void apply_listener_row(const std::vector<std::u16string>& row, std::u16string& local,
                        std::u16string& remote);

// "<unique>.<domain>", or the unique name alone when the domain is empty.
std::u16string global_name_of(const std::u16string& uniqueName, const std::u16string& domain);

// The statement that looks the remembered log up, in `sql`. False, and no statement, when
// there is no record, its recId or stamp is empty, or either is anything but decimal digits
// (a value that is no number is treated as no record: it never reaches the SQL text).
bool reverted_check_sql(const SDbLogRecInfo* record, std::string& sql);

}  // namespace specific::oracle
