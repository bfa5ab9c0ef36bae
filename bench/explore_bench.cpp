// Figures of the explore on the host build, against the simulated client (ocisim):
//   explore   one database with 10,000 archived logs, explored with --collect (the export's
//             flow through the manager: registry scan, session, every collector step, the
//             existence check of each log file, the document and its rendering); wall time,
//             target under 1 s, and the process's peak memory, target under 100 MiB. The time
//             is split into the library's share and the share spent inside the client's entry
//             points (ocisim parsing and evaluating the statements), measured by a table of
//             entry points that forwards to ocisim and times each call. The peak memory is the
//             whole process's, ocisim's machine included.
//   render    the document of such a database (10,000 archived_log elements) built from the
//             records and printed; target: median under 100 ms.
// The client is the built ocisim: DSL_OCI_LIBRARY when set, else ../bin/ocisim/libclntsh.so
// beside this program's folder. The machine (registry file, scenario, drive folder with the
// 10,000 log files) is made in a fresh folder in /tmp and removed at the end. Exit status 1
// when a target is missed or the explore fails.
#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "bench_util.h"
#include "common/text/convert.h"
#include "common/win/reg_store_posix.h"
#include "common/xml/xml_doc.h"
#include "config/oracle_config.h"
#include "frame/oracle_manager.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/ora_interface.h"
#include "oracle/discovery/oracle_props.h"

namespace {

using bench_clock = std::chrono::steady_clock;
namespace fs = std::filesystem;
using namespace specific::oracle;

constexpr int kLogs = 10000;
constexpr int kRenderRounds = 7;
constexpr double kExploreTargetMs = 1000.0;
constexpr double kMemoryTargetMiB = 100.0;
constexpr double kRenderTargetMs = 100.0;

[[noreturn]] void fail(const std::string& text) { bench::fail("explore_bench", text); }

double ms_since(bench_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(bench_clock::now() - start).count();
}

std::string log_name(int i) {
  return "C:\\arch\\ORCL\\ARC" + std::to_string(1000000000 + i).substr(1) + "_1040000000.0001";
}

std::string scenario() {
  std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<machine host=\"BENCH\" time_zone=\"+01:00\" now=\"2024-03-05 10:00:00\">\n"
      "<instance sid=\"ORCL\" home=\"C:\\app\\oracle\\product\\19.0.0\\dbhome_1\" state=\"open\">\n"
      "<database name=\"ORCL\" dbid=\"1\" log_mode=\"ARCHIVELOG\" current_scn=\"900000\"/>\n"
      "<parameter name=\"log_archive_dest_1\" value=\"LOCATION=C:\\arch\\ORCL\"/>\n"
      "<control_file name=\"C:\\app\\oracle\\oradata\\ORCL\\CONTROL01.CTL\" file_size_blks=\"646\"/>\n"
      "<data_file number=\"1\" name=\"C:\\app\\oracle\\oradata\\ORCL\\SYSTEM01.DBF\" bytes=\"943718400\"/>\n"
      "<log_group number=\"1\" sequence=\"" + std::to_string(kLogs + 1) +
      "\" bytes=\"209715200\" status=\"CURRENT\" archived=\"NO\"><member name=\"C:\\app\\oracle\\oradata\\ORCL\\REDO01.LOG\"/></log_group>\n"
      "<log_group number=\"2\" sequence=\"" + std::to_string(kLogs) +
      "\" bytes=\"209715200\"><member name=\"C:\\app\\oracle\\oradata\\ORCL\\REDO02.LOG\"/></log_group>\n";
  for (int i = 1; i <= kLogs; ++i) {
    const std::string n = std::to_string(i);
    xml += "<archived_log recid=\"" + n + "\" stamp=\"" + std::to_string(1162000000 + i) +
           "\" sequence=\"" + n + "\" name=\"" + log_name(i) + "\" first_change=\"" +
           std::to_string(i * 10) + "\" next_change=\"" + std::to_string(i * 10 + 10) +
           "\" first_time=\"2024-03-01 00:00:00\" next_time=\"2024-03-01 00:10:00\" blocks=\"2048\"/>\n";
  }
  return xml + "</instance>\n</machine>\n";
}

const char kRegistry[] =
    "Windows Registry Editor Version 5.00\r\n\r\n"
    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\ORACLE\\KEY_OraDB19Home1]\r\n"
    "\"ORACLE_HOME\"=\"C:\\\\app\\\\oracle\\\\product\\\\19.0.0\\\\dbhome_1\"\r\n"
    "\"ORACLE_HOME_NAME\"=\"OraDB19Home1\"\r\n\r\n"
    "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\OracleServiceORCL]\r\n"
    "\"ImagePath\"=\"C:\\\\app\\\\oracle\\\\product\\\\19.0.0\\\\dbhome_1\\\\bin\\\\ORACLE.EXE ORCL\"\r\n";

// The client's entry points, each forwarded to ocisim with its time added up.
oci_table_t g_real;
std::atomic<long long> g_clientNs{0};
std::atomic<long long> g_clientCpuNs{0};

long long thread_cpu_ns() {
  timespec t{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<long long>(t.tv_sec) * 1000000000LL + t.tv_nsec;
}

template <auto Member, typename Fn>
struct timed_t;
template <auto Member, typename R, typename... A>
struct timed_t<Member, R (*)(A...)> {
  static R call(A... args) {
    const auto start = bench_clock::now();
    const long long cpuStart = thread_cpu_ns();
    const R result = (g_real.*Member)(args...);
    g_clientCpuNs += thread_cpu_ns() - cpuStart;
    g_clientNs += std::chrono::duration_cast<std::chrono::nanoseconds>(bench_clock::now() - start).count();
    return result;
  }
};

template <auto Member>
auto timed() {
  return &timed_t<Member, std::remove_reference_t<decltype(g_real.*Member)>>::call;
}

oci_table_t timing_table() {
  oci_table_t t;
  t.OCIEnvCreate = timed<&oci_table_t::OCIEnvCreate>();
  t.OCIErrorGet = timed<&oci_table_t::OCIErrorGet>();
  t.OCIHandleAlloc = timed<&oci_table_t::OCIHandleAlloc>();
  t.OCIHandleFree = timed<&oci_table_t::OCIHandleFree>();
  t.OCIAttrSet = timed<&oci_table_t::OCIAttrSet>();
  t.OCIServerAttach = timed<&oci_table_t::OCIServerAttach>();
  t.OCIServerDetach = timed<&oci_table_t::OCIServerDetach>();
  t.OCISessionBegin = timed<&oci_table_t::OCISessionBegin>();
  t.OCISessionEnd = timed<&oci_table_t::OCISessionEnd>();
  t.OCIStmtPrepare = timed<&oci_table_t::OCIStmtPrepare>();
  t.OCIDefineByPos = timed<&oci_table_t::OCIDefineByPos>();
  t.OCIBindByName = timed<&oci_table_t::OCIBindByName>();
  t.OCIStmtExecute = timed<&oci_table_t::OCIStmtExecute>();
  t.OCIStmtFetch2 = timed<&oci_table_t::OCIStmtFetch2>();
  t.OCIDBStartup = timed<&oci_table_t::OCIDBStartup>();
  t.OCIDBShutdown = timed<&oci_table_t::OCIDBShutdown>();
  return t;
}

// CPU time of the process, or of the calling thread: beside the wall time, because on a busy
// machine the wall time mostly counts the time other programs had the processor.
double cpu_ms(clockid_t clock) {
  timespec t{};
  ::clock_gettime(clock, &t);
  return static_cast<double>(t.tv_sec) * 1e3 + static_cast<double>(t.tv_nsec) / 1e6;
}

double peak_mib() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // ru_maxrss is in KiB on Linux
}

size_t count_of(const std::string& text, const std::string& word) {
  size_t n = 0;
  for (size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1)) ++n;
  return n;
}

// The record of one database with kLogs archived logs, as the collector fills it.
std::shared_ptr<COverallProps> document_of_logs() {
  auto database = std::make_shared<CDatabaseProps>();
  database->name = u"ORCL";
  database->sid = u"ORCL";
  database->archiveLogsOn = true;
  for (int i = 1; i <= kLogs; ++i) {
    auto log = std::make_shared<SArchLogInfo>();
    log->logPath = util::from_utf8(log_name(i));
    log->size = u"1048576";
    log->firstChange = util::from_utf8(std::to_string(i * 10));
    log->nextChange = util::from_utf8(std::to_string(i * 10 + 10));
    log->firstTimeUtc = u"2024/02/29 23:00:00";
    log->nextTimeUtc = u"2024/02/29 23:10:00";
    log->seqNum = util::from_utf8(std::to_string(i));
    database->archivedLogs.push_back(log);
  }
  auto home = std::make_shared<CHomeProps>(u"OraDB19Home1");
  home->instances.push_back(database);
  auto overall = std::make_shared<COverallProps>();
  overall->homes.push_back(home);
  overall->env = std::make_shared<CEnvProps>();
  return overall;
}

}  // namespace

int main() {
  bench::use_simulated_client("explore_bench");
  bench::scratch_folder_t folder("explore_bench", "dsl-explore-bench-");
  const std::string root = folder.path() + "/root";
  fs::create_directories(root + "/c/arch/ORCL");
  for (int i = 1; i <= kLogs; ++i) {
    std::string path = log_name(i).substr(3);  // below "C:\"
    for (char& c : path) c = (c == '\\') ? '/' : c;
    std::ofstream(root + "/c/" + path, std::ios::binary);
  }
  std::ofstream(folder.path() + "/machine.reg", std::ios::binary) << kRegistry;
  std::ofstream(folder.path() + "/scenario.xml", std::ios::binary) << scenario();
  ::setenv("DBSHADOWLINK_ROOT", root.c_str(), 1);
  ::setenv("DBSHADOWLINK_REGISTRY", (folder.path() + "/machine.reg").c_str(), 1);
  ::setenv("OCISIM_SCENARIO", (folder.path() + "/scenario.xml").c_str(), 1);
  win::reg_store::reload();
  COracleConfig config;
  config.load_defaults();
  COracleConfig::replace_for_tests(config);

  const oci_load_result_t loaded = load_oci_table(g_real);
  if (!loaded.ok) fail("cannot load the simulated client: " + loaded.detail);
  static const oci_table_t table = timing_table();
  CWinOraInterface::replace_table_for_tests(&table);

  bool met = true;
  // One explore, as the agent makes it: the first is the one that counts (a second would find
  // the machine's state file and a log switch more).
  const auto start = bench_clock::now();
  const double cpuStart = cpu_ms(CLOCK_PROCESS_CPUTIME_ID);
  std::u16string document;
  try {
    document = COracleManager::instance().explore(/*option=*/true, {"", ""}, u"");
  } catch (const std::exception& e) {
    fail(std::string("explore failed: ") + e.what());
  }
  const double total = ms_since(start);
  const double cpu = cpu_ms(CLOCK_PROCESS_CPUTIME_ID) - cpuStart;
  const double client = static_cast<double>(g_clientNs.load()) / 1e6;
  const std::string text = util::to_utf8(document);
  const size_t logs = count_of(text, "<archived_log ");
  if (text.find("isError=\"true\"") != std::string::npos || logs < static_cast<size_t>(kLogs)) {
    fail("the document does not hold the database with its " + std::to_string(kLogs) +
         " logs (" + std::to_string(logs) + " found): " + text.substr(0, 400));
  }
  const double memory = peak_mib();
  std::printf("explore        %8.1f ms wall (library %8.1f ms, ocisim %8.1f ms), %zu archived logs, "
              "document %zu bytes  target < %.0f ms: %s\n",
              total, total - client, client, logs, text.size(), kExploreTargetMs,
              total < kExploreTargetMs ? "met" : "MISSED");
  const double clientCpu = static_cast<double>(g_clientCpuNs.load()) / 1e6;
  std::printf("explore cpu    %8.1f ms of processor time (library %8.1f ms, ocisim %8.1f ms)\n", cpu,
              cpu - clientCpu, clientCpu);
  std::printf("peak memory    %8.1f MiB (the whole process, ocisim's machine included)  "
              "target < %.0f MiB: %s\n",
              memory, kMemoryTargetMiB, memory < kMemoryTargetMiB ? "met" : "MISSED");
  met = met && total < kExploreTargetMs && memory < kMemoryTargetMiB;

  const auto overall = document_of_logs();
  std::vector<double> samples;
  std::vector<double> cpuSamples;
  size_t bytes = 0;
  for (int round = 0; round < kRenderRounds; ++round) {
    const auto begin = bench_clock::now();
    const double cpuBegin = cpu_ms(CLOCK_THREAD_CPUTIME_ID);
    bytes = xml::print(overall->ToXml()).size();
    samples.push_back(ms_since(begin));
    cpuSamples.push_back(cpu_ms(CLOCK_THREAD_CPUTIME_ID) - cpuBegin);
  }
  const double m = bench::median(samples);
  std::printf("render         median %8.3f ms wall, %8.3f ms cpu (%d runs), %d archived logs, %zu bytes  "
              "target < %.0f ms: %s\n",
              m, bench::median(cpuSamples), kRenderRounds, kLogs, bytes, kRenderTargetMs,
              m < kRenderTargetMs ? "met" : "MISSED");
  met = met && m < kRenderTargetMs;
  return met ? 0 : 1;
}
