// Figures of the log-file layer on the host build, each measured side by side with the
// system's own tool in the same run:
//   rotation      compressing a 15 MiB log (check_log_size) against `gzip -9` on the same file;
//   copy          the file layer's whole-file copy of 1 GiB against `dd bs=512K` and `cp`;
//   log line      the cost of one line written to a log file, over 1,000,000 lines.
// Everything is written below a fresh folder in /tmp (DBSHADOWLINK_ROOT), removed at the end.
// DSL_BENCH_COPY_MIB sets the size of the copied file (default 1024). Exit status 1 when a
// target is missed.
#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench_util.h"
#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_file.h"
#include "common/logging/log_file_rotation.h"
#include "common/text/convert.h"
#include "common/win/file_copy.h"
#include "common/win/path_map_posix.h"

extern char** environ;

namespace {

using bench_clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr int kRotationRounds = 7;
constexpr int kCopyRounds = 11;
constexpr int kLines = 1000000;

double seconds_since(bench_clock::time_point start) {
  return std::chrono::duration<double>(bench_clock::now() - start).count();
}

double best(const std::vector<double>& values) {
  return *std::min_element(values.begin(), values.end());
}

using bench::median;

[[noreturn]] void fail(const std::string& text) { bench::fail("log_bench", text); }

// A folder of its own in /tmp that stands for drive C.
class bench_root_t {
 public:
  bench_root_t() {
    ::setenv("DBSHADOWLINK_ROOT", folder_.path().c_str(), 1);
    fs::create_directories(fs::path(folder_.path()) / "c" / "bench");
  }
  // The host path of a file in "C:\bench\".
  std::string host(const std::string& name) const { return folder_.path() + "/c/bench/" + name; }
  static std::string windows(const std::string& name) { return "C:\\bench\\" + name; }

 private:
  bench::scratch_folder_t folder_{"log_bench", "dsl-log-bench-"};
};

// Runs a command, its standard output into `output` when one is named; answers its wall time.
double run_command(const std::vector<std::string>& argv, const std::string& output = "") {
  std::vector<char*> args;
  for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
  args.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (!output.empty()) {
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                     0644);
  }
  const auto start = bench_clock::now();
  pid_t pid = 0;
  if (posix_spawnp(&pid, args[0], &actions, nullptr, args.data(), environ) != 0) {
    fail("cannot start " + argv[0]);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  const double elapsed = seconds_since(start);
  posix_spawn_file_actions_destroy(&actions);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) fail(argv[0] + " failed");
  return elapsed;
}

void copy_raw(const std::string& from, const std::string& to) {
  fs::copy_file(from, to, fs::copy_options::overwrite_existing);
}

uint64_t file_size(const std::string& path) { return fs::file_size(path); }

// A log as the library writes it: real lines through the real log, a mix of steps, queries,
// counts, warnings of several lines, all with moving numbers; exactly `size` bytes.
void make_sample_log(const bench_root_t& root, const std::string& name, uint64_t size) {
  {
    auto file = std::make_shared<logging::receiver::win_log_file_t>(root.windows(name));
    auto log = std::make_shared<logging::log_t>(file);
    logging::log_channel_t oralib(log, "oralib");
    logging::log_channel_t common(log, "");
    uint32_t x = 2463534242u;
    auto next = [&x] {
      x ^= x << 13;
      x ^= x >> 17;
      x ^= x << 5;
      return x;
    };
    for (uint64_t n = 0; file->size() < size; ++n) {
      const std::string sid = "ORCL" + std::to_string(next() % 7);
      switch (next() % 6) {
        case 0:
          oralib.step_line("Connecting to instance [" + sid + "] as SYSDBA...");
          log->indent_more();
          break;
        case 1:
          oralib.info("Executing [SELECT RECID, STAMP, NAME, SEQUENCE# FROM V$ARCHIVED_LOG WHERE "
                      "RECID > " + std::to_string(next() % 100000) + " AND NAME IS NOT NULL]");
          break;
        case 2:
          oralib.info("Found " + std::to_string(next() % 50) + " log files with seq number above " +
                      std::to_string(next() % 1000000));
          break;
        case 3:
          oralib.info("Copied [D:\\oracle\\arch\\" + sid + "\\ARC" + std::to_string(next() % 99999) +
                      "_1_1123456789.ARC] (" + std::to_string(next() % 500000000) + " bytes)");
          break;
        case 4:
          common.warn("Failed to open file [C:\\ProgramData\\Trelo\\Backup\\Tmp\\{" +
                      std::to_string(next()) + "}].\nThe process cannot access the file because "
                      "it is being used by another process.\n--tr:Error code: 0x00000020");
          break;
        default:
          log->indent_less();
          oralib.step_line("Connecting to instance [" + sid + "] as SYSDBA... ok.");
          break;
      }
    }
  }
  fs::resize_file(root.host(name), size);
}

bool bench_rotation(const bench_root_t& root) {
  const uint64_t size = logging::kLogSizeLimit;
  make_sample_log(root, "sample.log", size);
  std::vector<double> ours, gzip;
  uint64_t our_bytes = 0, gzip_bytes = 0;
  for (int round = 0; round < kRotationRounds; ++round) {
    const bool gzip_first = round % 2 == 1;
    if (gzip_first) {
      ::sync();
      gzip.push_back(run_command({"gzip", "-9", "-c", root.host("sample.log")},
                                 root.host("sample.log.gz")));
    }
    copy_raw(root.host("sample.log"), root.host("R.log"));
    fs::remove(root.host("R.log.gz"));
    ::sync();
    {
      logging::receiver::win_log_file_t file(root.windows("R.log"));
      const auto start = bench_clock::now();
      logging::check_log_size(file);
      ours.push_back(seconds_since(start));
      if (file.size() != 0) fail("the log was not rotated");
    }
    if (!gzip_first) {
      ::sync();
      gzip.push_back(run_command({"gzip", "-9", "-c", root.host("sample.log")},
                                 root.host("sample.log.gz")));
    }
    our_bytes = file_size(root.host("R.log.gz"));
    gzip_bytes = file_size(root.host("sample.log.gz"));
  }
  const double ratio = median(ours) / median(gzip);
  std::printf("rotation: 15 MiB log (%llu bytes), %d rounds, median (best)\n",
              static_cast<unsigned long long>(size), kRotationRounds);
  std::printf("  check_log_size (zlib level 9)  %8.3f s (%.3f)  -> %llu bytes\n", median(ours),
              best(ours), static_cast<unsigned long long>(our_bytes));
  std::printf("  gzip -9                        %8.3f s (%.3f)  -> %llu bytes\n", median(gzip),
              best(gzip), static_cast<unsigned long long>(gzip_bytes));
  std::printf("  ratio ours / gzip -9           %8.3f    (target <= 1.10: %s)\n", ratio,
              ratio <= 1.10 ? "met" : "NOT MET");
  fs::remove(root.host("R.log"));
  fs::remove(root.host("R.log.gz"));
  fs::remove(root.host("sample.log"));
  fs::remove(root.host("sample.log.gz"));
  return ratio <= 1.10;
}

void make_big_file(const std::string& path, uint64_t size) {
  std::vector<char> block(1 << 20);
  uint64_t x = 88172645463325252ull;
  for (auto& c : block) {
    x ^= x << 13;
    x ^= x >> 7;
    x ^= x << 17;
    c = static_cast<char>(x);
  }
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  for (uint64_t written = 0; written < size; written += block.size()) {
    block[0] = static_cast<char>(written >> 20);  // no two blocks alike
    out.write(block.data(), static_cast<std::streamsize>(std::min<uint64_t>(block.size(),
                                                                            size - written)));
  }
  if (!out) fail("cannot write the copy source");
}

bool bench_copy(const bench_root_t& root) {
  const char* mib_text = std::getenv("DSL_BENCH_COPY_MIB");
  const uint64_t mib = mib_text != nullptr ? std::strtoull(mib_text, nullptr, 10) : 1024;
  const uint64_t size = mib << 20;
  make_big_file(root.host("big.bin"), size);
  // One untimed round of all three, so that every contender finds the source in the cache
  // and the memory of a first gigabyte already reclaimed.
  std::vector<double> ours, dd, cp;
  for (int round = -1; round < kCopyRounds; ++round) {
    if (round == 0) {
      ours.clear();
      dd.clear();
      cp.clear();
    }
    for (int turn = 0; turn < 3; ++turn) {
      // Each contender starts with no writing of others' data pending.
      ::sync();
      switch ((round + 3 + turn) % 3) {
        case 0: {
          const auto start = bench_clock::now();
          win::copy_file(win::path_holder_t(root.windows("big.bin")),
                         win::path_holder_t(root.windows("copy.bin")));
          ours.push_back(seconds_since(start));
          if (file_size(root.host("copy.bin")) != size) fail("the copy is short");
          fs::remove(root.host("copy.bin"));
          break;
        }
        case 1:
          dd.push_back(run_command({"dd", "if=" + root.host("big.bin"),
                                    "of=" + root.host("copy_dd.bin"), "bs=512K", "status=none"}));
          fs::remove(root.host("copy_dd.bin"));
          break;
        default:
          cp.push_back(run_command({"cp", root.host("big.bin"), root.host("copy_cp.bin")}));
          fs::remove(root.host("copy_cp.bin"));
          break;
      }
    }
  }
  fs::remove(root.host("big.bin"));
  const double mb = static_cast<double>(size) / (1 << 20);
  const double ours_rate = mb / median(ours), dd_rate = mb / median(dd), cp_rate = mb / median(cp);
  std::printf("copy: %llu MiB file, %d rounds after a warm-up round, median (best)\n",
              static_cast<unsigned long long>(mib), kCopyRounds);
  std::printf("  win::copy_file (512 KiB chunks) %8.3f s (%.3f)  %6.0f MiB/s\n", median(ours),
              best(ours), ours_rate);
  std::printf("  dd bs=512K                      %8.3f s (%.3f)  %6.0f MiB/s\n", median(dd),
              best(dd), dd_rate);
  std::printf("  cp                              %8.3f s (%.3f)  %6.0f MiB/s\n", median(cp),
              best(cp), cp_rate);
  std::printf("  throughput ours / dd            %8.3f    (target >= 0.95: %s)\n",
              ours_rate / dd_rate, ours_rate / dd_rate >= 0.95 ? "met" : "NOT MET");
  std::printf("  throughput ours / cp            %8.3f\n", ours_rate / cp_rate);
  return ours_rate / dd_rate >= 0.95;
}

bool bench_lines(const bench_root_t& root) {
  auto file = std::make_shared<logging::receiver::win_log_file_t>(root.windows("lines.log"));
  auto log = std::make_shared<logging::log_t>(file);
  // As in the library: rotation on, checked every 1000 writes.
  logging::install_rotation(*log);
  log->set_rotate_enabled(true);
  const logging::log_channel_t channel(log, "oralib");
  std::vector<double> costs;
  costs.reserve(kLines);
  const std::string head = "Copied archived log with sequence ";
  for (int i = 0; i < kLines; ++i) {
    const std::string text = head + std::to_string(i) + " to the backup folder";
    const auto start = bench_clock::now();
    channel.info(text);
    costs.push_back(std::chrono::duration<double, std::micro>(bench_clock::now() - start).count());
  }
  double total = 0;
  for (double c : costs) total += c;
  std::vector<double> sorted = costs;
  std::sort(sorted.begin(), sorted.end());
  const double med = median(sorted);
  std::printf("log line: %d lines to a file, rotation on\n", kLines);
  std::printf("  median %.3f us, mean %.3f us, p99 %.3f us, max %.0f us\n", med,
              total / kLines, sorted[static_cast<size_t>(kLines * 0.99)], sorted.back());
  std::printf("  median under 5 us: %s\n", med < 5.0 ? "met" : "NOT MET");
  log->set_file(nullptr);
  return med < 5.0;
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  bench_root_t root;
  const bool rotation = bench_rotation(root);
  const bool copy = bench_copy(root);
  const bool lines = bench_lines(root);
  return rotation && copy && lines ? 0 : 1;
}
