#include "support/holder_process.h"

#include <windows.h>
#include <shellapi.h>

#include <cstdlib>
#include <stdexcept>
#include <string>

#include "common/text/guid.h"

namespace dsl_test {

namespace {

const wchar_t kHoldArgument[] = L"--dsl-hold";

// The child side: "--dsl-hold <kind> <offset> <length> <hold_ms> <event> <path>".
[[noreturn]] void hold_and_exit(int argc, wchar_t** argv) {
  if (argc < 8) ::ExitProcess(10);
  const int kind = _wtoi(argv[2]);
  const unsigned long long offset = _wcstoui64(argv[3], nullptr, 10);
  const unsigned long long length = _wcstoui64(argv[4], nullptr, 10);
  const DWORD hold_ms = static_cast<DWORD>(_wtoi(argv[5]));
  HANDLE ready = ::OpenEventW(EVENT_MODIFY_STATE, FALSE, argv[6]);
  if (ready == nullptr) ::ExitProcess(11);
  HANDLE file;
  if (kind == static_cast<int>(hold_kind_t::region_lock)) {
    file = ::CreateFileW(argv[7], GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                         OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) ::ExitProcess(12);
    OVERLAPPED at = {};
    at.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFu);
    at.OffsetHigh = static_cast<DWORD>(offset >> 32);
    if (!::LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0,
                      static_cast<DWORD>(length & 0xFFFFFFFFu), static_cast<DWORD>(length >> 32),
                      &at)) {
      ::ExitProcess(13);
    }
  } else {
    file = ::CreateFileW(argv[7], GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                         FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) ::ExitProcess(14);
  }
  ::SetEvent(ready);
  ::Sleep(hold_ms);
  ::ExitProcess(0);
}

// Runs before the tests: a process started as a holder does its work and never reaches them.
struct holder_entry_t {
  holder_entry_t() {
    int argc = 0;
    wchar_t** argv = ::CommandLineToArgvW(::GetCommandLineW(), &argc);
    if (argv != nullptr && argc > 1 && std::wstring(argv[1]) == kHoldArgument) {
      hold_and_exit(argc, argv);
    }
    if (argv != nullptr) ::LocalFree(argv);
  }
} holder_entry;

}  // namespace

holder_process_t::holder_process_t(hold_kind_t kind, const std::u16string& path,
                                   uint64_t offset, uint64_t length, uint32_t hold_ms) {
  std::u16string guid = util::guid_to_text(util::new_guid());
  const std::wstring event_name =
      L"Local\\dsl-hold-" + std::wstring(reinterpret_cast<const wchar_t*>(guid.c_str()));
  HANDLE ready = ::CreateEventW(nullptr, TRUE, FALSE, event_name.c_str());
  if (ready == nullptr) throw std::runtime_error("CreateEventW failed");
  wchar_t self[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, self, MAX_PATH);
  std::wstring command = L"\"" + std::wstring(self) + L"\" " + kHoldArgument + L" " +
                         std::to_wstring(static_cast<int>(kind)) + L" " +
                         std::to_wstring(offset) + L" " + std::to_wstring(length) + L" " +
                         std::to_wstring(hold_ms) + L" " + event_name + L" \"" +
                         std::wstring(reinterpret_cast<const wchar_t*>(path.c_str())) + L"\"";
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info = {};
  if (!::CreateProcessW(nullptr, &command[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &info)) {
    ::CloseHandle(ready);
    throw std::runtime_error("CreateProcessW failed");
  }
  ::CloseHandle(info.hThread);
  process_ = reinterpret_cast<std::intptr_t>(info.hProcess);
  HANDLE both[2] = {ready, info.hProcess};
  holding_ = ::WaitForMultipleObjects(2, both, FALSE, 10000) == WAIT_OBJECT_0;
  ::CloseHandle(ready);
}

holder_process_t::~holder_process_t() { end(); }

void holder_process_t::end() {
  if (ended_ || process_ == -1) return;
  HANDLE process = reinterpret_cast<HANDLE>(process_);
  ::TerminateProcess(process, 1);
  ::WaitForSingleObject(process, 10000);
  ::CloseHandle(process);
  ended_ = true;
}

int holder_process_t::wait() {
  if (ended_ || process_ == -1) return -1;
  HANDLE process = reinterpret_cast<HANDLE>(process_);
  ::WaitForSingleObject(process, INFINITE);
  DWORD code = 0;
  ::GetExitCodeProcess(process, &code);
  ::CloseHandle(process);
  ended_ = true;
  return static_cast<int>(code);
}

}  // namespace dsl_test
