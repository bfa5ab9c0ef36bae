#include "logs_scenario.h"

#include <algorithm>
#include <cstdio>
#include <tuple>
#include <random>

#include "common/text/convert.h"
#include "oracle/logs/log_calendar.h"

namespace logs_test {

std::string scenario_time(int64_t unixSeconds) {
  const auto f = specific::oracle::logs::utc_fields_from_unix_us(unixSeconds * 1000000);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d:%02d", f.year, f.month, f.day,
                f.hours, f.minutes, f.seconds);
  return buffer;
}

generated_machine_t generate_logs_machine(const dsl_test::test_folder_t& folder,
                                          const scenario_options_t& o) {
  generated_machine_t m;
  std::mt19937_64 rng(o.seed);
  const std::string base = util::to_utf8(folder.base());
  m.archFolder = base + "arch\\";
  folder.raw_mkdir(u"arch");
  folder.raw_mkdir(u"asm");
  folder.raw_mkdir(u"asm\\FRA");
  folder.raw_mkdir(u"asm\\FRA\\ORCL");
  folder.raw_mkdir(u"asm\\FRA\\ORCL\\ARCHIVELOG");

  // Each thread's logs follow one another over the span; records are numbered in time order.
  const int64_t span = static_cast<int64_t>(o.days) * 86400;
  const int64_t start = o.nowUnix - span;
  struct pending_t {
    int64_t thread, sequence, first, next;
  };
  std::vector<pending_t> pending;
  for (int t = 1; t <= o.threads; ++t) {
    int64_t at = start + static_cast<int64_t>(rng() % 600);
    const int64_t step = span / (o.logsPerThread + 1);
    for (int i = 0; i < o.logsPerThread; ++i) {
      const int64_t length = 1 + static_cast<int64_t>(rng() % static_cast<uint64_t>(step));
      pending.push_back({t, 100 + i, at, std::min(at + length, o.nowUnix - 60)});
      at += step;
    }
  }
  std::sort(pending.begin(), pending.end(), [](const pending_t& a, const pending_t& b) {
    return std::tie(a.next, a.thread) < std::tie(b.next, b.thread);
  });

  std::string logsXml;
  int64_t recid = 0;
  for (const pending_t& p : pending) {
    generated_log_t log;
    log.recid = ++recid;
    log.thread = p.thread;
    log.sequence = p.sequence;
    log.firstUnix = p.first;
    log.nextUnix = p.next;
    log.blocks = 1 + static_cast<int64_t>(rng() % static_cast<uint64_t>(o.maxBlocks));
    log.onAsm = static_cast<int>(rng() % 100) < o.asmPercent;
    log.deleted = static_cast<int>(rng() % 100) < o.deletedPercent;
    log.missing = !log.deleted && static_cast<int>(rng() % 100) < o.missingPercent;
    const int64_t stamp = p.next - 568080000;  // seconds since 1988
    const std::string s = std::to_string(p.sequence), t = std::to_string(p.thread);
    if (log.onAsm) {
      const std::string file = "thread_" + t + "_seq_" + s + "." + std::to_string(256 + recid) +
                               "." + std::to_string(stamp);
      log.name = "+FRA/ORCL/ARCHIVELOG/" + file;
      log.fileWindowsPath = base + "asm\\FRA\\ORCL\\ARCHIVELOG\\" + file;
    } else {
      log.name = m.archFolder + "T" + t + "_S" + s + ".ARC";
      log.fileWindowsPath = log.name;
    }
    if (!log.deleted && !log.missing) {
      const std::u16string relative =
          util::from_utf8(log.fileWindowsPath.substr(base.size()));
      folder.raw_write(relative, std::string(static_cast<size_t>(log.blocks * 512),
                                             static_cast<char>('a' + recid % 26)));
    }
    logsXml += "    <archived_log recid=\"" + std::to_string(recid) + "\" stamp=\"" +
               std::to_string(stamp) + "\" thread=\"" + t + "\" sequence=\"" + s + "\"" +
               (log.deleted ? std::string(" status=\"D\" deleted=\"YES\"")
                            : " name=\"" + log.name + "\"") +
               " first_change=\"" + std::to_string(1000000 + recid * 100) + "\" first_time=\"" +
               scenario_time(p.first) + "\" next_change=\"" + std::to_string(1000100 + recid * 100) +
               "\" next_time=\"" + scenario_time(p.next) + "\" blocks=\"" +
               std::to_string(log.blocks) + "\" block_size=\"512\"/>\n";
    if (log.deleted) log.name.clear();
    m.logs.push_back(log);
  }

  std::string groups;
  for (int t = 1; t <= o.threads; ++t) {
    const std::string n1 = std::to_string(2 * t - 1), n2 = std::to_string(2 * t);
    const std::string next = std::to_string(100 + o.logsPerThread);
    groups += "    <log_group number=\"" + n1 + "\" thread=\"" + std::to_string(t) +
              "\" sequence=\"" + next + "\" bytes=\"1048576\" status=\"CURRENT\" archived=\"NO\" "
              "redo_blocks=\"2\" first_change=\"1900000\" first_time=\"" +
              scenario_time(o.nowUnix - 30) + "\"><member name=\"" + base + "redo\\R" + n1 +
              ".LOG\"/></log_group>\n";
    groups += "    <log_group number=\"" + n2 + "\" thread=\"" + std::to_string(t) +
              "\" sequence=\"" + std::to_string(99 + o.logsPerThread) +
              "\" bytes=\"1048576\" status=\"INACTIVE\" archived=\"YES\" redo_blocks=\"2\">"
              "<member name=\"" + base + "redo\\R" + n2 + ".LOG\"/></log_group>\n";
  }

  m.xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<machine host=\"DBSERVER01\" "
          "time_zone=\"+00:00\" now=\"" + scenario_time(o.nowUnix) + "\">\n"
          "  <instance sid=\"ORCL\" home=\"" + m.home + "\" state=\"" + o.state + "\">\n"
          "    <database name=\"ORCL\" dbid=\"1559187620\" log_mode=\"ARCHIVELOG\" "
          "current_scn=\"2000000\" resetlogs_change=\"1\"/>\n" +
          groups + logsXml +
          "    <parameter name=\"log_archive_dest_1\" value=\"LOCATION=" + base + "arch\"/>\n"
          "    <parameter name=\"log_archive_format\" value=\"T%t_S%s.ARC\"/>\n" +
          o.extraInstanceXml +
          "  </instance>\n"
          "  <instance sid=\"+ASM\" home=\"C:\\app\\oracle\\product\\19.0.0\\grid\" type=\"asm\" "
          "state=\"started\">\n"
          "    <disk_group name=\"FRA\" folder=\"" + base + "asm\\FRA\"/>\n"
          "  </instance>\n</machine>\n";
  return m;
}

}  // namespace logs_test
