#include "support/process_runner.h"

#include <windows.h>

#include <optional>
#include <stdexcept>

#include "support/test_text.h"

namespace console_test {

namespace {

std::wstring to_wide(const std::string& utf8) {
  const std::u16string wide = utf8_to_utf16(utf8);
  return std::wstring(wide.begin(), wide.end());
}

// One argument quoted by the rules that the C run-time's parser (and CommandLineToArgvW)
// undoes: backslashes are literal unless they precede a double quote.
std::wstring quote_argument(const std::wstring& arg) {
  if (!arg.empty() && arg.find_first_of(L" \t\n\v\"") == std::wstring::npos) return arg;
  std::wstring quoted = L"\"";
  size_t backslashes = 0;
  for (const wchar_t c : arg) {
    if (c == L'\\') {
      ++backslashes;
      continue;
    }
    if (c == L'"') quoted.append(backslashes * 2 + 1, L'\\');
    else quoted.append(backslashes, L'\\');
    backslashes = 0;
    quoted.push_back(c);
  }
  quoted.append(backslashes * 2, L'\\');
  quoted.push_back(L'"');
  return quoted;
}

std::wstring temp_file_name() {
  wchar_t folder[MAX_PATH + 1];
  wchar_t name[MAX_PATH + 1];
  if (GetTempPathW(MAX_PATH, folder) == 0 ||
      GetTempFileNameW(folder, L"dsl", /*uUnique=*/0, name) == 0) {
    throw std::runtime_error("cannot make a temporary file name");
  }
  return name;
}

HANDLE open_inheritable(const std::wstring& path, DWORD access, DWORD disposition) {
  SECURITY_ATTRIBUTES security{sizeof(SECURITY_ATTRIBUTES), /*lpSecurityDescriptor=*/nullptr,
                               /*bInheritHandle=*/TRUE};
  HANDLE file = CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, &security,
                            disposition, FILE_ATTRIBUTE_TEMPORARY, /*hTemplateFile=*/nullptr);
  if (file == INVALID_HANDLE_VALUE) throw std::runtime_error("cannot open a capture file");
  return file;
}

std::string read_and_delete(const std::wstring& path) {
  std::string bytes;
  HANDLE file = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                            /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                            /*hTemplateFile=*/nullptr);
  if (file != INVALID_HANDLE_VALUE) {
    char buffer[65536];
    DWORD got = 0;
    while (ReadFile(file, buffer, sizeof buffer, &got, /*lpOverlapped=*/nullptr) && got > 0) {
      bytes.append(buffer, got);
    }
    CloseHandle(file);
  }
  DeleteFileW(path.c_str());
  return bytes;
}

// Sets the variables for the span of one CreateProcessW and puts the old values back.
class environment_scope_t {
 public:
  explicit environment_scope_t(const environment_t& environment) {
    for (const auto& [name, value] : environment) {
      const std::wstring wide_name = to_wide(name);
      wchar_t buffer[32768];
      const DWORD length = GetEnvironmentVariableW(wide_name.c_str(), buffer, 32768);
      saved_.push_back({wide_name, length == 0 ? std::nullopt
                                                : std::optional<std::wstring>(buffer)});
      SetEnvironmentVariableW(wide_name.c_str(), to_wide(value).c_str());
    }
  }
  ~environment_scope_t() {
    for (const auto& [name, value] : saved_) {
      SetEnvironmentVariableW(name.c_str(), value ? value->c_str() : nullptr);
    }
  }

 private:
  std::vector<std::pair<std::wstring, std::optional<std::wstring>>> saved_;
};

}  // namespace

process_result_t run_process(const std::string& program, const std::vector<std::string>& args,
                             const std::string& input, const environment_t& environment,
                             int timeout_seconds) {
  const std::wstring in_path = temp_file_name();
  const std::wstring out_path = temp_file_name();
  const std::wstring err_path = temp_file_name();
  {
    HANDLE in = open_inheritable(in_path, GENERIC_WRITE, CREATE_ALWAYS);
    DWORD written = 0;
    WriteFile(in, input.data(), static_cast<DWORD>(input.size()), &written,
              /*lpOverlapped=*/nullptr);
    CloseHandle(in);
  }
  HANDLE in = open_inheritable(in_path, GENERIC_READ, OPEN_EXISTING);
  HANDLE out = open_inheritable(out_path, GENERIC_WRITE, CREATE_ALWAYS);
  HANDLE err = open_inheritable(err_path, GENERIC_WRITE, CREATE_ALWAYS);

  const std::wstring application = to_wide(program);
  std::wstring command_line = quote_argument(application);
  for (const auto& arg : args) command_line += L" " + quote_argument(to_wide(arg));

  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = in;
  startup.hStdOutput = out;
  startup.hStdError = err;
  PROCESS_INFORMATION process{};
  BOOL created = FALSE;
  {
    environment_scope_t scope(environment);
    created = CreateProcessW(application.c_str(), command_line.data(),
                             /*lpProcessAttributes=*/nullptr, /*lpThreadAttributes=*/nullptr,
                             /*bInheritHandles=*/TRUE, /*dwCreationFlags=*/0,
                             /*lpEnvironment=*/nullptr, /*lpCurrentDirectory=*/nullptr, &startup,
                             &process);
  }
  const DWORD create_error = GetLastError();
  CloseHandle(in);
  CloseHandle(out);
  CloseHandle(err);

  process_result_t result;
  if (!created) {
    read_and_delete(in_path);
    read_and_delete(out_path);
    read_and_delete(err_path);
    result.err = "CreateProcessW failed with error " + std::to_string(create_error);
    return result;
  }
  if (WaitForSingleObject(process.hProcess, static_cast<DWORD>(timeout_seconds) * 1000) ==
      WAIT_TIMEOUT) {
    result.timed_out = true;
    TerminateProcess(process.hProcess, 259);
    WaitForSingleObject(process.hProcess, INFINITE);
  }
  DWORD code = 0;
  GetExitCodeProcess(process.hProcess, &code);
  result.exit_code = static_cast<int>(code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  read_and_delete(in_path);
  result.out = read_and_delete(out_path);
  result.err = read_and_delete(err_path);
  return result;
}

}  // namespace console_test
