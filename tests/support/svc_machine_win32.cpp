#include <windows.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/text/convert.h"
#include "common/win/reg_api.h"
#include "common/win/reg_file.h"
#include "support/svc_machine.h"

namespace dsl_test {

namespace {

constexpr char16_t kServicesPath[] = u"SYSTEM\\CurrentControlSet\\Services";
constexpr DWORD kStateTimeoutMs = 30000;

std::wstring as_wstring(const std::u16string& text) {
  return std::wstring(reinterpret_cast<const wchar_t*>(text.data()), text.size());
}

std::wstring own_folder() {
  wchar_t path[MAX_PATH + 1];
  const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH + 1);
  std::wstring folder(path, length);
  return folder.substr(0, folder.find_last_of(L"\\/"));
}

// Runs "sc.exe <arguments>" and gives its exit code.
DWORD run_sc(const std::wstring& arguments) {
  std::wstring command = L"sc.exe " + arguments;
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  startup.hStdOutput = nullptr;  // sc's own report is not wanted in the test output
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(/*lpApplicationName=*/nullptr, command.data(),
                      /*lpProcessAttributes=*/nullptr, /*lpThreadAttributes=*/nullptr,
                      /*bInheritHandles=*/TRUE, /*dwCreationFlags=*/0,
                      /*lpEnvironment=*/nullptr, /*lpCurrentDirectory=*/nullptr, &startup,
                      &process)) {
    return GetLastError();
  }
  WaitForSingleObject(process.hProcess, kStateTimeoutMs);
  DWORD code = 1;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code;
}

// The service's state, or 0 when it cannot be asked (no such service).
DWORD service_state(const std::wstring& name) {
  SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
  if (manager == nullptr) return 0;
  DWORD state = 0;
  if (SC_HANDLE service = OpenServiceW(manager, name.c_str(), SERVICE_QUERY_STATUS)) {
    SERVICE_STATUS status{};
    if (QueryServiceStatus(service, &status)) state = status.dwCurrentState;
    CloseServiceHandle(service);
  }
  CloseServiceHandle(manager);
  return state;
}

bool wait_for_state(const std::wstring& name, DWORD wanted) {
  const ULONGLONG deadline = GetTickCount64() + kStateTimeoutMs;
  while (GetTickCount64() < deadline) {
    if (service_state(name) == wanted) return true;
    Sleep(50);
  }
  return false;
}

bool pause_service(const std::wstring& name) {
  SC_HANDLE manager = OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT);
  if (manager == nullptr) return false;
  bool paused = false;
  if (SC_HANDLE service = OpenServiceW(manager, name.c_str(), SERVICE_PAUSE_CONTINUE)) {
    SERVICE_STATUS status{};
    paused = ControlService(service, SERVICE_CONTROL_PAUSE, &status) != 0;
    CloseServiceHandle(service);
  }
  CloseServiceHandle(manager);
  return paused;
}

void remove_service(const std::wstring& name) {
  const DWORD state = service_state(name);
  if (state == 0) return;
  if (state != SERVICE_STOPPED) {
    run_sc(L"stop " + name);
    EXPECT_TRUE(wait_for_state(name, SERVICE_STOPPED)) << "stopping a test service";
  }
  EXPECT_EQ(run_sc(L"delete " + name), 0u) << "deleting a test service";
}

std::u16string text_of(const win::reg_file::value_t* value) {
  if (value == nullptr || value->type != win::kRegSz) return std::u16string();
  std::u16string text;
  for (size_t i = 0; i + 1 < value->data.size(); i += 2) {
    const auto c = static_cast<char16_t>(value->data[i] | (value->data[i + 1] << 8));
    if (c == u'\0') break;
    text.push_back(c);
  }
  return text;
}

}  // namespace

struct svc_machine_t::state_t {
  std::vector<std::wstring> created;

  void install(const std::string& reg_file_path) {
    const win::reg_file::tree_t tree = win::reg_file::load(reg_file_path);
    const win::reg_file::key_t* services =
        tree.find(win::reg_file::root_t::local_machine, kServicesPath);
    if (services == nullptr) return;
    const std::wstring program = own_folder() + L"\\dsl_test_service.exe";
    for (const auto& [folded, key] : services->subkeys) {
      const std::wstring name = as_wstring(key->name);
      const std::string shown = util::to_utf8(key->name);
      uint32_t wanted = SERVICE_STOPPED;
      if (const auto* value = key->find_value(u"CurrentState")) {
        ASSERT_EQ(value->data.size(), 4u) << shown;
        wanted = value->data[0] | value->data[1] << 8 | value->data[2] << 16 | value->data[3] << 24;
      }
      ASSERT_TRUE(wanted == SERVICE_STOPPED || wanted == SERVICE_RUNNING ||
                  wanted == SERVICE_PAUSED)
          << "a fixture state these tests cannot bring about: " << wanted;
      remove_service(name);
      std::wstring arguments = L"create " + name + L" binPath= \"" + program + L"\"";
      const std::u16string display = text_of(key->find_value(u"DisplayName"));
      if (!display.empty()) arguments += L" DisplayName= \"" + as_wstring(display) + L"\"";
      ASSERT_EQ(run_sc(arguments), 0u) << "sc create " << shown;
      created.push_back(name);
      if (wanted == SERVICE_RUNNING || wanted == SERVICE_PAUSED) {
        ASSERT_EQ(run_sc(L"start " + name), 0u) << "sc start " << shown;
        ASSERT_TRUE(wait_for_state(name, SERVICE_RUNNING)) << shown;
      }
      if (wanted == SERVICE_PAUSED) {
        ASSERT_TRUE(pause_service(name)) << shown;
        ASSERT_TRUE(wait_for_state(name, SERVICE_PAUSED)) << shown;
      }
    }
  }
};

svc_machine_t::svc_machine_t(const std::string& reg_file_path) : state_(new state_t) {
  state_->install(reg_file_path);
}

svc_machine_t::~svc_machine_t() {
  for (const auto& name : state_->created) remove_service(name);
  delete state_;
}

}  // namespace dsl_test
