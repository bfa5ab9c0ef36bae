// A stand-in for the library, for the console host's tests: the eighteen exports of the public
// header but one (OracleDoRestore is left out on purpose), each appending one line to the
// journal file named by DSL_FAKE_JOURNAL and answering by fixed rules:
//   - texts handed out are malloc'd; "alloc" and "free" lines count them;
//   - should-skip-writer: SID "SKIPPED" gives 1, "unwritten" succeeds without writing the
//     boolean, "fail" fails with a two-line text, "noerror" fails without a text, others 0;
//   - finish: document "fail" fails with a text; explore, prepare and backup-logs echo their
//     arguments; gather gives a text with a lone surrogate;
//   - DSL_FAKE_FAIL_INIT / DSL_FAKE_FAIL_STOP make init or stop fail, DSL_FAKE_NULL_TEXT makes
//     the logs folder succeed without a text.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "DbShadowLink.h"
#include "support/test_text.h"

using console_test::dsl_string_t;
using console_test::from_dsl;
using console_test::to_dsl;

namespace {

void journal(const std::string& line) {
  const char* path = std::getenv("DSL_FAKE_JOURNAL");
  if (path == nullptr || *path == '\0') return;
  if (FILE* file = std::fopen(path, "ab")) {
    std::fwrite(line.data(), 1, line.size(), file);
    std::fputc('\n', file);
    std::fclose(file);
  }
}

bool flag(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && std::strcmp(value, "1") == 0;
}

DSL_WCHAR* hand_out(const dsl_string_t& text) {
  auto* copy = static_cast<DSL_WCHAR*>(std::malloc((text.size() + 1) * sizeof(DSL_WCHAR)));
  std::memcpy(copy, text.c_str(), (text.size() + 1) * sizeof(DSL_WCHAR));
  journal("alloc");
  return copy;
}

DSL_RESULT fail(DSL_WCHAR** error, const std::string& text) {
  *error = hand_out(to_dsl(text));
  return DSL_E_FAIL;
}

std::string text(const DSL_WCHAR* wide) { return from_dsl(wide); }

}  // namespace

extern "C" {

DSL_API DSL_RESULT DSL_CALL OracleVssInitLib(const DSL_WCHAR* logName, DSL_WCHAR** error) {
  journal("init " + text(logName));
  if (flag("DSL_FAKE_FAIL_INIT")) return fail(error, "init refused");
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleVssStopLib(DSL_WCHAR** error) {
  journal("stop");
  if (flag("DSL_FAKE_FAIL_STOP")) return fail(error, "stop refused");
  return DSL_S_OK;
}

DSL_API void DSL_CALL OracleLibStrFree(void* text) {
  if (text != nullptr) journal("free");
  std::free(text);
}

DSL_API DSL_RESULT DSL_CALL OracleTest(void* reserved1, void* reserved2, const DSL_WCHAR* logName,
                                       DSL_WCHAR** error) {
  journal("test " + text(logName));
  std::fputs("fake test output\n", stdout);
  std::fflush(stdout);
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleGatherVssInfo(void* reserved1, void* reserved2, DSL_WCHAR** xml,
                                                DSL_WCHAR** error) {
  journal("gather");
  dsl_string_t result = to_dsl("<OracleEntries note=\"");
  result.push_back(static_cast<DSL_WCHAR>(0xD800));  // a lone surrogate
  result += to_dsl("\"/>");
  *xml = hand_out(result);
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleShouldSkipVssWriter(const DSL_WCHAR* sid, uint8_t* skip,
                                                      DSL_WCHAR** error) {
  const std::string name = text(sid);
  journal("skip " + name);
  if (name == "fail") return fail(error, "no writer for [fail]\n--tr:second line");
  if (name == "noerror") return DSL_E_FAIL;
  if (name != "unwritten") *skip = name == "SKIPPED" ? 1 : 0;
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleCheckVssFunctionality(uint8_t* ok, DSL_WCHAR** error) {
  journal("check-vss");
  *ok = 1;
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleExploreInstances(uint8_t collect, const DSL_WCHAR* user,
                                                   const DSL_WCHAR* password,
                                                   const DSL_WCHAR* configXml, DSL_WCHAR** xml,
                                                   DSL_WCHAR** error) {
  journal("explore");
  *xml = hand_out(to_dsl("collect=" + std::to_string(collect) + "|user=" + text(user) +
                         "|password=" + text(password) + "|config=" + text(configXml)));
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OraclePrepareDbsForBackup(const DSL_WCHAR* configXml,
                                                      const DSL_WCHAR* user,
                                                      const DSL_WCHAR* password,
                                                      const DSL_WCHAR* osUser,
                                                      const DSL_WCHAR* osPassword,
                                                      DSL_WCHAR** xml, DSL_WCHAR** error) {
  journal("prepare");
  *xml = hand_out(to_dsl("config=" + text(configXml) + "|user=" + text(user) + "|password=" +
                         text(password) + "|osUser=" + text(osUser) + "|osPassword=" +
                         text(osPassword) + "\n"));
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleFinishDbsBackup(const DSL_WCHAR* dbPrepareXml,
                                                  const DSL_WCHAR* user,
                                                  const DSL_WCHAR* password, DSL_WCHAR** error) {
  const std::string document = text(dbPrepareXml);
  journal("finish " + document + "|" + text(user) + "|" + text(password));
  if (document == "fail") return fail(error, "finish refused\n--tr:Oracle manager failed");
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleBackupLogs(const DSL_WCHAR* home, const DSL_WCHAR* sid,
                                             const DSL_WCHAR* usn, const DSL_WCHAR* lastRecId,
                                             const DSL_WCHAR* user, const DSL_WCHAR* password,
                                             DSL_WCHAR** xml, DSL_WCHAR** error) {
  journal("backup-logs");
  *xml = hand_out(to_dsl("home=" + text(home) + "|sid=" + text(sid) + "|usn=" + text(usn) +
                         "|lastRecId=" + text(lastRecId) + "|user=" + text(user) +
                         "|password=" + text(password)));
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleEnumLogs(DSL_WCHAR** xml, DSL_WCHAR** error) {
  journal("enum-logs");
  *xml = hand_out(to_dsl("<archived_logs><log path=\"C:\\T\xC3\xABst\\\xE6\x97\xA5\xE6\x9C\xAC\\"
                         "\xF0\x9F\x98\x80.arc\"/></archived_logs>"));
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleRemoveLogsInTemp(const DSL_WCHAR* logsXml, DSL_WCHAR** error) {
  journal("remove " + text(logsXml));
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleGetLogsFolder(DSL_WCHAR** folder, DSL_WCHAR** error) {
  journal("logs-folder");
  if (!flag("DSL_FAKE_NULL_TEXT")) *folder = hand_out(to_dsl("C:\\Fake\\Logs\\"));
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleDeleteLogsByTime(const DSL_WCHAR* home, const DSL_WCHAR* sid,
                                                   int32_t minutes, const DSL_WCHAR* user,
                                                   const DSL_WCHAR* password, DSL_WCHAR** error) {
  journal("delete-by-time " + text(home) + "|" + text(sid) + "|" + std::to_string(minutes) + "|" +
          text(user) + "|" + text(password));
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleDeleteLogsBySize(const DSL_WCHAR* home, const DSL_WCHAR* sid,
                                                   uint64_t size, const DSL_WCHAR* user,
                                                   const DSL_WCHAR* password, DSL_WCHAR** error) {
  journal("delete-by-size " + text(home) + "|" + text(sid) + "|" + std::to_string(size) + "|" +
          text(user) + "|" + text(password));
  return DSL_S_OK;
}

DSL_API DSL_RESULT DSL_CALL OracleIsRestoreRequired(uint8_t* required, DSL_WCHAR** error) {
  journal("restore-required");
  *required = 0;
  return DSL_S_OK;
}

}  // extern "C"
