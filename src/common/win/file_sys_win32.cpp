#include "common/win/file_sys.h"

#include <windows.h>
#include <shlobj.h>
#include <shlwapi.h>

namespace win::sys {

namespace {

HANDLE as_handle(native_handle_t handle) { return reinterpret_cast<HANDLE>(handle); }

const wchar_t* w(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

uint32_t last_error_or(uint32_t fallback) {
  const DWORD error = ::GetLastError();
  return error != 0 ? error : fallback;
}

}  // namespace

bool is_valid(native_handle_t handle) {
  return handle != 0 && as_handle(handle) != INVALID_HANDLE_VALUE;
}

uint32_t open(const std::u16string& path, uint32_t access, uint32_t share, uint32_t disposition,
              uint32_t flags, native_handle_t& out) {
  HANDLE h = ::CreateFileW(w(path), access, share, /*security=*/nullptr, disposition, flags,
                           /*template=*/nullptr);
  if (h == INVALID_HANDLE_VALUE) return last_error_or(kErrorInvalidHandle);
  out = reinterpret_cast<native_handle_t>(h);
  return 0;
}

void close(native_handle_t handle) noexcept { ::CloseHandle(as_handle(handle)); }

uint32_t write(native_handle_t handle, const void* data, uint32_t size, uint32_t& done) {
  DWORD written = 0;
  const BOOL ok = ::WriteFile(as_handle(handle), data, size, &written, /*overlapped=*/nullptr);
  done = written;
  return ok ? 0 : last_error_or(kErrorInvalidFunction);
}

uint32_t read(native_handle_t handle, void* data, uint32_t size, uint32_t& done) {
  DWORD got = 0;
  const BOOL ok = ::ReadFile(as_handle(handle), data, size, &got, /*overlapped=*/nullptr);
  done = got;
  return ok ? 0 : last_error_or(kErrorInvalidFunction);
}

uint32_t seek(native_handle_t handle, int64_t distance, uint32_t method, int64_t& position) {
  LARGE_INTEGER move;
  move.QuadPart = distance;
  LARGE_INTEGER now;
  now.QuadPart = 0;
  if (!::SetFilePointerEx(as_handle(handle), move, &now, method)) {
    return last_error_or(kErrorInvalidParameter);
  }
  position = now.QuadPart;
  return 0;
}

uint32_t move_pointer(native_handle_t handle, uint64_t position) {
  LONG high = static_cast<LONG>(position >> 32);
  ::SetLastError(0);
  const DWORD low = ::SetFilePointer(as_handle(handle), static_cast<LONG>(position & 0xFFFFFFFFu),
                                     &high, FILE_BEGIN);
  if (low == INVALID_SET_FILE_POINTER) return ::GetLastError();
  return 0;
}

uint32_t set_end(native_handle_t handle) {
  return ::SetEndOfFile(as_handle(handle)) ? 0 : last_error_or(kErrorInvalidFunction);
}

uint32_t size(native_handle_t handle, uint64_t& out) {
  LARGE_INTEGER value;
  if (!::GetFileSizeEx(as_handle(handle), &value)) return last_error_or(kErrorInvalidFunction);
  out = static_cast<uint64_t>(value.QuadPart);
  return 0;
}

uint32_t flush(native_handle_t handle) {
  return ::FlushFileBuffers(as_handle(handle)) ? 0 : last_error_or(kErrorInvalidFunction);
}

uint32_t find_first(const std::u16string& pattern) {
  WIN32_FIND_DATAW data;
  HANDLE h = ::FindFirstFileW(w(pattern), &data);
  if (h == INVALID_HANDLE_VALUE) return last_error_or(kErrorFileNotFound);
  ::FindClose(h);
  return 0;
}

bool path_file_exists(const std::u16string& path) { return ::PathFileExistsW(w(path)) != FALSE; }

file_kind_t status(const std::u16string& path) {
  const DWORD attributes = ::GetFileAttributesW(w(path));
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    switch (last_error_or(kErrorFileNotFound)) {
      // The errors that mean "nothing there" rather than "cannot tell".
      case ERROR_FILE_NOT_FOUND:
      case ERROR_PATH_NOT_FOUND:
      case ERROR_INVALID_NAME:
      case ERROR_INVALID_DRIVE:
      case ERROR_NOT_READY:
      case ERROR_INVALID_PARAMETER:
      case ERROR_BAD_PATHNAME:
      case ERROR_BAD_NETPATH:
      case ERROR_BAD_NET_NAME:
        return file_kind_t::not_found;
      default:
        return file_kind_t::status_error;
    }
  }
  if (attributes & FILE_ATTRIBUTE_DIRECTORY) return file_kind_t::directory;
  if (attributes & FILE_ATTRIBUTE_DEVICE) return file_kind_t::other;
  return file_kind_t::regular;
}

uint32_t create_directory(const std::u16string& path) {
  return ::CreateDirectoryW(w(path), /*security=*/nullptr) ? 0
                                                            : last_error_or(kErrorAccessDenied);
}

uint32_t remove(const std::u16string& path, bool is_directory) {
  const BOOL ok = is_directory ? ::RemoveDirectoryW(w(path)) : ::DeleteFileW(w(path));
  return ok ? 0 : last_error_or(kErrorAccessDenied);
}

uint32_t rename(const std::u16string& from, const std::u16string& to) {
  return ::MoveFileExW(w(from), w(to), MOVEFILE_REPLACE_EXISTING)
             ? 0
             : last_error_or(kErrorAccessDenied);
}

uint32_t temp_path(std::u16string& out) {
  wchar_t buffer[MAX_PATH + 1] = {};
  const DWORD length = ::GetTempPathW(MAX_PATH + 1, buffer);
  if (length == 0 || length > MAX_PATH) return last_error_or(kErrorFilenameExcedRange);
  out.assign(reinterpret_cast<const char16_t*>(buffer), length);
  return 0;
}

int32_t common_appdata(std::u16string& out) {
  wchar_t buffer[MAX_PATH] = {};
  const HRESULT hr = ::SHGetFolderPathW(/*owner=*/nullptr, CSIDL_COMMON_APPDATA,
                                        /*token=*/nullptr, /*flags=*/0, buffer);
  if (hr != S_OK) return static_cast<int32_t>(hr);
  out.assign(reinterpret_cast<const char16_t*>(buffer));
  return 0;
}

uint32_t list_directory(const std::u16string& path, std::vector<dir_entry_t>& out) {
  std::u16string pattern = path;
  if (!pattern.empty() && pattern.back() != u'\\' && pattern.back() != u'/') pattern += u'\\';
  pattern += u'*';
  WIN32_FIND_DATAW data;
  HANDLE h = ::FindFirstFileW(w(pattern), &data);
  if (h == INVALID_HANDLE_VALUE) {
    const uint32_t error = last_error_or(kErrorPathNotFound);
    // An empty folder without "." and ".." (a drive root) has nothing to list.
    return error == ERROR_FILE_NOT_FOUND ? 0 : error;
  }
  std::vector<dir_entry_t> entries;
  do {
    const std::u16string name(reinterpret_cast<const char16_t*>(data.cFileName));
    if (name == u"." || name == u"..") continue;
    dir_entry_t entry;
    entry.name = name;
    entry.is_directory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    entry.is_regular = !entry.is_directory && (data.dwFileAttributes & FILE_ATTRIBUTE_DEVICE) == 0;
    entries.push_back(std::move(entry));
  } while (::FindNextFileW(h, &data));
  const DWORD end = ::GetLastError();
  ::FindClose(h);
  if (end != ERROR_NO_MORE_FILES) return end;
  out = std::move(entries);
  return 0;
}

}  // namespace win::sys
