// Figures of the Oracle client layer on the host build, against the simulated client (ocisim):
//   session       making a session holder: worker thread, session lock, environment, attach
//                 and logon; target: median under 2 ms;
//   query         a 10,000-row, two-column query executed, fetched row by row and converted
//                 to wide text; target: median under 50 ms. Measured twice: end to end against
//                 ocisim, whose execute builds and filters the whole view, and against an
//                 in-process client that hands out ready rows, which leaves the cost of this
//                 layer alone (fetch loop, indicators, byte widening, the result and its log).
// The client is the built ocisim: DSL_OCI_LIBRARY when set, else ../bin/ocisim/libclntsh.so
// beside this program's folder. The scenario is written to a fresh folder in /tmp, removed at
// the end. Exit status 1 when a target is missed.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <cstring>

#include "bench_util.h"
#include "config/oracle_config.h"
#include "oracle/client/ora_interface.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"

namespace {

using bench_clock = std::chrono::steady_clock;
namespace fs = std::filesystem;
using namespace specific::oracle;

constexpr int kSessionRounds = 200;
constexpr int kQueryRounds = 7;
constexpr int kRows = 10000;
constexpr double kSessionTargetMs = 2.0;
constexpr double kQueryTargetMs = 50.0;

const std::u16string kHome = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";

double ms_since(bench_clock::time_point start) {
  return std::chrono::duration<double, std::milli>(bench_clock::now() - start).count();
}

using bench::median;

[[noreturn]] void fail(const std::string& text) { bench::fail("oracle_client_bench", text); }

std::string scenario(int archivedLogs) {
  std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<machine host=\"BENCH\" time_zone=\"+00:00\" now=\"2024-03-05 10:00:00\">\n"
      "<instance sid=\"ORCL\" home=\"C:\\app\\oracle\\product\\19.0.0\\dbhome_1\" state=\"open\">\n"
      "<database name=\"ORCL\" dbid=\"1\" open_mode=\"READ WRITE\" log_mode=\"ARCHIVELOG\"/>\n";
  for (int i = 1; i <= archivedLogs; ++i) {
    const std::string n = std::to_string(i);
    xml += "<archived_log recid=\"" + n + "\" stamp=\"" + n + "\" sequence=\"" + n +
           "\" name=\"C:\\app\\oracle\\fast_recovery_area\\ORCL\\ARCHIVELOG\\2024_03_05\\O1_MF_1_" + n +
           "_LXK2B1QZ_.ARC\" blocks=\"20480\"/>\n";
  }
  return xml + "</instance>\n</machine>\n";
}

class bench_folder_t {
 public:
  // Writes a scenario and points the client at it (a state file of its own beside it).
  void use(const std::string& name, const std::string& xml) {
    const std::string path = folder_.path() + "/" + name;
    std::ofstream(path, std::ios::binary) << xml;
    ::setenv("OCISIM_SCENARIO", path.c_str(), 1);
  }

 private:
  bench::scratch_folder_t folder_{"oracle_client_bench", "dsl-oci-bench-"};
};

// The in-process client: every call succeeds, and a statement's fetches hand out kRows rows of
// two text columns, the same texts ocisim gives.
namespace memory_client {

struct define_t {
  char* value = nullptr;
  sb2* indicator = nullptr;
};
define_t g_defines[2];
int g_next = 0;
char g_handle;  // every handle is its address
std::vector<std::string> g_first, g_second;

void fill() {
  for (int i = 1; i <= kRows; ++i) {
    const std::string n = std::to_string(i);
    g_first.push_back(n);
    g_second.push_back("C:\\app\\oracle\\fast_recovery_area\\ORCL\\ARCHIVELOG\\2024_03_05\\O1_MF_1_" + n +
                       "_LXK2B1QZ_.ARC");
  }
}

sword env_create(OCIEnv** env, ub4, void*, void* (*)(void*, size_t), void* (*)(void*, void*, size_t),
                 void (*)(void*, void*), size_t, void**) {
  *env = reinterpret_cast<OCIEnv*>(&g_handle);
  return OCI_SUCCESS;
}
sword error_get(void*, ub4, OraText*, sb4*, OraText*, ub4, ub4) { return OCI_NO_DATA; }
sword handle_alloc(const void*, void** handle, const ub4, const size_t, void**) {
  *handle = &g_handle;
  return OCI_SUCCESS;
}
sword handle_free(void*, const ub4) { return OCI_SUCCESS; }
sword attr_set(void*, ub4, void*, ub4, ub4, OCIError*) { return OCI_SUCCESS; }
sword server_attach(OCIServer*, OCIError*, const OraText*, sb4, ub4) { return OCI_SUCCESS; }
sword server_detach(OCIServer*, OCIError*, ub4) { return OCI_SUCCESS; }
sword session_begin(OCISvcCtx*, OCIError*, OCISession*, ub4, ub4) { return OCI_SUCCESS; }
sword session_end(OCISvcCtx*, OCIError*, OCISession*, ub4) { return OCI_SUCCESS; }
sword stmt_prepare(OCIStmt*, OCIError*, const OraText*, ub4, ub4, ub4) { return OCI_SUCCESS; }
sword define_by_pos(OCIStmt*, OCIDefine** define, OCIError*, ub4 position, void* value, sb4,
                    ub2, void* indicator, ub2*, ub2*, ub4) {
  g_defines[position - 1] = {static_cast<char*>(value), static_cast<sb2*>(indicator)};
  *define = reinterpret_cast<OCIDefine*>(&g_handle);
  return OCI_SUCCESS;
}
sword bind_by_name(OCIStmt*, OCIBind**, OCIError*, const OraText*, sb4, void*, sb4, ub2, void*,
                   ub2*, ub2*, ub4, ub4*, ub4) {
  return OCI_SUCCESS;
}
sword stmt_execute(OCISvcCtx*, OCIStmt*, OCIError*, ub4, ub4, const OCISnapshot*, OCISnapshot*,
                   ub4) {
  g_next = 0;
  return OCI_SUCCESS;
}
sword stmt_fetch(OCIStmt*, OCIError*, ub4, ub2, sb4, ub4) {
  if (g_next >= kRows) return OCI_NO_DATA;
  const std::string* texts[2] = {&g_first[g_next], &g_second[g_next]};
  for (int c = 0; c < 2; ++c) {
    std::memcpy(g_defines[c].value, texts[c]->c_str(), texts[c]->size() + 1);
    *g_defines[c].indicator = 0;
  }
  ++g_next;
  return OCI_SUCCESS;
}
sword db_startup(OCISvcCtx*, OCIError*, OCIAdmin*, ub4, ub4) { return OCI_SUCCESS; }
sword db_shutdown(OCISvcCtx*, OCIError*, OCIAdmin*, ub4) { return OCI_SUCCESS; }

oci_table_t table() {
  oci_table_t t;
  t.OCIEnvCreate = env_create;
  t.OCIErrorGet = error_get;
  t.OCIHandleAlloc = handle_alloc;
  t.OCIHandleFree = handle_free;
  t.OCIAttrSet = attr_set;
  t.OCIServerAttach = server_attach;
  t.OCIServerDetach = server_detach;
  t.OCISessionBegin = session_begin;
  t.OCISessionEnd = session_end;
  t.OCIStmtPrepare = stmt_prepare;
  t.OCIDefineByPos = define_by_pos;
  t.OCIBindByName = bind_by_name;
  t.OCIStmtExecute = stmt_execute;
  t.OCIStmtFetch2 = stmt_fetch;
  t.OCIDBStartup = db_startup;
  t.OCIDBShutdown = db_shutdown;
  return t;
}

}  // namespace memory_client

bool report(const char* what, const std::vector<double>& samples, double target) {
  const double m = median(samples);
  const double best = *std::min_element(samples.begin(), samples.end());
  const double worst = *std::max_element(samples.begin(), samples.end());
  const bool met = m < target;
  std::printf("%-14s median %8.3f ms  min %8.3f ms  max %8.3f ms  (%zu runs)  target < %.0f ms: %s\n",
              what, m, best, worst, samples.size(), target, met ? "met" : "MISSED");
  return met;
}

}  // namespace

int main() {
  bench::use_simulated_client("oracle_client_bench");
  COracleConfig config;
  config.connectionTimeoutSec = 60;
  COracleConfig::replace_for_tests(config);

  bench_folder_t folder;
  bool met = true;

  // Session creation. The first holder binds the client and is not counted.
  folder.use("session.xml", scenario(0));
  { COracleSessionHolder warm(u"ORCL", kHome, conn_t{}, false); }
  std::vector<double> sessions;
  for (int i = 0; i < kSessionRounds; ++i) {
    const auto start = bench_clock::now();
    auto holder = std::make_shared<COracleSessionHolder>(u"ORCL", kHome, conn_t{}, false);
    sessions.push_back(ms_since(start));
    holder.reset();  // ending the session is not part of the figure
  }
  met = report("session", sessions, kSessionTargetMs) && met;

  // A 10,000-row query on one session.
  folder.use("query.xml", scenario(kRows));
  size_t rows = 0;
  {
    COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
    auto query = holder.make_query();
    std::vector<double> queries;
    for (int i = 0; i < kQueryRounds; ++i) {
      const auto start = bench_clock::now();
      auto result = query->exec("SELECT SEQUENCE#, NAME FROM V$ARCHIVED_LOG", 2, false);
      queries.push_back(ms_since(start));
      rows = result->rows().size();
    }
    if (rows != static_cast<size_t>(kRows)) fail("the query gave " + std::to_string(rows) + " rows");
    met = report("query ocisim", queries, kQueryTargetMs) && met;
  }

  // The same query through an in-process client: this layer's own share.
  memory_client::fill();
  const oci_table_t table = memory_client::table();
  CWinOraInterface::replace_table_for_tests(&table);
  {
    auto env = COracleEnv::create();
    auto svc = COracleHandle::create(env, OCI_HTYPE_SVCCTX);
    auto session = COracleHandle::create(env, OCI_HTYPE_SESSION);
    COracleQuery inMemory(env, svc, session);
    std::vector<double> layerOnly;
    for (int i = 0; i < kQueryRounds; ++i) {
      const auto start = bench_clock::now();
      auto result = inMemory.exec("SELECT SEQUENCE#, NAME FROM V$ARCHIVED_LOG", 2, false);
      layerOnly.push_back(ms_since(start));
      rows = result->rows().size();
    }
    if (rows != static_cast<size_t>(kRows)) fail("the layer gave " + std::to_string(rows) + " rows");
    met = report("query layer", layerOnly, kQueryTargetMs) && met;
  }
  CWinOraInterface::replace_table_for_tests(nullptr);
  return met ? 0 : 1;
}
