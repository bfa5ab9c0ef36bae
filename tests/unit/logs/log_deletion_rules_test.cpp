// The deletion rules over in-memory lists: the sort, the time rule and the size rule, each
// checked against a plain reference computation over random lists of a few hundred logs of
// several redo threads (fixed seeds, printed on failure), and the block that deletes one log.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <set>
#include <tuple>

#include "common/text/convert.h"
#include "oracle/logs/log_deletion.h"
#include "support/thrown.h"

namespace specific::oracle::logs {
namespace {

std::u16string w(const std::string& s) { return util::from_utf8(s); }

arch_log_ptr_t make_log(uint64_t seq, uint64_t thread, uint64_t recid, uint64_t size,
                        const std::string& first = "2024/03/05 09:00:00",
                        const std::string& next = "2024/03/05 09:30:00") {
  auto log = std::make_shared<SArchLogInfo>();
  log->seqNum = w(std::to_string(seq));
  log->threadNum = w(std::to_string(thread));
  log->recId = w(std::to_string(recid));
  log->stamp = w(std::to_string(1162540801 + recid));
  log->size = w(std::to_string(size));
  log->firstChange = w(std::to_string(1000 + recid));
  log->blockSize = u"512";
  log->resetlogsChange = u"1";
  log->logPath = w("C:\\arch\\T" + std::to_string(thread) + "_S" + std::to_string(seq) + "_R" +
                   std::to_string(recid) + ".ARC");
  log->firstTimeUtc = w(first);
  log->nextTimeUtc = w(next);
  return log;
}

std::set<std::u16string> removed_by_size(const arch_log_list_t& sorted, uint64_t size) {
  std::set<std::u16string> removed;
  apply_size_rule(sorted, size, [&](const SArchLogInfo& l) { removed.insert(l.recId); });
  return removed;
}

std::set<std::u16string> removed_by_time(const arch_log_list_t& sorted, const std::string& limit) {
  std::set<std::u16string> removed;
  apply_time_rule(sorted, w(limit), [&](const SArchLogInfo& l) { removed.insert(l.recId); });
  return removed;
}

// ---- The reference: written apart from the library, in whole seconds. ----

struct ref_log_t {
  uint64_t seq, thread, recid, size;
  std::string first, next;
};

bool ref_leap(int64_t y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

// Seconds since 0001-01-01 for a valid "yyyy/mm/dd hh:mm:ss" (or "dd/mm/yyyy ..." when
// `dayFirst`), or false.
bool ref_seconds(const std::string& text, bool dayFirst, int64_t& out) {
  int a, b, c, h, mi, s;
  if (std::sscanf(text.c_str(), "%d/%d/%d %d:%d:%d", &a, &b, &c, &h, &mi, &s) != 6) return false;
  const int y = dayFirst ? c : a, mo = b, d = dayFirst ? a : c;
  static const int dim[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (y < 100 || y > 9999 || mo < 1 || mo > 12 || d < 1) return false;
  if (d > dim[mo - 1] + (mo == 2 && ref_leap(y) ? 1 : 0)) return false;
  if (h < 0 || h > 23 || mi < 0 || mi > 59 || s < 0 || s > 59) return false;
  int64_t days = 0;
  for (int yy = 1; yy < y; ++yy) days += ref_leap(yy) ? 366 : 365;
  for (int mm = 1; mm < mo; ++mm) days += dim[mm - 1] + (mm == 2 && ref_leap(y) ? 1 : 0);
  days += d - 1;
  out = ((days * 24 + h) * 60 + mi) * 60 + s;
  return true;
}

std::vector<ref_log_t> ref_sorted(std::vector<ref_log_t> logs) {
  std::sort(logs.begin(), logs.end(), [](const ref_log_t& x, const ref_log_t& y) {
    return std::tie(x.seq, x.thread, x.recid) > std::tie(y.seq, y.thread, y.recid);
  });
  return logs;
}

std::set<std::u16string> ref_size_rule(const std::vector<ref_log_t>& logs, uint64_t size) {
  std::set<std::u16string> removed;
  uint64_t total = 0;
  for (const auto& l : ref_sorted(logs)) {
    if (total > size) removed.insert(w(std::to_string(l.recid)));
    total = (total > UINT64_MAX - l.size) ? UINT64_MAX : total + l.size;
  }
  return removed;
}

std::set<std::u16string> ref_time_rule(const std::vector<ref_log_t>& logs,
                                       const std::string& limit) {
  std::set<std::u16string> removed;
  int64_t lim = 0;
  if (!ref_seconds(limit, true, lim)) return removed;
  for (const auto& l : logs) {
    int64_t f = 0, n = 0;
    if (!ref_seconds(l.first, false, f) || !ref_seconds(l.next, false, n)) continue;
    if (n >= f && lim > n) removed.insert(w(std::to_string(l.recid)));
  }
  return removed;
}

std::string fmt_time(int64_t secondsSince2024, bool broken = false) {
  // 2024-01-01 plus the seconds, within 2024 (366 days).
  static const int dim[12] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  int64_t days = secondsSince2024 / 86400, rest = secondsSince2024 % 86400;
  int month = 0;
  while (days >= dim[month]) days -= dim[month++];
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "2024/%02d/%02d %02d:%02d:%02d", month + 1,
                broken ? 31 : static_cast<int>(days + 1), static_cast<int>(rest / 3600),
                static_cast<int>(rest / 60 % 60), static_cast<int>(rest % 60));
  return buffer;
}

struct random_set_t {
  std::vector<ref_log_t> ref;
  arch_log_list_t logs;
};

random_set_t random_set(uint32_t seed, size_t count) {
  std::mt19937_64 rng(seed);
  random_set_t set;
  std::set<uint64_t> recids;
  for (size_t i = 0; i < count; ++i) {
    ref_log_t l;
    l.thread = 1 + rng() % 4;
    l.seq = 1 + rng() % (count / 3 + 1);  // threads share sequence numbers often
    do {
      l.recid = 1 + rng() % (count * 10);
    } while (!recids.insert(l.recid).second);
    l.size = (rng() % 5 == 0) ? 0 : 512 * (1 + rng() % 100000);
    const int64_t first = static_cast<int64_t>(rng() % (360LL * 86400));
    int64_t next = first + static_cast<int64_t>(rng() % 7200);
    if (rng() % 10 == 0) next = first - 1 - static_cast<int64_t>(rng() % 100);  // backwards
    if (next < 0) next = 0;
    l.first = fmt_time(first);
    l.next = fmt_time(next, /*broken=*/rng() % 25 == 0);
    if (rng() % 40 == 0) l.first = "not a time";
    set.ref.push_back(l);
    set.logs.push_back(make_log(l.seq, l.thread, l.recid, l.size, l.first, l.next));
  }
  return set;
}

const uint32_t kSeeds[] = {1, 7, 42, 1234, 20240305, 99991, 31337, 2718281};

TEST(LogDeletionRulesTest, SortIsNewestSequenceFirstThenThreadThenRecid) {
  arch_log_list_t logs = {make_log(5, 1, 10, 1), make_log(7, 1, 12, 1), make_log(7, 2, 13, 1),
                          make_log(5, 2, 11, 1), make_log(7, 2, 14, 1), make_log(10, 1, 9, 1)};
  sort_active_logs(logs);
  std::vector<std::u16string> order;
  for (const auto& l : logs) order.push_back(l->recId);
  EXPECT_EQ(order, (std::vector<std::u16string>{u"9", u"14", u"13", u"12", u"11", u"10"}));
}

TEST(LogDeletionRulesTest, SortComparesSequencesAsNumbersNotText) {
  arch_log_list_t logs = {make_log(9, 1, 1, 1), make_log(10, 1, 2, 1), make_log(100, 1, 3, 1)};
  sort_active_logs(logs);
  EXPECT_EQ(logs[0]->seqNum, u"100");
  EXPECT_EQ(logs[2]->seqNum, u"9");
}

TEST(LogDeletionRulesTest, SortResultDoesNotDependOnTheInputOrder) {
  for (uint32_t seed : kSeeds) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    random_set_t set = random_set(seed, 300);
    arch_log_list_t a = set.logs, b = set.logs;
    std::shuffle(b.begin(), b.end(), std::mt19937(seed));
    sort_active_logs(a);
    sort_active_logs(b);
    for (size_t i = 0; i < a.size(); ++i) ASSERT_EQ(a[i]->recId, b[i]->recId) << "position " << i;
  }
}

TEST(LogDeletionRulesTest, SequenceThatIsNoNumberFailsTheSortWithBadCast) {
  arch_log_list_t logs = {make_log(5, 1, 10, 1), make_log(6, 1, 11, 1)};
  logs[1]->seqNum = u"12a";
  const std::string text = dsl_test::thrown_text([&] { sort_active_logs(logs); });
  EXPECT_NE(text.find("bad cast"), std::string::npos) << text;
  EXPECT_NE(text.find("The sequence number [12a]"), std::string::npos) << text;
  EXPECT_EQ(logs[0]->recId, u"10");  // nothing moved
}

TEST(LogDeletionRulesTest, SizeRuleKeepsTheNewestLogThatCrossesTheLimit) {
  arch_log_list_t logs = {make_log(4, 1, 4, 100), make_log(3, 1, 3, 100), make_log(2, 1, 2, 100),
                          make_log(1, 1, 1, 100)};
  EXPECT_EQ(removed_by_size(logs, 150), (std::set<std::u16string>{u"2", u"1"}));
  EXPECT_EQ(removed_by_size(logs, 200), (std::set<std::u16string>{u"1"}));
  EXPECT_EQ(removed_by_size(logs, 300), (std::set<std::u16string>{}));
}

TEST(LogDeletionRulesTest, SizeZeroKeepsOnlyTheNewestLog) {
  arch_log_list_t logs = {make_log(4, 1, 4, 100), make_log(3, 1, 3, 100), make_log(2, 1, 2, 100)};
  EXPECT_EQ(removed_by_size(logs, 0), (std::set<std::u16string>{u"3", u"2"}));
}

TEST(LogDeletionRulesTest, SizeZeroWithAnEmptyNewestLogKeepsTheNextToo) {
  // The test precedes the addition, and an empty log adds nothing.
  arch_log_list_t logs = {make_log(4, 1, 4, 0), make_log(3, 1, 3, 100), make_log(2, 1, 2, 100)};
  EXPECT_EQ(removed_by_size(logs, 0), (std::set<std::u16string>{u"2"}));
}

TEST(LogDeletionRulesTest, SizeOfTheLargestNumberRemovesNothing) {
  arch_log_list_t logs = {make_log(3, 1, 3, UINT64_MAX), make_log(2, 1, 2, UINT64_MAX),
                          make_log(1, 1, 1, 5)};
  EXPECT_EQ(removed_by_size(logs, UINT64_MAX), (std::set<std::u16string>{}));
  // The total saturates instead of wrapping round to a small number.
  EXPECT_EQ(removed_by_size(logs, UINT64_MAX - 1), (std::set<std::u16string>{u"2", u"1"}));
}

TEST(LogDeletionRulesTest, SizeThatIsNoNumberFailsWithBadCastAfterTheRemovalsSoFar) {
  arch_log_list_t logs = {make_log(4, 1, 4, 100), make_log(3, 1, 3, 100), make_log(2, 1, 2, 100),
                          make_log(1, 1, 1, 100)};
  logs[2]->size = u"lots";
  std::set<std::u16string> removed;
  const std::string text = dsl_test::thrown_text([&] {
    apply_size_rule(logs, 50, [&](const SArchLogInfo& l) { removed.insert(l.recId); });
  });
  EXPECT_NE(text.find("bad cast"), std::string::npos) << text;
  EXPECT_NE(text.find("The size [lots]"), std::string::npos) << text;
  // Log 3 went before the bad size was read; log 2 was removed too (the test precedes the
  // parse), log 1 was never reached.
  EXPECT_EQ(removed, (std::set<std::u16string>{u"3", u"2"}));
}

TEST(LogDeletionRulesTest, NegativeSizeTextIsNoNumber) {
  EXPECT_NE(dsl_test::thrown_text([] { parse_u64(u"-1"); }).find("bad cast"), std::string::npos);
  EXPECT_NE(dsl_test::thrown_text([] { parse_u64(u"18446744073709551616"); }).find("bad cast"),
            std::string::npos);
  EXPECT_EQ(parse_u64(u"18446744073709551615"), UINT64_MAX);
  EXPECT_EQ(parse_u64(u"007"), 7u);
}

TEST(LogDeletionRulesTest, SizeRuleMatchesTheReferenceOnRandomSets) {
  for (uint32_t seed : kSeeds) {
    random_set_t set = random_set(seed, 300);
    arch_log_list_t sorted = set.logs;
    sort_active_logs(sorted);
    std::mt19937_64 rng(seed);
    uint64_t total = 0;
    for (const auto& l : set.ref) total += l.size;
    for (uint64_t size : {uint64_t{0}, uint64_t{1}, total / 3, total / 2, total - 1, total,
                          static_cast<uint64_t>(rng() % (total + 1)), UINT64_MAX}) {
      SCOPED_TRACE("seed " + std::to_string(seed) + ", size " + std::to_string(size));
      const auto removed = removed_by_size(sorted, size);
      EXPECT_EQ(removed, ref_size_rule(set.ref, size));
      if (size == total / 2) {
        // Neither nothing nor everything: the comparison is not an empty one.
        EXPECT_GT(removed.size(), 0u);
        EXPECT_LT(removed.size(), set.logs.size());
      }
    }
  }
}

TEST(LogDeletionRulesTest, TimeRuleMatchesTheReferenceOnRandomSets) {
  size_t selected = 0, considered = 0;
  for (uint32_t seed : kSeeds) {
    random_set_t set = random_set(seed, 300);
    arch_log_list_t sorted = set.logs;
    sort_active_logs(sorted);
    std::mt19937_64 rng(seed + 1);
    for (int round = 0; round < 6; ++round) {
      int64_t at = static_cast<int64_t>(rng() % (366LL * 86400));
      // Some limits fall exactly on a log's NEXT_TIME.
      if (round % 2 == 1) {
        const auto& l = set.ref[rng() % set.ref.size()];
        int64_t s = 0;
        if (ref_seconds(l.next, false, s)) {
          int64_t base = 0;
          ref_seconds("2024/01/01 00:00:00", false, base);
          at = s - base;
        }
      }
      const std::string y = fmt_time(at);
      const std::string limit = y.substr(8, 2) + "/" + y.substr(5, 2) + "/" + y.substr(0, 4) +
                                y.substr(10);
      SCOPED_TRACE("seed " + std::to_string(seed) + ", limit " + limit);
      const auto removed = removed_by_time(sorted, limit);
      EXPECT_EQ(removed, ref_time_rule(set.ref, limit));
      selected += removed.size();
      considered += set.logs.size();
    }
  }
  // Over all rounds some logs went and some stayed.
  EXPECT_GT(selected, 0u);
  EXPECT_LT(selected, considered);
}

TEST(LogDeletionRulesTest, LogWhoseNextTimeIsTheLimitStays) {
  arch_log_list_t logs = {make_log(2, 1, 2, 1, "2024/03/05 09:00:00", "2024/03/05 09:30:00")};
  EXPECT_TRUE(removed_by_time(logs, "05/03/2024 09:30:00").empty());
  EXPECT_EQ(removed_by_time(logs, "05/03/2024 09:30:01").size(), 1u);
}

TEST(LogDeletionRulesTest, LogWithNextTimeBeforeFirstTimeBySecondStays) {
  arch_log_list_t logs = {make_log(2, 1, 2, 1, "2024/03/05 09:00:01", "2024/03/05 09:00:00")};
  EXPECT_TRUE(removed_by_time(logs, "05/03/2025 00:00:00").empty());
}

TEST(LogDeletionRulesTest, LogWithEqualFirstAndNextTimeGoes) {
  arch_log_list_t logs = {make_log(2, 1, 2, 1, "2024/03/05 09:00:00", "2024/03/05 09:00:00")};
  EXPECT_EQ(removed_by_time(logs, "05/03/2025 00:00:00").size(), 1u);
}

TEST(LogDeletionRulesTest, LogWithAnImpossibleDateStays) {
  arch_log_list_t logs = {make_log(2, 1, 2, 1, "2024/02/31 09:00:00", "2024/03/05 09:00:00"),
                          make_log(3, 1, 3, 1, "2024/03/05 09:00:00", "2024/02/30 09:00:00"),
                          make_log(4, 1, 4, 1, "yesterday", "2024/03/05 09:00:00")};
  EXPECT_TRUE(removed_by_time(logs, "05/03/2025 00:00:00").empty());
}

TEST(LogDeletionRulesTest, InvalidLimitRemovesNothing) {
  arch_log_list_t logs = {make_log(2, 1, 2, 1)};
  EXPECT_TRUE(removed_by_time(logs, "31/02/2025 00:00:00").empty());
  EXPECT_TRUE(removed_by_time(logs, "01/01/-2057 00:00:00").empty());
  EXPECT_TRUE(removed_by_time(logs, "").empty());
}

TEST(LogDeletionRulesTest, DeleteBlockCarriesEightValuesInSevenPlaceholders) {
  auto log = make_log(7, 2, 33, 1024);
  log->logPath = u"C:\\arch\\O'Brien\\T2_S7.ARC";
  EXPECT_EQ(delete_log_block(*log),
            "BEGIN\n DBMS_BACKUP_RESTORE.DELETEARCHIVEDLOG('33', '1162540834', "
            "'C:\\arch\\O''Brien\\T2_S7.ARC', '2', '7', '1', '1033', '512');\n END;");
}

TEST(LogDeletionRulesTest, DeleteBlockRefusesANumberFieldThatIsNotDigits) {
  auto log = make_log(7, 2, 33, 1024);
  log->stamp = u"1'); DROP DIRECTORY X; --";
  const std::string text = dsl_test::thrown_text([&] { delete_log_block(*log); });
  EXPECT_NE(text.find("of STAMP is not a decimal number"), std::string::npos) << text;
}

TEST(LogDeletionRulesTest, ActiveLogStatementReadsElevenColumnsOfLogsNotDeleted) {
  EXPECT_EQ(active_logs_statement(),
            "SELECT FIRST_CHANGE#, BLOCK_SIZE, RECID, STAMP, NAME, \t\t\tTHREAD#, SEQUENCE#, "
            "RESETLOGS_CHANGE#, BLOCKS*BLOCK_SIZE, \t\t\tTO_CHAR(SYS_EXTRACT_UTC(CAST(FIRST_TIME AS "
            "TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss'), TO_CHAR(SYS_EXTRACT_UTC(CAST(NEXT_TIME AS "
            "TIMESTAMP)), 'yyyy/mm/dd hh24:mi:ss') FROM V$ARCHIVED_LOG WHERE STATUS != 'D'");
}

}  // namespace
}  // namespace specific::oracle::logs
