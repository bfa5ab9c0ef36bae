#include <windows.h>

#include <fstream>
#include <sstream>

#include "common/text/convert.h"
#include "explore_fixture.h"
#include "support/bin_dir.h"

namespace explore_test {

namespace {

// The Unix path of a DOS path, through Wine's kernel32; the schema tool runs on the host.
std::string unix_path(const std::string& dos) {
  using convert_fn = char* (*)(const wchar_t*);
  const auto convert = reinterpret_cast<convert_fn>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
  if (convert == nullptr) return dos;
  const std::u16string wide = util::to_unicode(dos);
  char* converted = convert(reinterpret_cast<const wchar_t*>(wide.c_str()));
  if (converted == nullptr) return dos;
  std::string result(converted);
  HeapFree(GetProcessHeap(), 0, converted);
  return result;
}

}  // namespace

std::string ocisim_library() {
  return util::to_multibyte(util::from_utf8(dsl_test::bin_dir() + "\\ocisim\\OCI.dll"));
}

// Under Wine the host's xmllint is started as a Unix program; its status is written to a file
// beside the document, because the status of a Unix program does not come back through start.
bool validate_file(const std::string& xsd, const std::string& file, std::string& output) {
  const std::string schema = xsd[0] == '/' ? xsd : unix_path(xsd);
  const std::string document = unix_path(file);
  const std::string status_file = file + ".status";
  const std::string log_file = file + ".xmllint.txt";
  DeleteFileA(status_file.c_str());
  const std::string script = "xmllint --noout --schema '" + schema + "' '" + document + "' >'" +
                             document + ".xmllint.txt' 2>&1; echo $? >'" + document + ".status'";
  std::string command = "start.exe /wait /unix /bin/sh -c \"" + script + "\"";
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  if (!CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &process)) {
    output = "start.exe could not be run";
    return false;
  }
  WaitForSingleObject(process.hProcess, 60000);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  // The Unix program may finish a moment after start returns.
  std::string status;
  for (int i = 0; i < 100 && status.empty(); ++i) {
    std::ifstream in(status_file);
    std::getline(in, status);
    if (status.empty()) Sleep(50);
  }
  std::ifstream log(log_file);
  std::ostringstream text;
  text << log.rdbuf();
  output = text.str();
  return status == "0";
}

}  // namespace explore_test
