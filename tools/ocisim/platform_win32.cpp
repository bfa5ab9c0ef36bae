#include "platform.h"

#include <windows.h>

#include <algorithm>
#include <vector>

namespace ocisim {

namespace {

std::wstring wide(const std::string& utf8) {
  if (utf8.empty()) return std::wstring();
  const int length = MultiByteToWideChar(CP_UTF8, /*dwFlags=*/0, utf8.data(),
                                         static_cast<int>(utf8.size()), nullptr, 0);
  std::wstring result(static_cast<size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, /*dwFlags=*/0, utf8.data(), static_cast<int>(utf8.size()),
                      result.data(), length);
  return result;
}

std::string utf8(const std::wstring& text) {
  if (text.empty()) return std::string();
  const int length = WideCharToMultiByte(CP_UTF8, /*dwFlags=*/0, text.data(),
                                         static_cast<int>(text.size()), nullptr, 0, nullptr,
                                         nullptr);
  std::string result(static_cast<size_t>(length), '\0');
  WideCharToMultiByte(CP_UTF8, /*dwFlags=*/0, text.data(), static_cast<int>(text.size()),
                      result.data(), length, nullptr, nullptr);
  return result;
}

bool write_all(HANDLE file, const std::string& data) {
  size_t done = 0;
  while (done < data.size()) {
    DWORD written = 0;
    const DWORD chunk = static_cast<DWORD>(std::min<size_t>(data.size() - done, 1u << 30));
    if (!WriteFile(file, data.data() + done, chunk, &written, /*lpOverlapped=*/nullptr)) {
      return false;
    }
    done += written;
  }
  return true;
}

bool make_parents(const std::wstring& path) {
  for (size_t slash = path.find_first_of(L"\\/", 3); slash != std::wstring::npos;
       slash = path.find_first_of(L"\\/", slash + 1)) {
    const std::wstring folder = path.substr(0, slash);
    if (!CreateDirectoryW(folder.c_str(), /*lpSecurityAttributes=*/nullptr) &&
        GetLastError() != ERROR_ALREADY_EXISTS && GetLastError() != ERROR_ACCESS_DENIED) {
      return false;
    }
  }
  return true;
}

}  // namespace

std::string env_value(const char* name) {
  // The process environment block, not the C runtime's copy: the library sets ORACLE_SID with
  // _putenv, which updates both, and this is where a real client reads it.
  const std::wstring wide_name = wide(name);
  std::vector<wchar_t> buffer(256);
  for (;;) {
    SetLastError(ERROR_SUCCESS);
    const DWORD length = GetEnvironmentVariableW(wide_name.c_str(), buffer.data(),
                                                 static_cast<DWORD>(buffer.size()));
    if (length == 0) return std::string();
    if (length < buffer.size()) return utf8(std::wstring(buffer.data(), length));
    buffer.resize(length + 1);
  }
}

unsigned long process_id() { return GetCurrentProcessId(); }

unsigned long thread_id() { return GetCurrentThreadId(); }

void sleep_ms(long long milliseconds) {
  while (milliseconds > 0) {
    const DWORD chunk = static_cast<DWORD>(std::min<long long>(milliseconds, 60000));
    Sleep(chunk);
    milliseconds -= chunk;
  }
}

bool read_file(const std::string& path, std::string& content) {
  HANDLE file = CreateFileW(wide(path).c_str(), GENERIC_READ,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, /*hTemplateFile=*/nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  content.clear();
  char buffer[65536];
  for (;;) {
    DWORD got = 0;
    if (!ReadFile(file, buffer, sizeof buffer, &got, /*lpOverlapped=*/nullptr)) {
      CloseHandle(file);
      return false;
    }
    if (got == 0) break;
    content.append(buffer, got);
  }
  CloseHandle(file);
  return true;
}

bool write_file(const std::string& path, const std::string& content) {
  const std::wstring target = wide(path);
  const std::wstring temporary = target + L".tmp" + std::to_wstring(process_id()) + L"-" +
                                 std::to_wstring(thread_id());
  HANDLE file = CreateFileW(temporary.c_str(), GENERIC_WRITE, /*dwShareMode=*/0,
                            /*lpSecurityAttributes=*/nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, /*hTemplateFile=*/nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool written = write_all(file, content);
  CloseHandle(file);
  if (!written || !MoveFileExW(temporary.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING)) {
    DeleteFileW(temporary.c_str());
    return false;
  }
  return true;
}

bool append_to_file(const std::string& path, const std::string& line) {
  // FILE_APPEND_DATA alone makes every write land at the end, whoever else appends.
  HANDLE file = CreateFileW(wide(path).c_str(), FILE_APPEND_DATA,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            /*lpSecurityAttributes=*/nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                            /*hTemplateFile=*/nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  const bool written = write_all(file, line);
  CloseHandle(file);
  return written;
}

bool file_exists(const std::string& path) {
  const DWORD attributes = GetFileAttributesW(wide(path).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

bool create_file(const std::string& path, unsigned long long size) {
  const std::wstring target = wide(path);
  if (!make_parents(target)) return false;
  HANDLE file = CreateFileW(target.c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                            /*lpSecurityAttributes=*/nullptr, CREATE_ALWAYS,
                            FILE_ATTRIBUTE_NORMAL, /*hTemplateFile=*/nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  LARGE_INTEGER end;
  end.QuadPart = static_cast<LONGLONG>(size);
  const bool sized = SetFilePointerEx(file, end, /*lpNewFilePointer=*/nullptr, FILE_BEGIN) &&
                     SetEndOfFile(file);
  CloseHandle(file);
  return sized;
}

bool remove_file(const std::string& path) { return DeleteFileW(wide(path).c_str()) != 0; }

long long file_size(const std::string& path) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExW(wide(path).c_str(), GetFileExInfoStandard, &data) ||
      (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return -1;
  }
  return (static_cast<long long>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
}

file_identity_t file_identity(const std::string& path) {
  file_identity_t identity;
  HANDLE file = CreateFileW(wide(path).c_str(), /*dwDesiredAccess=*/0,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            /*lpSecurityAttributes=*/nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL,
                            /*hTemplateFile=*/nullptr);
  if (file == INVALID_HANDLE_VALUE) return identity;
  BY_HANDLE_FILE_INFORMATION info;
  if (GetFileInformationByHandle(file, &info)) {
    identity.exists = true;
    identity.size = (static_cast<long long>(info.nFileSizeHigh) << 32) | info.nFileSizeLow;
    identity.modified = (static_cast<long long>(info.ftLastWriteTime.dwHighDateTime) << 32) |
                        info.ftLastWriteTime.dwLowDateTime;
    identity.id = (static_cast<unsigned long long>(info.nFileIndexHigh) << 32) | info.nFileIndexLow;
    identity.id ^= static_cast<unsigned long long>(info.dwVolumeSerialNumber) << 48;
  }
  CloseHandle(file);
  return identity;
}

std::string native_path(const std::string& windows_path) { return windows_path; }

file_lock_t::file_lock_t(const std::string& path) {
  HANDLE file = CreateFileW(wide(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            /*lpSecurityAttributes=*/nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                            /*hTemplateFile=*/nullptr);
  if (file == INVALID_HANDLE_VALUE) return;
  handle_ = file;
  // A lock taken through one handle blocks every other handle, in this process or another.
  OVERLAPPED whole{};
  locked_ = LockFileEx(file, LOCKFILE_EXCLUSIVE_LOCK, /*dwReserved=*/0, /*nNumberOfBytesToLockLow=*/1,
                       /*nNumberOfBytesToLockHigh=*/0, &whole) != 0;
}

file_lock_t::~file_lock_t() {
  if (handle_ != nullptr) {
    if (locked_) {
      OVERLAPPED whole{};
      UnlockFileEx(static_cast<HANDLE>(handle_), /*dwReserved=*/0, 1, 0, &whole);
    }
    CloseHandle(static_cast<HANDLE>(handle_));
  }
}

}  // namespace ocisim
