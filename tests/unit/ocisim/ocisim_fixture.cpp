#include "ocisim_fixture.h"

#include <cstring>
#include <sstream>
#include <stdexcept>

#include "test_platform.h"

namespace ocisim_test {

const char kHome[] = "C:\\app\\oracle\\product\\19.0.0\\dbhome_1";
const char kGridHome[] = "C:\\app\\oracle\\product\\19.0.0\\grid";

std::string single_instance(const std::string& extra, const std::string& attributes) {
  const std::string state = attributes.find("state=") == std::string::npos ? " state=\"open\"" : "";
  return std::string("<machine host=\"DBHOST\" time_zone=\"+02:00\" now=\"2024-03-05 10:00:00\">\n") +
         "<instance sid=\"ORCL\" home=\"" + kHome + "\"" + state + " " + attributes +
         " version=\"19.0.0.0.0\" version_full=\"19.3.0.0.0\""
         " banner=\"Oracle Database 19c Enterprise Edition Release 19.0.0.0.0 - Production\">\n"
         "  <database name=\"ORCL\" dbid=\"1559187620\" open_mode=\"READ WRITE\" log_mode=\"ARCHIVELOG\""
         " current_scn=\"2741980\" checkpoint_change=\"2741000\" resetlogs_change=\"1920977\" cdb=\"NO\"/>\n"
         "  <account user=\"SYSTEM\" password=\"manager\" dba=\"yes\"/>\n"
         "  <account user=\"SCOTT\" password=\"tiger\"/>\n"
         "  <account user=\"BACKUP\" password=\"secret\" sysdba=\"yes\"/>\n"
         "  <control_file name=\"C:\\app\\oracle\\oradata\\ORCL\\CONTROL01.CTL\" file_size_blks=\"646\"/>\n"
         "  <control_file name=\"C:\\app\\oracle\\fast_recovery_area\\ORCL\\CONTROL02.CTL\" file_size_blks=\"646\"/>\n"
         "  <data_file number=\"1\" name=\"C:\\app\\oracle\\oradata\\ORCL\\SYSTEM01.DBF\" bytes=\"943718400\"/>\n"
         "  <data_file number=\"3\" name=\"C:\\app\\oracle\\oradata\\ORCL\\SYSAUX01.DBF\" bytes=\"534773760\"/>\n"
         "  <temp_file number=\"1\" name=\"C:\\app\\oracle\\oradata\\ORCL\\TEMP01.DBF\" bytes=\"33554432\"/>\n"
         "  <log_group number=\"1\" sequence=\"11\" bytes=\"209715200\" status=\"INACTIVE\">\n"
         "    <member name=\"C:\\app\\oracle\\oradata\\ORCL\\REDO01.LOG\"/>\n"
         "  </log_group>\n"
         "  <log_group number=\"2\" sequence=\"12\" bytes=\"209715200\" status=\"CURRENT\" archived=\"NO\">\n"
         "    <member name=\"C:\\app\\oracle\\oradata\\ORCL\\REDO02.LOG\"/>\n"
         "    <member name=\"D:\\mirror\\ORCL\\REDO02B.LOG\"/>\n"
         "  </log_group>\n"
         "  <archived_log recid=\"1\" stamp=\"1162000001\" sequence=\"9\" name=\"C:\\arch\\ORCL_1_9.ARC\""
         " first_change=\"2700000\" first_time=\"2024-03-04 08:00:00\" next_change=\"2710000\""
         " next_time=\"2024-03-04 12:30:00\" blocks=\"100\"/>\n"
         "  <archived_log recid=\"2\" stamp=\"1162000002\" sequence=\"10\""
         " first_change=\"2710000\" first_time=\"2024-03-04 12:30:00\" next_change=\"2720000\""
         " next_time=\"2024-03-05 01:00:00\" blocks=\"200\" status=\"D\" deleted=\"YES\"/>\n"
         "  <archived_log recid=\"3\" stamp=\"1162000003\" sequence=\"11\" name=\"C:\\arch\\ORCL_1_11.ARC\""
         " first_change=\"2720000\" first_time=\"2024-03-05 01:00:00\" next_change=\"2730000\""
         " next_time=\"2024-03-05 09:15:00\" blocks=\"300\"/>\n"
         "  <parameter name=\"local_listener\" value=\"LISTENER_ORCL\"/>\n"
         "  <parameter name=\"db_recovery_file_dest\" value=\"C:\\app\\oracle\\fast_recovery_area\"/>\n" +
         extra + "</instance>\n</machine>\n";
}

bool contains(const std::vector<std::string>& lines, const std::string& part) {
  for (const std::string& line : lines) {
    if (line.find(part) != std::string::npos) return true;
  }
  return false;
}

// client_t

client_t::client_t(const oci_api_t& api) : api_(api) {
  api_.OCIEnvCreate(&env_, OCI_THREADED, nullptr, nullptr, nullptr, nullptr, 0, nullptr);
  api_.OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr);
  api_.OCIHandleAlloc(env_, reinterpret_cast<void**>(&svc_), OCI_HTYPE_SVCCTX, 0, nullptr);
  api_.OCIHandleAlloc(env_, reinterpret_cast<void**>(&srv_), OCI_HTYPE_SERVER, 0, nullptr);
  api_.OCIHandleAlloc(env_, reinterpret_cast<void**>(&ses_), OCI_HTYPE_SESSION, 0, nullptr);
}

client_t::~client_t() {
  if (env_ != nullptr) api_.OCIHandleFree(env_, OCI_HTYPE_ENV);
}

sword client_t::attach(const std::string& sid, const std::string& home) {
  set_env("ORACLE_SID", sid);
  set_env("ORACLE_HOME", home);
  const sword code = api_.OCIServerAttach(srv_, err_, nullptr, 0, OCI_DEFAULT);
  if (code != OCI_SUCCESS) return code;
  return api_.OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, srv_, 0, OCI_ATTR_SERVER, err_);
}

sword client_t::logon(ub4 mode, const std::string& user, const std::string& password) {
  if (!user.empty()) {
    api_.OCIAttrSet(ses_, OCI_HTYPE_SESSION, const_cast<char*>(user.c_str()),
                    static_cast<ub4>(user.size()), OCI_ATTR_USERNAME, err_);
    api_.OCIAttrSet(ses_, OCI_HTYPE_SESSION, const_cast<char*>(password.c_str()),
                    static_cast<ub4>(password.size()), OCI_ATTR_PASSWORD, err_);
  }
  const sword code =
      api_.OCISessionBegin(svc_, err_, ses_, user.empty() ? OCI_CRED_EXT : OCI_CRED_RDBMS, mode);
  if (code == OCI_SUCCESS_WITH_INFO) {
    // The session stands; the warning stays in the error handle for the caller to read.
    api_.OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, ses_, 0, OCI_ATTR_SESSION, /*errhp=*/nullptr);
    return code;
  }
  if (code != OCI_SUCCESS) return code;
  return api_.OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, ses_, 0, OCI_ATTR_SESSION, err_);
}

sword client_t::logoff() { return api_.OCISessionEnd(svc_, err_, ses_, OCI_DEFAULT); }

sword client_t::detach() { return api_.OCIServerDetach(srv_, err_, OCI_DEFAULT); }

sword client_t::query(const std::string& sql, int columns, std::vector<row_t>& rows, int width) {
  rows.clear();
  OCIStmt* stmt = nullptr;
  api_.OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  struct cleanup_t {
    const oci_api_t& api;
    OCIStmt* stmt;
    ~cleanup_t() { api.OCIHandleFree(stmt, OCI_HTYPE_STMT); }
  } cleanup{api_, stmt};
  sword code = api_.OCIStmtPrepare(stmt, err_, reinterpret_cast<const OraText*>(sql.c_str()),
                                   static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX, OCI_DEFAULT);
  if (code != OCI_SUCCESS) return code;
  std::vector<std::vector<char>> buffers(static_cast<size_t>(columns), std::vector<char>(static_cast<size_t>(width)));
  std::vector<sb2> indicators(static_cast<size_t>(columns), 0);
  for (int c = 0; c < columns; ++c) {
    OCIDefine* define = nullptr;
    code = api_.OCIDefineByPos(stmt, &define, err_, static_cast<ub4>(c + 1), buffers[static_cast<size_t>(c)].data(),
                               width, SQLT_STR, &indicators[static_cast<size_t>(c)], nullptr, nullptr, OCI_DEFAULT);
    if (code != OCI_SUCCESS) return code;
  }
  code = api_.OCIStmtExecute(svc_, stmt, err_, columns == 0 ? 1 : 0, 0, nullptr, nullptr, OCI_DEFAULT);
  if (code != OCI_SUCCESS) return code;
  for (;;) {
    for (auto& b : buffers) std::memset(b.data(), 0, b.size());
    code = api_.OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT);
    if (code != OCI_SUCCESS && code != OCI_SUCCESS_WITH_INFO) return code;
    row_t row;
    for (int c = 0; c < columns; ++c) {
      row.push_back(cell_t{std::string(buffers[static_cast<size_t>(c)].data()), indicators[static_cast<size_t>(c)]});
    }
    rows.push_back(row);
  }
}

sword client_t::run(const std::string& sql) {
  OCIStmt* stmt = nullptr;
  api_.OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr);
  sword code = api_.OCIStmtPrepare(stmt, err_, reinterpret_cast<const OraText*>(sql.c_str()),
                                   static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX, OCI_DEFAULT);
  if (code == OCI_SUCCESS) {
    code = api_.OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT);
  }
  api_.OCIHandleFree(stmt, OCI_HTYPE_STMT);
  return code;
}

std::string client_t::error_text() const {
  char buffer[2048] = {};
  sb4 code = 0;
  api_.OCIErrorGet(err_, 1, nullptr, &code, reinterpret_cast<OraText*>(buffer), sizeof buffer, OCI_HTYPE_ERROR);
  return buffer;
}

int client_t::error_code() const {
  char buffer[2048] = {};
  sb4 code = 0;
  api_.OCIErrorGet(err_, 1, nullptr, &code, reinterpret_cast<OraText*>(buffer), sizeof buffer, OCI_HTYPE_ERROR);
  return code;
}

// OcisimTest

const oci_api_t& OcisimTest::api() {
  static std::unique_ptr<oci_library_t> library = [] {
    std::string error;
    auto loaded = oci_library_t::load(oci_library_t::built_path(), /*keep_loaded=*/true, error);
    if (!loaded) ADD_FAILURE() << error;
    return loaded;
  }();
  if (!library) throw std::runtime_error("the ocisim client could not be loaded");
  return library->api();
}

void OcisimTest::SetUp() {
  folder_ = make_temp_dir();
  ASSERT_FALSE(folder_.empty());
  scenario_ = join(folder_, "machine.xml");
  journal_path_ = join(folder_, "journal.log");
  set_env("OCISIM_SCENARIO", scenario_);
  set_env("OCISIM_JOURNAL", journal_path_);
  set_env("OCISIM_STATE", "");
  set_env("DBSHADOWLINK_ROOT", join(folder_, "root"));
  api();
}

void OcisimTest::TearDown() {
  set_env("OCISIM_JOURNAL", "");
  if (!folder_.empty() && !HasFailure()) remove_tree(folder_);
}

void OcisimTest::write_scenario(const std::string& xml) { ASSERT_TRUE(write_file(scenario_, xml)); }

std::vector<std::string> OcisimTest::journal_lines() const {
  std::string text;
  read_file(journal_path_, text);
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

std::vector<std::string> OcisimTest::journal(const std::string& kind) const {
  std::vector<std::string> result;
  for (const std::string& line : journal_lines()) {
    const size_t first = line.find(' ');
    const size_t second = first == std::string::npos ? first : line.find(' ', first + 1);
    if (second == std::string::npos) continue;
    const std::string rest = line.substr(second + 1);
    if (rest.compare(0, kind.size() + 1, kind + " ") == 0) result.push_back(rest.substr(kind.size() + 1));
  }
  return result;
}

std::string OcisimTest::state_text() const {
  std::string text;
  read_file(scenario_ + ".state", text);
  return text;
}

}  // namespace ocisim_test
