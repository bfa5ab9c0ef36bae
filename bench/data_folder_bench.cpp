// What the data folder's safety costs: opening (creating) a file in the data folder, where the
// folders on the way are checked and the name is looked at first, against the same open in a
// folder elsewhere; and the recognition alone, which every file operation pays.
#include <stdlib.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "bench_util.h"
#include "common/win/file.h"
#include "common/win/path_ops.h"
#include "common/win/safe_folder.h"

namespace {

const char kProgram[] = "data_folder_bench";
constexpr int kRounds = 7;
constexpr int kOpens = 2000;

double micros_per_open(const std::string& folder) {
  std::vector<double> rounds;
  for (int r = 0; r < kRounds; ++r) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < kOpens; ++i) {
      win::win_file_t::create(win::path_holder_t(folder + "\\f" + std::to_string(i % 16) + ".txt"));
    }
    const std::chrono::duration<double, std::micro> spent = std::chrono::steady_clock::now() - start;
    rounds.push_back(spent.count() / kOpens);
  }
  return bench::median(rounds);
}

}  // namespace

int main() {
  bench::scratch_folder_t scratch(kProgram, "dsl_data_folder_");
  ::setenv("DBSHADOWLINK_ROOT", scratch.path().c_str(), 1);
  const std::string inside = "C:\\ProgramData\\Trelo\\Backup\\OracleLogBackup";
  const std::string outside = "C:\\elsewhere\\OracleLogBackup";
  win::create_directories(win::path_holder_t(inside + "\\"));
  win::create_directories(win::path_holder_t(outside + "\\"));

  const double in = micros_per_open(inside);
  const double out = micros_per_open(outside);
  std::vector<double> rounds;
  for (int r = 0; r < kRounds; ++r) {
    const auto start = std::chrono::steady_clock::now();
    int hits = 0;
    for (int i = 0; i < kOpens; ++i) hits += win::lies_in_data_folder(u"D:\\logs\\x.log") ? 1 : 0;
    const std::chrono::duration<double, std::micro> spent = std::chrono::steady_clock::now() - start;
    if (hits != 0) bench::fail(kProgram, "a path outside was taken for the data folder");
    rounds.push_back(spent.count() / kOpens);
  }
  std::printf("create a file in the data folder (3 folders checked): %.1f us per open\n", in);
  std::printf("create a file elsewhere:                              %.1f us per open\n", out);
  std::printf("recognising a path outside the data folder:           %.2f us per call\n",
              bench::median(rounds));
  return 0;
}
