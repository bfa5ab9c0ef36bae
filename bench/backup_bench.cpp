// Figures of the backup preparation and finish on the host build, against the simulated client
// (ocisim): a machine of 1, 5 and 20 databases in archive-log mode is prepared (each put into
// hot-backup state) and finished (each taken out of it with a log switch), round after round on
// a fresh machine. Every OCI call goes through a timing table in front of the client, so the
// time spent inside ocisim (its statements, state file and lock) is known and taken out: what
// is left is the library's own time (sessions and their worker threads, queries, the document,
// the log). Times are processor time (the process's, and each OCI call's on its own thread), so
// that other work on a shared machine does not land in the figures; the wall time with ocisim
// is printed beside them for reference. Target: the library's own time per database for 20 databases within 1.2 times that
// for 1 database, for preparation and for finish. Exit status 1 when a target is missed.
#include <dlfcn.h>
#include <unistd.h>

#include <time.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench_util.h"
#include "config/oracle_config.h"
#include "oracle/backup/backup_finish.h"
#include "oracle/backup/backup_prepare.h"
#include "oracle/client/oci_table.h"
#include "oracle/client/ora_interface.h"
#include "oracle/discovery/oracle_sid.h"

namespace {

using bench_clock = std::chrono::steady_clock;
namespace fs = std::filesystem;
using namespace specific::oracle;

constexpr char kHome[] = "C:\\app\\oracle\\product\\19.0.0\\dbhome_1";
constexpr double kRatioTarget = 1.2;

oci_table_t g_real;
std::atomic<long long> g_client_ns{0};

// One timing wrapper per entry of the table: the call to the real client, with its time added.
template <typename Fn, Fn oci_table_t::*Member>
struct timed;
long long cpu_ns(clockid_t clock) {
  timespec t{};
  ::clock_gettime(clock, &t);
  return static_cast<long long>(t.tv_sec) * 1000000000LL + t.tv_nsec;
}

template <typename R, typename... A, R (*oci_table_t::*Member)(A...)>
struct timed<R (*)(A...), Member> {
  static R call(A... args) {
    const long long start = cpu_ns(CLOCK_THREAD_CPUTIME_ID);
    const R result = (g_real.*Member)(args...);
    g_client_ns += cpu_ns(CLOCK_THREAD_CPUTIME_ID) - start;
    return result;
  }
};

#define DSL_TIMED(name) table.name = &timed<decltype(table.name), &oci_table_t::name>::call

oci_table_t timing_table(const std::string& library) {
  void* module = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) bench::fail("backup_bench", std::string("cannot load ") + library);
  for (const oci_entry_t& entry : oci_entries(g_real)) {
    *entry.slot = ::dlsym(module, entry.name);
    if (*entry.slot == nullptr) bench::fail("backup_bench", std::string("no ") + entry.name);
  }
  oci_table_t table;
  DSL_TIMED(OCIEnvCreate);
  DSL_TIMED(OCIErrorGet);
  DSL_TIMED(OCIHandleAlloc);
  DSL_TIMED(OCIHandleFree);
  DSL_TIMED(OCIAttrSet);
  DSL_TIMED(OCIServerAttach);
  DSL_TIMED(OCIServerDetach);
  DSL_TIMED(OCISessionBegin);
  DSL_TIMED(OCISessionEnd);
  DSL_TIMED(OCIStmtPrepare);
  DSL_TIMED(OCIDefineByPos);
  DSL_TIMED(OCIBindByName);
  DSL_TIMED(OCIStmtExecute);
  DSL_TIMED(OCIStmtFetch2);
  DSL_TIMED(OCIDBStartup);
  DSL_TIMED(OCIDBShutdown);
  return table;
}

std::string own_folder() {
  char buffer[4096];
  const ssize_t n = ::readlink("/proc/self/exe", buffer, sizeof buffer - 1);
  if (n <= 0) return ".";
  buffer[n] = '\0';
  return fs::path(buffer).parent_path().string();
}

std::string sid_of(int i) { return "DB" + std::to_string(i); }

std::string scenario(int databases) {
  std::string xml = "<machine host=\"BENCH\" now=\"2024-03-05 10:00:00\">\n";
  for (int i = 0; i < databases; ++i) {
    const std::string s = sid_of(i);
    xml += "<instance sid=\"" + s + "\" home=\"" + kHome + "\" state=\"open\">"
           "<database name=\"" + s + "\" log_mode=\"ARCHIVELOG\" current_scn=\"100\"/>"
           "<control_file name=\"C:\\o\\" + s + "\\C1.CTL\"/>"
           "<data_file number=\"1\" name=\"C:\\o\\" + s + "\\S1.DBF\"/>"
           "<data_file number=\"2\" name=\"C:\\o\\" + s + "\\U1.DBF\"/>"
           "<log_group number=\"1\" sequence=\"1\" status=\"CURRENT\" archived=\"NO\" redo_blocks=\"1\">"
           "<member name=\"C:\\o\\" + s + "\\R1.LOG\"/></log_group>"
           "<log_group number=\"2\" sequence=\"0\" status=\"INACTIVE\" redo_blocks=\"1\">"
           "<member name=\"C:\\o\\" + s + "\\R2.LOG\"/></log_group>"
           "<parameter name=\"log_archive_dest_1\" value=\"LOCATION=C:\\arch\\" + s + "\"/>"
           "</instance>\n";
  }
  return xml + "</machine>\n";
}

struct figures_t {
  double prepare_own_ms = 0;  // median per database
  double finish_own_ms = 0;
  double prepare_all_ms = 0;
  double finish_all_ms = 0;
};

double ms(long long ns) { return static_cast<double>(ns) / 1e6; }

figures_t measure(const std::string& folder, int databases, int rounds) {
  const std::string path = folder + "/machine" + std::to_string(databases) + ".xml";
  std::ofstream(path) << scenario(databases);
  ::setenv("OCISIM_SCENARIO", path.c_str(), 1);
  std::vector<SOracleSid> sids;
  for (int i = 0; i < databases; ++i) {
    SOracleSid s;
    s.sid = std::u16string(sid_of(i).begin(), sid_of(i).end());
    s.home = std::u16string(kHome, kHome + sizeof kHome - 1);
    sids.push_back(s);
  }
  std::vector<double> prepare_own, finish_own, prepare_all, finish_all;
  for (int round = 0; round < rounds; ++round) {
    std::error_code ignored;
    fs::remove(path + ".state", ignored);
    g_client_ns = 0;
    auto start = bench_clock::now();
    long long cpu = cpu_ns(CLOCK_PROCESS_CPUTIME_ID);
    const std::u16string document = CDbsBackupPrepare::prepare_instances(sids, {}, {});
    long long wall = std::chrono::duration_cast<std::chrono::nanoseconds>(bench_clock::now() - start).count();
    cpu = cpu_ns(CLOCK_PROCESS_CPUTIME_ID) - cpu;
    if (document.find(u"action=\"2\"") == std::u16string::npos) bench::fail("backup_bench", "no database was prepared");
    prepare_all.push_back(ms(wall) / databases);
    prepare_own.push_back(ms(cpu - g_client_ns) / databases);

    g_client_ns = 0;
    start = bench_clock::now();
    cpu = cpu_ns(CLOCK_PROCESS_CPUTIME_ID);
    CDbsBackupFinish::finish_all(document, {}, false);
    wall = std::chrono::duration_cast<std::chrono::nanoseconds>(bench_clock::now() - start).count();
    cpu = cpu_ns(CLOCK_PROCESS_CPUTIME_ID) - cpu;
    finish_all.push_back(ms(wall) / databases);
    finish_own.push_back(ms(cpu - g_client_ns) / databases);
  }
  return {bench::median(prepare_own), bench::median(finish_own), bench::median(prepare_all),
          bench::median(finish_all)};
}

}  // namespace

int main() {
  std::string library;
  if (const char* configured = std::getenv("DSL_OCI_LIBRARY"); configured && *configured) {
    library = configured;
  } else {
    library = own_folder() + "/../bin/ocisim/libclntsh.so";
  }
  if (!fs::exists(library)) bench::fail("backup_bench", "no simulated client at " + library + " (build target ocisim)");
  ::unsetenv("OCISIM_JOURNAL");
  ::unsetenv("OCISIM_STATE");
  bench::scratch_folder_t folder("backup_bench", "dsl-backup-bench-");
  ::setenv("DBSHADOWLINK_ROOT", folder.path().c_str(), 1);
  COracleConfig config;
  config.connectionTimeoutSec = 60;
  config.tempLogPath = u"C:\\bench\\";
  COracleConfig::replace_for_tests(config);
  const oci_table_t table = timing_table(library);
  CWinOraInterface::replace_table_for_tests(&table);

  measure(folder.path(), 1, 3);  // warm-up: the client's first machine read, the log
  const int counts[] = {1, 5, 20};
  const int rounds[] = {41, 15, 7};
  figures_t f[3];
  for (int i = 0; i < 3; ++i) {
    f[i] = measure(folder.path(), counts[i], rounds[i]);
    std::printf("%2d databases: prepare %7.3f ms/db own CPU (%7.3f ms/db wall with ocisim), "
                "finish %7.3f ms/db own CPU (%7.3f ms/db wall with ocisim)\n",
                counts[i], f[i].prepare_own_ms, f[i].prepare_all_ms, f[i].finish_own_ms,
                f[i].finish_all_ms);
  }
  CWinOraInterface::replace_table_for_tests(nullptr);
  const double prepare_ratio = f[2].prepare_own_ms / f[0].prepare_own_ms;
  const double finish_ratio = f[2].finish_own_ms / f[0].finish_own_ms;
  const bool met = prepare_ratio <= kRatioTarget && finish_ratio <= kRatioTarget;
  std::printf("own time per database, 20 against 1: prepare %.2fx, finish %.2fx; target <= %.1fx: %s\n",
              prepare_ratio, finish_ratio, kRatioTarget, met ? "met" : "MISSED");
  return met ? 0 : 1;
}
