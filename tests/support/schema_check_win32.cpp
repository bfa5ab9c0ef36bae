#include "support/schema_check.h"

#include <windows.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "support/process_runner.h"

namespace dsl_test {

namespace {

constexpr int kAnswerWaitMs = 60000;
constexpr int kPollMs = 50;

// The Unix path of a DOS path, through Wine's kernel32; empty when there is none.
std::string unix_path(const std::wstring& dos) {
  using convert_fn = char* (*)(const wchar_t*);
  const auto convert = reinterpret_cast<convert_fn>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
  if (convert == nullptr) return std::string();
  char* converted = convert(dos.c_str());
  if (converted == nullptr) return std::string();
  std::string result(converted);
  HeapFree(GetProcessHeap(), 0, converted);
  return result;
}

// A word for /bin/sh that stands for `text` exactly.
std::string shell_quoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') quoted += "'\\''";
    else quoted += c;
  }
  return quoted + "'";
}

bool write_bytes(const std::wstring& path, const std::string& bytes) {
  std::ofstream out(path.c_str(), std::ios::binary);
  out << bytes;
  return static_cast<bool>(out.flush());
}

// Starts the script as a Unix program: Wine runs a program named by its path below drive Z: on
// the Unix side, but hands back neither its exit status nor its output, so the script leaves
// both in the answer file. Of the two ways to start it (this one, or "start.exe /wait /unix"),
// this one answered every check right in measurements and in half the time (about 50 ms a
// check against 95-130 ms).
std::string start_script(const std::string& script_unix_path) {
  const auto run = console_test::run_process("Z:\\bin\\sh", {script_unix_path});
  if (run.err.rfind("CreateProcessW failed", 0) == 0) {
    return "Z:\\bin\\sh could not be run: " + run.err;
  }
  return std::string();
}

}  // namespace

std::string schema_problems(const std::string& document_text, const std::string& xsd_file_name) {
  static std::atomic<int> checks{0};
  const char* root = std::getenv("DSL_SOURCE_DIR");
  if (root == nullptr || root[0] != '/') return "DSL_SOURCE_DIR names no Unix folder";
  const std::string schema = std::string(root) + "/docs/schemas/" + xsd_file_name;

  wchar_t temp[MAX_PATH + 1];
  if (GetTempPathW(MAX_PATH, temp) == 0) return "no temporary folder";
  const std::wstring stem = std::wstring(temp) + L"dsl-schema-" +
                            std::to_wstring(GetCurrentProcessId()) + L"-" +
                            std::to_wstring(++checks);
  const std::wstring document = stem + L".xml";
  const std::wstring script = stem + L".sh";
  const std::wstring answer = stem + L".out";
  const std::string unix_stem = unix_path(stem);
  if (unix_stem.empty()) return "no Unix path for the temporary folder (not under Wine?)";
  DeleteFileW(answer.c_str());
  if (!write_bytes(document, document_text)) return "cannot write the document file";
  // The answer appears whole: written beside it, then renamed.
  const std::string part = shell_quoted(unix_stem + ".part");
  if (!write_bytes(script, "xmllint --noout --schema " + shell_quoted(schema) + " " +
                               shell_quoted(unix_stem + ".xml") + " >" + part + " 2>&1\n" +
                               "echo \"exit $?\" >>" + part + "\n" + "mv " + part + " " +
                               shell_quoted(unix_stem + ".out") + "\n")) {
    return "cannot write the script file";
  }
  std::string problem = start_script(unix_stem + ".sh");
  std::string text;
  bool answered = false;
  for (int waited = 0; problem.empty() && waited < kAnswerWaitMs; waited += kPollMs) {
    std::ifstream in(answer.c_str(), std::ios::binary);
    if (in) {
      text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
      answered = true;
      break;
    }
    Sleep(kPollMs);
  }
  for (const auto& file : {document, script, answer}) DeleteFileW(file.c_str());
  if (!problem.empty()) return problem;
  if (!answered) return "xmllint gave no answer within 60 s";
  const size_t last = text.rfind("exit ");
  if (last == std::string::npos) return "xmllint's answer has no exit line: " + text;
  const std::string status = text.substr(last + 5, text.find('\n', last) - last - 5);
  if (status == "0") return std::string();
  return "xmllint exit " + status + ": " + text.substr(0, last);
}

}  // namespace dsl_test
