// A generator of simulated machines with many archived logs: one database instance with
// several redo threads whose logs span several days, some in an ASM disk group, some already
// deleted by the database (STATUS 'D', no NAME), some listed though their file is gone. The
// files of the other logs are written into the test folder, so that copies and deletions act on
// real files. The scenario format is the simulated client's (docs/ocisim.md).
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "support/test_folder.h"

namespace logs_test {

struct scenario_options_t {
  uint32_t seed = 1;
  int threads = 2;
  int logsPerThread = 20;
  int days = 3;             // the logs end at `now` and reach back this many days
  int asmPercent = 0;       // share of logs in the disk group FRA
  int deletedPercent = 0;   // share already deleted by the database
  int missingPercent = 0;   // share listed but without a file
  int maxBlocks = 4;        // each log has 1..maxBlocks blocks of 512 bytes
  int64_t nowUnix = 1709632800;  // the machine's clock, UTC (2024-03-05 10:00:00)
  std::string state = "open";
  std::string extraInstanceXml;  // faults and the like
};

struct generated_log_t {
  int64_t recid = 0;
  int64_t thread = 0;
  int64_t sequence = 0;
  std::string name;  // empty for a deleted log
  int64_t firstUnix = 0;
  int64_t nextUnix = 0;
  int64_t blocks = 0;
  bool onAsm = false;
  bool deleted = false;
  bool missing = false;
  std::string fileWindowsPath;  // where the file lies (also for ASM names)
};

struct generated_machine_t {
  std::string xml;
  std::string sid = "ORCL";
  std::string home = "C:\\app\\oracle\\product\\19.0.0\\dbhome_1";
  std::vector<generated_log_t> logs;
  std::string archFolder;  // Windows path of the local archive destination, ending in "\"
};

// Writes the files and answers the scenario.
generated_machine_t generate_logs_machine(const dsl_test::test_folder_t& folder,
                                          const scenario_options_t& options);

// "YYYY-MM-DD HH:MI:SS" of a UTC moment.
std::string scenario_time(int64_t unixSeconds);

}  // namespace logs_test
