// Figures of the archived-log flows on the host build, against the simulated client (ocisim):
//   backup copy   OracleBackupLogs of 1,000 local logs of 1 MiB with staging on (each log is
//                 copied into the logs folder and described), whole call, against `dd bs=512K`
//                 of the same files into another folder in the same run, one dd per file as an
//                 administrator would script it (its process start-ups included); target: the
//                 library's throughput at least 0.95 times dd's. Beside it, for information,
//                 `cp` of the same files in one call, with the earlier target of 0.9 times cp's
//                 throughput also printed met or MISSED. (GNU cp moves the bytes inside the
//                 kernel with copy_file_range; dd, like the library's copy, reads and writes
//                 512 KiB at a time through its own buffer, as the library does on Windows.)
//   deletion      10,000 active logs of four threads: the library's own work (rows to
//                 records, the sort, the size rule with 9,999 delete blocks built, the time
//                 rule over all) against a target of 200 ms; beside it, the whole by-size call
//                 end to end against ocisim (session, checks, the 11-column query) with a size
//                 that removes nothing, so that ocisim's own cost shows.
// Everything is written below a fresh folder in /tmp (DBSHADOWLINK_ROOT), removed at the end.
// DSL_BENCH_LOGS sets the number of logs to copy (default 1000); DSL_BENCH_NO_STAGE turns
// staging off, which leaves the cost of everything but the copies. Exit status 1 when the dd or
// the deletion target is missed (the cp figure decides nothing).
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "bench_util.h"
#include "common/text/convert.h"
#include "config/oracle_config.h"
#include "frame/oracle_manager.h"
#include "oracle/logs/log_calendar.h"
#include "oracle/logs/log_deletion.h"

extern char** environ;

namespace {

using bench_clock = std::chrono::steady_clock;
namespace fs = std::filesystem;
using namespace specific::oracle;

constexpr int kRounds = 5;
constexpr int kDeletionLogs = 10000;
constexpr double kDeletionTargetMs = 200.0;
constexpr double kDdTargetRatio = 0.95;
constexpr double kCpTargetRatio = 0.9;
const std::string kHome = "C:\\app\\oracle\\product\\19.0.0\\dbhome_1";

[[noreturn]] void fail(const std::string& text) { bench::fail("logs_bench", text); }

double seconds_since(bench_clock::time_point start) {
  return std::chrono::duration<double>(bench_clock::now() - start).count();
}

void run(std::vector<std::string> argv) {
  std::vector<char*> args;
  for (auto& a : argv) args.push_back(a.data());
  args.push_back(nullptr);
  pid_t pid = 0;
  if (posix_spawnp(&pid, args[0], nullptr, nullptr, args.data(), environ) != 0) fail("cannot start " + argv[0]);
  int status = 0;
  if (::waitpid(pid, &status, 0) < 0 || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    fail(argv[0] + " failed");
  }
}

std::string time_text(int64_t unixSeconds) {
  const auto f = logs::utc_fields_from_unix_us(unixSeconds * 1000000);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02d %02d:%02d:%02d", f.year, f.month, f.day,
                f.hours, f.minutes, f.seconds);
  return buffer;
}

// A machine with `count` archived logs of `blocks` 512-byte blocks in C:\arch (files written
// when `files`), over `threads` threads.
std::string scenario(int count, int threads, int blocks, const std::string& root, bool files) {
  std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<machine host=\"BENCH\" time_zone=\"+00:00\" now=\"2024-03-05 10:00:00\">\n"
      "<instance sid=\"ORCL\" home=\"" + kHome + "\" state=\"open\">\n"
      "<database name=\"ORCL\" dbid=\"1\" open_mode=\"READ WRITE\" log_mode=\"ARCHIVELOG\"/>\n"
      "<log_group number=\"1\" sequence=\"900000\" status=\"CURRENT\" archived=\"NO\" redo_blocks=\"2\">"
      "<member name=\"C:\\redo\\R1.LOG\"/></log_group>\n"
      "<log_group number=\"2\" sequence=\"899999\" status=\"INACTIVE\" redo_blocks=\"2\">"
      "<member name=\"C:\\redo\\R2.LOG\"/></log_group>\n"
      "<parameter name=\"log_archive_dest_1\" value=\"LOCATION=C:\\arch\"/>\n";
  fs::create_directories(root + "/c/arch");
  const std::string data(static_cast<size_t>(blocks) * 512, 'x');
  const int64_t start = 1709632800 - 4LL * 86400;
  for (int i = 1; i <= count; ++i) {
    const std::string n = std::to_string(i), t = std::to_string(1 + i % threads);
    const std::string name = "LOG_" + t + "_" + n + ".ARC";
    if (files) std::ofstream(root + "/c/arch/" + name, std::ios::binary) << data;
    xml += "<archived_log recid=\"" + n + "\" stamp=\"" + n + "\" thread=\"" + t +
           "\" sequence=\"" + std::to_string(1 + i / threads) + "\" name=\"C:\\arch\\" + name +
           "\" first_change=\"" + n + "\" first_time=\"" + time_text(start + i * 30) +
           "\" next_change=\"" + std::to_string(i + 1) + "\" next_time=\"" +
           time_text(start + i * 30 + 29) + "\" blocks=\"" + std::to_string(blocks) + "\"/>\n";
  }
  return xml + "</instance>\n</machine>\n";
}

void use_scenario(const std::string& folder, const std::string& xml) {
  const std::string path = folder + "/scenario.xml";
  std::ofstream(path, std::ios::binary) << xml;
  ::setenv("OCISIM_SCENARIO", path.c_str(), 1);
  ::setenv("OCISIM_STATE", (folder + "/scenario.state").c_str(), 1);
  std::error_code ignored;
  fs::remove(folder + "/scenario.state", ignored);
}

bool copy_figures(const std::string& root, const std::string& folder) {
  const char* env = std::getenv("DSL_BENCH_LOGS");
  const int count = env ? std::atoi(env) : 1000;
  use_scenario(folder, scenario(count, 2, 2048, root, true));
  COracleConfig config;
  config.tempLogPath = u"C:\\logs\\";
  config.stageLogsBeforeBackup = !std::getenv("DSL_BENCH_NO_STAGE");
  COracleConfig::replace_for_tests(config);

  std::vector<std::string> cpArgs = {"cp", "-t", root + "/c/cp-target"};
  std::vector<std::string> logNames;
  for (const auto& e : fs::directory_iterator(root + "/c/arch")) {
    cpArgs.push_back(e.path().string());
    logNames.push_back(e.path().filename().string());
  }
  const double mib = static_cast<double>(count);
  std::vector<double> library, cpRates, ddRates;
  // Each side starts from the same state: the other sides' copies removed and every dirty page
  // written out (sync), so that none pays for another's write-back; the order turns each round.
  const auto clean = [&] {
    fs::remove_all(root + "/c/cp-target");
    fs::remove_all(root + "/c/dd-target");
    fs::remove_all(root + "/c/logs");
  };
  const auto time_cp = [&] {
    clean();
    fs::create_directories(root + "/c/cp-target");
    run({"sync"});
    const auto start = bench_clock::now();
    run(cpArgs);
    cpRates.push_back(mib / seconds_since(start));
  };
  const auto time_dd = [&] {
    clean();
    fs::create_directories(root + "/c/dd-target");
    run({"sync"});
    const auto start = bench_clock::now();
    for (const auto& name : logNames) {
      run({"dd", "if=" + root + "/c/arch/" + name, "of=" + root + "/c/dd-target/" + name,
           "bs=512K", "status=none"});
    }
    ddRates.push_back(mib / seconds_since(start));
  };
  const auto time_library = [&] {
    clean();
    run({"sync"});
    const auto start = bench_clock::now();
    const std::u16string list = COracleManager::instance().backup_logs(
        util::from_utf8(kHome), u"ORCL", u"", u"", conn_t());
    library.push_back(mib / seconds_since(start));
    if (config.stageLogsBeforeBackup && list.find(u"isLogCopied=\"false\"") != std::u16string::npos) {
      fail("a log was not copied");
    }
  };
  const std::function<void()> sides[] = {time_library, time_dd, time_cp};
  for (int round = 0; round < kRounds; ++round) {
    for (int i = 0; i < 3; ++i) sides[(round + i) % 3]();
  }
  clean();
  const double lib = bench::median(library), dd = bench::median(ddRates),
               cp = bench::median(cpRates);
  const bool ddMet = lib >= kDdTargetRatio * dd;
  const bool cpMet = lib >= kCpTargetRatio * cp;
  std::printf("backup copy    %d logs of 1 MiB, staging on (medians of %d rounds, order turning):\n"
              "               library %.0f MiB/s\n"
              "               dd bs=512K, one dd per file: %.0f MiB/s, ratio %.2f  target >= %.2f: %s\n"
              "               cp, one call for all files:  %.0f MiB/s, ratio %.2f  (for information; "
              "earlier target >= %.1f: %s)\n",
              count, kRounds, lib, dd, lib / dd, kDdTargetRatio, ddMet ? "met" : "MISSED", cp,
              lib / cp, kCpTargetRatio, cpMet ? "met" : "MISSED");
  return ddMet;
}

bool deletion_figures(const std::string& root, const std::string& folder) {
  use_scenario(folder, scenario(kDeletionLogs, 4, 1, root, false));
  // The rows as the query hands them over, made once.
  std::vector<std::vector<std::u16string>> rows;
  const int64_t start = 1709632800 - 4LL * 86400;
  for (int i = 1; i <= kDeletionLogs; ++i) {
    const std::u16string n = util::from_utf8(std::to_string(i));
    rows.push_back({n, u"512", n, n, u"C:\\arch\\LOG_" + n + u".ARC",
                    util::from_utf8(std::to_string(1 + i % 4)),
                    util::from_utf8(std::to_string(1 + i / 4)), u"1", u"512",
                    util::from_utf8(time_text(start + i * 30)).replace(4, 1, u"/").replace(7, 1, u"/"),
                    util::from_utf8(time_text(start + i * 30 + 29)).replace(4, 1, u"/").replace(7, 1, u"/")});
  }
  std::vector<double> own, whole;
  size_t built = 0, timed = 0;
  for (int round = 0; round < kRounds; ++round) {
    auto t0 = bench_clock::now();
    arch_log_list_t list;
    list.reserve(rows.size());
    for (const auto& row : rows) list.push_back(logs::active_log_from_row(row));
    logs::sort_active_logs(list);
    built = 0;
    logs::apply_size_rule(list, 0, [&](const SArchLogInfo& l) { built += logs::delete_log_block(l).size() > 0; });
    timed = 0;
    logs::apply_time_rule(list, u"03/03/2024 10:00:00", [&](const SArchLogInfo&) { ++timed; });
    own.push_back(seconds_since(t0) * 1000);

    t0 = bench_clock::now();
    COracleManager::instance().delete_logs_by_size(util::from_utf8(kHome), u"ORCL", UINT64_MAX, conn_t());
    whole.push_back(seconds_since(t0) * 1000);
  }
  if (built != kDeletionLogs - 1) fail("the size rule did not select 9,999 logs");
  if (timed == 0 || timed == kDeletionLogs) fail("the time rule selected " + std::to_string(timed));
  const double m = bench::median(own);
  const bool met = m < kDeletionTargetMs;
  std::printf("deletion       10,000 active logs: library's own work median %.1f ms (size rule: "
              "%zu blocks; time rule: %zu logs)  target < %.0f ms: %s\n",
              m, built, timed, kDeletionTargetMs, met ? "met" : "MISSED");
  std::printf("               whole by-size call against ocisim, nothing removed: median %.1f ms "
              "(session, checks, 11-column query of 10,000 rows in ocisim)\n",
              bench::median(whole));
  return met;
}

}  // namespace

int main() {
  bench::use_simulated_client("logs_bench");
  bench::scratch_folder_t root("logs_bench", "dsl-logs-bench-");
  bench::scratch_folder_t sim("logs_bench", "dsl-logs-sim-");
  ::setenv("DBSHADOWLINK_ROOT", root.path().c_str(), 1);
  const bool copy = copy_figures(root.path(), sim.path());
  const bool deletion = deletion_figures(root.path(), sim.path());
  return copy && deletion ? 0 : 1;
}
