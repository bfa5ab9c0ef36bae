#include "oracle/logs/log_deletion.h"

#include <algorithm>

#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "common/text/numbers.h"
#include "oracle/client/oracle_cmd_exec.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/client/sql_text.h"
#include "oracle/logs/log_calendar.h"

namespace specific::oracle {

namespace logs {

namespace {

// Orders two decimal texts by value without parsing them (leading zeros ignored); a text that
// is not digits falls back to plain text order after every number.
int compare_number_text(const std::u16string& a, const std::u16string& b) {
  const bool an = sql::is_decimal_number(a), bn = sql::is_decimal_number(b);
  if (an != bn) return an ? -1 : 1;
  if (!an) return a.compare(b) < 0 ? -1 : (a == b ? 0 : 1);
  const size_t az = std::min(a.find_first_not_of(u'0'), a.size());
  const size_t bz = std::min(b.find_first_not_of(u'0'), b.size());
  const size_t al = a.size() - az, bl = b.size() - bz;
  if (al != bl) return al < bl ? -1 : 1;
  const int c = a.compare(az, al, b, bz, bl);
  return c < 0 ? -1 : (c == 0 ? 0 : 1);
}

std::string checked_number(const std::u16string& value, const char* what) {
  if (!sql::is_decimal_number(value)) {
    throw exc::runtime_exc_t("The value [%1] of %2 is not a decimal number.",
                             util::to_utf8(value), std::string(what), std::string());
  }
  return util::to_utf8(value);
}

uint64_t saturating_add(uint64_t a, uint64_t b) { return a > UINT64_MAX - b ? UINT64_MAX : a + b; }

}  // namespace

std::string active_logs_statement() {
  return util::fmt_t::format(
      "SELECT FIRST_CHANGE#, BLOCK_SIZE, RECID, STAMP, NAME, \t\t\tTHREAD#, SEQUENCE#, "
      "RESETLOGS_CHANGE#, BLOCKS*BLOCK_SIZE, \t\t\t%1, %2 FROM V$ARCHIVED_LOG WHERE STATUS != 'D'",
      sql::utc_time_text_of("FIRST_TIME"), sql::utc_time_text_of("NEXT_TIME"));
}

arch_log_ptr_t active_log_from_row(const std::vector<std::u16string>& row) {
  auto log = std::make_shared<SArchLogInfo>();
  log->firstChange = row.at(0);
  log->blockSize = row.at(1);
  log->recId = row.at(2);
  log->stamp = row.at(3);
  log->logPath = row.at(4);
  log->threadNum = row.at(5);
  log->seqNum = row.at(6);
  log->resetlogsChange = row.at(7);
  log->size = row.at(8);
  log->firstTimeUtc = row.at(9);
  log->nextTimeUtc = row.at(10);
  return log;
}

uint64_t parse_u64(const std::u16string& text) {
  if (!sql::is_decimal_number(text)) throw exc::runtime_exc_t("bad cast");
  uint64_t value = 0;
  for (char16_t c : text) {
    const uint64_t digit = static_cast<uint64_t>(c - u'0');
    if (value > (UINT64_MAX - digit) / 10) throw exc::runtime_exc_t("bad cast");
    value = value * 10 + digit;
  }
  return value;
}

void sort_active_logs(arch_log_list_t& logs) {
  // Every key is read before the sort, so that a bad one fails before anything moves.
  std::vector<std::pair<uint64_t, arch_log_ptr_t>> keyed;
  keyed.reserve(logs.size());
  for (const auto& log : logs) {
    try {
      keyed.emplace_back(parse_u64(log->seqNum), log);
    } catch (const std::exception& e) {
      exc::rethrow_with_context(
          util::fmt_t::format("The sequence number [%1] of the archived log [%2] is not a number.",
                              util::to_utf8(log->seqNum), util::to_utf8(log->logPath)),
          e);
    }
  }
  std::sort(keyed.begin(), keyed.end(), [](const auto& x, const auto& y) {
    if (x.first != y.first) return x.first > y.first;
    int c = compare_number_text(x.second->threadNum, y.second->threadNum);
    if (c != 0) return c > 0;
    c = compare_number_text(x.second->recId, y.second->recId);
    if (c != 0) return c > 0;
    return x.second->logPath > y.second->logPath;
  });
  for (size_t i = 0; i < keyed.size(); ++i) logs[i] = keyed[i].second;
}

bool time_rule_removes(const SArchLogInfo& log, const std::u16string& limit) {
  calendar_fields_t limitFields, firstFields, nextFields;
  if (!parse_day_first(limit, limitFields)) return false;
  if (!parse_year_first(log.firstTimeUtc, firstFields)) return false;
  if (!parse_year_first(log.nextTimeUtc, nextFields)) return false;
  calendar_value_t limitValue, firstValue, nextValue;
  if (!valid_calendar_value(nextFields, nextValue)) return false;
  if (!valid_calendar_value(firstFields, firstValue)) return false;
  if (!(calendar_later(nextValue, firstValue) || calendar_equal(nextValue, firstValue))) {
    return false;
  }
  if (!valid_calendar_value(limitFields, limitValue)) return false;
  return calendar_later(limitValue, nextValue);
}

void apply_time_rule(const arch_log_list_t& logs, const std::u16string& limit,
                     const std::function<void(const SArchLogInfo&)>& remove) {
  // The list is by sequence, not by time: every log is tested.
  for (const auto& log : logs) {
    if (time_rule_removes(*log, limit)) remove(*log);
  }
}

void apply_size_rule(const arch_log_list_t& logs, uint64_t size,
                     const std::function<void(const SArchLogInfo&)>& remove) {
  uint64_t total = 0;
  for (const auto& log : logs) {
    if (total > size) remove(*log);
    uint64_t bytes = 0;
    try {
      bytes = parse_u64(log->size);
    } catch (const std::exception& e) {
      exc::rethrow_with_context(
          util::fmt_t::format("The size [%1] of the archived log [%2] is not a number.",
                              util::to_utf8(log->size), util::to_utf8(log->logPath)),
          e);
    }
    total = saturating_add(total, bytes);
  }
}

std::string delete_log_block(const SArchLogInfo& log) {
  const std::string tail = util::fmt_t::format("'%1', '%2'", checked_number(log.firstChange, "FIRST_CHANGE#"),
                                               checked_number(log.blockSize, "BLOCK_SIZE"));
  const std::string args[] = {checked_number(log.recId, "RECID"),
                              checked_number(log.stamp, "STAMP"),
                              sql::literal_text(util::to_utf8(log.logPath)),
                              checked_number(log.threadNum, "THREAD#"),
                              checked_number(log.seqNum, "SEQUENCE#"),
                              checked_number(log.resetlogsChange, "RESETLOGS_CHANGE#"),
                              tail};
  // Eight values in seven placeholders: the last two travel together with their own quotes.
  return util::fmt_t::format(
      "BEGIN\n DBMS_BACKUP_RESTORE.DELETEARCHIVEDLOG('%1', '%2', '%3', '%4', '%5', '%6', %7);\n END;",
      args, 7);
}

}  // namespace logs

COracleLogDeletion::COracleLogDeletion(std::shared_ptr<COracleSessionHolder> holder)
    : holder_(std::move(holder)) {}

bool COracleLogDeletion::database_ready() {
  const auto session = holder_->get_session();
  return session->is_instance_open(/*assumeOpen=*/false) && session->is_database_active();
}

void COracleLogDeletion::delete_by_time(int32_t minutes) {
  if (!database_ready()) return;
  const std::string limit = logs::time_limit_text(logs::unix_now_us(), minutes);
  logging::oralib().info("UTC start time: %1", limit);
  remove_by_time(util::from_utf8(limit));
}

void COracleLogDeletion::delete_by_size(uint64_t size) {
  if (!database_ready()) return;
  remove_by_size(size);
}

arch_log_list_t COracleLogDeletion::get_active_logs() {
  try {
    const auto result =
        holder_->make_query()->exec(logs::active_logs_statement(), 11, /*upperCase=*/false);
    arch_log_list_t list;
    list.reserve(result->rows().size());
    for (const auto& row : result->rows()) {
      if (row.size() == 11) list.push_back(logs::active_log_from_row(row));
    }
    logging::oralib().info("Found %1 active log files",
                           util::to_str(static_cast<uint64_t>(list.size())));
    logs::sort_active_logs(list);
    return list;
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to get active archive logs", e);
  }
}

void COracleLogDeletion::remove_by_time(const std::u16string& limit) {
  try {
    logging::log_step_t step(logging::oralib(), "Removing archived logs older than: %1",
                             util::to_utf8(limit));
    const arch_log_list_t list = get_active_logs();
    logs::apply_time_rule(list, limit, [this](const SArchLogInfo& log) {
      logging::oralib().info("Removing log file. First UTC time: [%1], next UTC time: [%2]",
                             util::to_utf8(log.firstTimeUtc), util::to_utf8(log.nextTimeUtc));
      remove_log(log);
    });
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to remove archived logs by time", e);
  }
}

void COracleLogDeletion::remove_by_size(uint64_t size) {
  try {
    logging::log_step_t step(logging::oralib(), "Removing archived logs by size (%1)",
                             util::to_str(size));
    const arch_log_list_t list = get_active_logs();
    logs::apply_size_rule(list, size, [this](const SArchLogInfo& log) { remove_log(log); });
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to remove archived logs by size", e);
  }
}

void COracleLogDeletion::remove_log(const SArchLogInfo& log) noexcept {
  try {
    const std::string path = util::to_utf8(log.logPath);
    try {
      logging::log_step_t step(logging::oralib(), "Removing log file: %1", path);
      holder_->get_session()->make_command(logs::delete_log_block(log))->execute();
      step.ok();
    } catch (const std::exception& e) {
      exc::log_error(logging::oralib(), "Failed to remove log [%1]", path, e);
    }
  } catch (...) {
    // Only the conversion of the path or the log itself could get here; the next log follows.
  }
}

}  // namespace specific::oracle
