// Deletion by time and by size against the simulated client: over generated machines with
// several threads, logs on ASM, logs already deleted and logs whose file is gone, the set the
// database deletes equals the set a plain reference computation of the rule selects, and
// nothing else changes (records and files). Seeds are fixed and printed on failure.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <ctime>
#include <set>
#include <tuple>

#include "common/text/convert.h"
#include "frame/oracle_manager.h"
#include "logs_fixture.h"
#include "support/thrown.h"
#include "logs_scenario.h"

namespace logs_test {
namespace {

using specific::oracle::COracleManager;
using specific::oracle::conn_t;

class LogDeletionTest : public logs_test_t {
 protected:
  // The records by RECID after the call: deleted or not.
  std::map<int64_t, bool> deleted_now(const generated_machine_t& m) {
    std::map<int64_t, bool> result;
    for (const std::string& s : archived_log_states(m.sid, m.home)) {
      const size_t blank = s.find(' ');
      result[std::stoll(s.substr(0, blank))] = s.substr(blank + 1) == "D";
    }
    return result;
  }

  bool file_there(const generated_log_t& l) {
    return folder_->raw_exists(util::from_utf8(l.fileWindowsPath.substr(base().size())));
  }

  // Checks that exactly `expected` (RECIDs) went, and that every other record and file is as
  // the scenario made it.
  void expect_removed_exactly(const generated_machine_t& m, const std::set<int64_t>& expected) {
    const auto now = deleted_now(m);
    for (const auto& l : m.logs) {
      SCOPED_TRACE("RECID " + std::to_string(l.recid));
      if (l.recid > static_cast<int64_t>(m.logs.size())) continue;
      const bool shouldGo = expected.count(l.recid) != 0;
      EXPECT_EQ(now.at(l.recid), l.deleted || shouldGo);
      if (!l.deleted && !l.missing) {
        EXPECT_EQ(file_there(l), !shouldGo);
      }
    }
  }
};

std::vector<const generated_log_t*> reference_sorted_active(const generated_machine_t& m) {
  std::vector<const generated_log_t*> active;
  for (const auto& l : m.logs) {
    if (!l.deleted) active.push_back(&l);
  }
  std::sort(active.begin(), active.end(), [](const generated_log_t* a, const generated_log_t* b) {
    return std::tie(a->sequence, a->thread, a->recid) > std::tie(b->sequence, b->thread, b->recid);
  });
  return active;
}

std::set<int64_t> reference_size_rule(const generated_machine_t& m, uint64_t size) {
  std::set<int64_t> removed;
  uint64_t total = 0;
  for (const generated_log_t* l : reference_sorted_active(m)) {
    if (total > size) removed.insert(l->recid);
    total += static_cast<uint64_t>(l->blocks) * 512;
  }
  return removed;
}

// The limit as the library logged it, "dd/mm/yyyy hh:mm:ss", as seconds since 1970.
int64_t logged_limit(const std::vector<std::string>& lines) {
  for (const auto& line : lines) {
    const size_t at = line.find("UTC start time: ");
    if (at == std::string::npos) continue;
    int d, mo, y, h, mi, s;
    if (std::sscanf(line.c_str() + at + 16, "%d/%d/%d %d:%d:%d", &d, &mo, &y, &h, &mi, &s) != 6) break;
    // Days from 1970 of the civil date (timegm is not on every platform).
    const int64_t yy = y - (mo <= 2 ? 1 : 0);
    const int64_t era = (yy >= 0 ? yy : yy - 399) / 400;
    const int64_t yoe = yy - era * 400;
    const int64_t doy = (153 * (mo + (mo > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    const int64_t days = era * 146097 + doe - 719468;
    return ((days * 24 + h) * 60 + mi) * 60 + s;
  }
  ADD_FAILURE() << "no UTC start time in the log";
  return 0;
}

std::set<int64_t> reference_time_rule(const generated_machine_t& m, int64_t limit) {
  std::set<int64_t> removed;
  for (const auto& l : m.logs) {
    if (!l.deleted && l.nextUnix >= l.firstUnix && limit > l.nextUnix) removed.insert(l.recid);
  }
  return removed;
}

scenario_options_t mixed(uint32_t seed) {
  scenario_options_t o;
  o.seed = seed;
  o.threads = 3;
  o.logsPerThread = 100;
  o.days = 4;
  o.asmPercent = 25;
  o.deletedPercent = 10;
  o.missingPercent = 5;
  o.maxBlocks = 8;
  o.nowUnix = static_cast<int64_t>(std::time(nullptr));
  return o;
}

const uint32_t kSeeds[] = {11, 2024, 777};

TEST_F(LogDeletionTest, BySizeRemovesExactlyWhatTheRuleSelects) {
  for (uint32_t seed : kSeeds) {
    for (int which = 0; which < 3; ++which) {
      TearDown();  // a fresh machine for each round
      SetUp();
      const auto m = generate_logs_machine(*folder_, mixed(seed));
      uint64_t total = 0;
      for (const auto& l : m.logs) total += l.deleted ? 0 : static_cast<uint64_t>(l.blocks) * 512;
      const uint64_t size = which == 0 ? 0 : which == 1 ? total / 2 : total / 5 + 511;
      SCOPED_TRACE("seed " + std::to_string(seed) + ", size " + std::to_string(size));
      use_scenario(m.xml);
      COracleManager::instance().delete_logs_by_size(util::from_utf8(m.home), u"ORCL", size, conn_t());
      const auto expected = reference_size_rule(m, size);
      EXPECT_FALSE(expected.empty());
      expect_removed_exactly(m, expected);
    }
  }
}

TEST_F(LogDeletionTest, ByTimeRemovesExactlyWhatTheRuleSelects) {
  for (uint32_t seed : kSeeds) {
    for (int32_t minutes : {1440, 2 * 1440 + 17, 3 * 1440 - 5}) {
      TearDown();  // a fresh machine for each round
      SetUp();
      const auto m = generate_logs_machine(*folder_, mixed(seed));
      SCOPED_TRACE("seed " + std::to_string(seed) + ", minutes " + std::to_string(minutes));
      use_scenario(m.xml);
      COracleManager::instance().delete_logs_by_time(util::from_utf8(m.home), u"ORCL", minutes, conn_t());
      const auto expected = reference_time_rule(m, logged_limit(log_lines()));
      EXPECT_FALSE(expected.empty());
      expect_removed_exactly(m, expected);
    }
  }
}

TEST_F(LogDeletionTest, MinutesZeroRemovesEveryLogWhoseNextTimeIsPast) {
  const auto m = generate_logs_machine(*folder_, mixed(5));
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_time(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  std::set<int64_t> all;
  for (const auto& l : m.logs) {
    if (!l.deleted) all.insert(l.recid);
  }
  expect_removed_exactly(m, all);
}

TEST_F(LogDeletionTest, MinutesOfIntMinPutsTheLimitInTheFutureAndRemovesEveryActiveLog) {
  const auto m = generate_logs_machine(*folder_, mixed(6));
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_time(util::from_utf8(m.home), u"ORCL", INT_MIN, conn_t());
  std::set<int64_t> all;
  for (const auto& l : m.logs) {
    if (!l.deleted) all.insert(l.recid);
  }
  expect_removed_exactly(m, all);
}

TEST_F(LogDeletionTest, MinutesOfIntMaxGivesNoValidLimitAndRemovesNothing) {
  const auto m = generate_logs_machine(*folder_, mixed(7));
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_time(util::from_utf8(m.home), u"ORCL", INT_MAX, conn_t());
  expect_removed_exactly(m, {});
  EXPECT_TRUE(log_has("UTC start time: "));
  EXPECT_EQ(journal_text().find("DELETEARCHIVEDLOG"), std::string::npos);
}

TEST_F(LogDeletionTest, SizeOfTheLargestNumberRemovesNothing) {
  const auto m = generate_logs_machine(*folder_, mixed(8));
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_size(util::from_utf8(m.home), u"ORCL", UINT64_MAX, conn_t());
  expect_removed_exactly(m, {});
  EXPECT_TRUE(log_has("Removing archived logs by size (18446744073709551615)"));
}

TEST_F(LogDeletionTest, SizeZeroKeepsOnlyTheNewestLog) {
  scenario_options_t o;
  o.threads = 2;
  o.logsPerThread = 5;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_size(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  // Sequence 104 of thread 2 is the newest by the sort (sequence, then thread).
  std::set<int64_t> expected;
  for (const auto& l : m.logs) {
    if (!(l.sequence == 104 && l.thread == 2)) expected.insert(l.recid);
  }
  expect_removed_exactly(m, expected);
}

TEST_F(LogDeletionTest, OneLogThatCannotBeRemovedDoesNotFailTheCall) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 6;
  o.extraInstanceXml =
      "    <fault on=\"execute\" sql=\"DELETEARCHIVEDLOG('3',\" match=\"contains\" error=\"27056\"/>\n";
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_size(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  // Newest is sequence 105 (RECID 6); RECID 3 failed and stays.
  expect_removed_exactly(m, {1, 2, 4, 5});
  EXPECT_TRUE(log_has("ERR |Failed to remove log [" + m.logs[2].name + "]"));
}

TEST_F(LogDeletionTest, LogWhoseFileIsGoneIsStillRemovedByTheDatabase) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 4;
  o.missingPercent = 100;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_size(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  expect_removed_exactly(m, {1, 2, 3});
}

TEST_F(LogDeletionTest, LogWithoutANameIsNotListedAndNeverRemoved) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 3;
  // A log whose file another tool deleted: no NAME, yet not marked deleted. Its sequence is
  // the highest, so were it listed it would be the one the size rule keeps.
  o.extraInstanceXml =
      "    <archived_log recid=\"999\" stamp=\"999\" thread=\"1\" sequence=\"999\" "
      "first_change=\"5\" first_time=\"2024-03-05 09:00:00\" next_change=\"6\" "
      "next_time=\"2024-03-05 09:10:00\" blocks=\"1\"/>\n";
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_size(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  EXPECT_TRUE(log_has("Found 3 active log files"));
  expect_removed_exactly(m, {1, 2});
  EXPECT_FALSE(deleted_now(m).at(999));
}

TEST_F(LogDeletionTest, DatabaseNotOpenRemovesNothingAndSucceeds) {
  scenario_options_t o;
  o.state = "mounted";
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_size(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  COracleManager::instance().delete_logs_by_time(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  EXPECT_EQ(sql_lines(), (std::vector<std::string>{"SELECT STATUS FROM V$INSTANCE",
                                                   "SELECT STATUS FROM V$INSTANCE"}));
}

TEST_F(LogDeletionTest, EmptyListLogsACountOfZeroAndSucceeds) {
  scenario_options_t o;
  o.logsPerThread = 3;
  o.deletedPercent = 100;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_time(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  EXPECT_TRUE(log_has("Found 0 active log files"));
  EXPECT_EQ(journal_text().find("DELETEARCHIVEDLOG"), std::string::npos);
}

TEST_F(LogDeletionTest, FailingQueryFailsBothRulesWithTheByTimeLine) {
  scenario_options_t o;
  o.extraInstanceXml =
      "    <fault on=\"execute\" sql=\"SELECT FIRST_CHANGE#, BLOCK_SIZE\" match=\"prefix\" error=\"942\"/>\n";
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  const std::string bySize = dsl_test::thrown_text([&] {
    COracleManager::instance().delete_logs_by_size(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  });
  EXPECT_NE(bySize.find("Failed to get active archive logs"), std::string::npos) << bySize;
  EXPECT_NE(bySize.find("Failed to remove archived logs by size"), std::string::npos) << bySize;
  EXPECT_NE(bySize.find("Oracle manager failed to delete archived logs by time"), std::string::npos);
  const std::string byTime = dsl_test::thrown_text([&] {
    COracleManager::instance().delete_logs_by_time(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  });
  EXPECT_NE(byTime.find("Failed to remove archived logs by time"), std::string::npos) << byTime;
  expect_removed_exactly(m, {});
}

TEST_F(LogDeletionTest, DeleteBlockReachesTheDatabaseWithItsEightValues) {
  scenario_options_t o;
  o.threads = 1;
  o.logsPerThread = 2;
  const auto m = generate_logs_machine(*folder_, o);
  use_scenario(m.xml);
  COracleManager::instance().delete_logs_by_size(util::from_utf8(m.home), u"ORCL", 0, conn_t());
  const auto& l = m.logs[0];
  const std::string expected = "BEGIN  DBMS_BACKUP_RESTORE.DELETEARCHIVEDLOG('1', '" +
                               std::to_string(l.nextUnix - 568080000) + "', '" + l.name +
                               "', '1', '100', '1', '1000100', '512');  END;";
  const auto sql = sql_lines();
  EXPECT_NE(std::find(sql.begin(), sql.end(), expected), sql.end()) << journal_text();
}

}  // namespace
}  // namespace logs_test
