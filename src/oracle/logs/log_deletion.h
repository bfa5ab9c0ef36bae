// COracleLogDeletion: has the database delete its own archived logs, by age or by total size,
// through DBMS_BACKUP_RESTORE.DELETEARCHIVEDLOG, so that the control file's records stay right
// and logs on ASM go too. Nothing is deleted on the file system here. On the operation's
// thread, with the holder's one session.
//
// The rules, with this library's decisions where the database's answer leaves a choice:
// - The active logs are the rows of V$ARCHIVED_LOG whose STATUS is not 'D' and that have no
//   NULL column (a log whose NAME was cleared is never touched).
// - They are sorted newest first by SEQUENCE#, read as an unsigned 64-bit number; a sequence
//   that is no number fails the call. Two redo threads often share sequence numbers, so ties
//   are broken by THREAD#, then by RECID, both descending, and last by the path: the order, and
//   with it what the size rule keeps, never depends on the sort's whims or on the view's order.
// - Time rule: a log goes when its FIRST_TIME and NEXT_TIME (UTC) are valid dates, NEXT_TIME is
//   not before FIRST_TIME, and the limit (now minus `minutes`, UTC) is later than NEXT_TIME.
//   Dates are compared as day counts (log_calendar.h): within half a second is equal and never
//   later, so a log whose NEXT_TIME is the limit stays. A time that does not parse or is no
//   real date (31/02) keeps its log, silently. A limit outside the years 100 to 9999 (minutes
//   near INT_MAX reach back before year 1) is no valid date and keeps every log.
// - Size rule: walking newest first, a log is removed once the running total of the logs
//   before it exceeds `size`; every log's size is added, removed or not. So the newest logs
//   are kept up to the limit, the one that crosses it is kept too, and `size` 0 keeps only the
//   newest log. The total saturates instead of wrapping. A size that is no number fails the
//   call ("bad cast"); logs removed before it stay removed.
// - One log that cannot be removed is logged as "Failed to remove log [%1]" and never fails
//   the call. Its values are checked before they are filled into the block: numbers must be
//   digits, the path has its apostrophes doubled.
#pragma once
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "oracle/logs/arch_log_info.h"

namespace specific::oracle {

class COracleSessionHolder;

class COracleLogDeletion {
 public:
  explicit COracleLogDeletion(std::shared_ptr<COracleSessionHolder> holder);

  // Asks whether the instance is open and its database active; when not, nothing is done.
  // Then the rule with the limit of now minus `minutes`.
  void delete_by_time(int32_t minutes);
  void delete_by_size(uint64_t size);

  // The active logs, sorted (see above). Failures get "Failed to get active archive logs".
  arch_log_list_t get_active_logs();
  // `limit` is "dd/mm/yyyy hh:mm:ss".
  void remove_by_time(const std::u16string& limit);
  void remove_by_size(uint64_t size);
  // Never throws: a failure is logged.
  void remove_log(const SArchLogInfo& log) noexcept;

 private:
  bool database_ready();

  std::shared_ptr<COracleSessionHolder> holder_;
};

namespace logs {

// The query of the active logs.
std::string active_logs_statement();

// One row of the query (11 columns) as a record.
arch_log_ptr_t active_log_from_row(const std::vector<std::u16string>& row);

// Sorts newest first; throws when a sequence is no number.
void sort_active_logs(arch_log_list_t& logs);

// An unsigned 64-bit number from decimal digits only; otherwise runtime_exc_t "bad cast".
uint64_t parse_u64(const std::u16string& text);

// The rules over a sorted list: `remove` is called for each log the rule selects, in list
// order. The time rule's limit is "dd/mm/yyyy hh:mm:ss".
void apply_time_rule(const arch_log_list_t& logs, const std::u16string& limit,
                     const std::function<void(const SArchLogInfo&)>& remove);
void apply_size_rule(const arch_log_list_t& logs, uint64_t size,
                     const std::function<void(const SArchLogInfo&)>& remove);

// Whether the time rule removes this one log at `limit`.
bool time_rule_removes(const SArchLogInfo& log, const std::u16string& limit);

// The PL/SQL block that deletes one log; throws when a number field is not digits.
std::string delete_log_block(const SArchLogInfo& log);

}  // namespace logs

}  // namespace specific::oracle
