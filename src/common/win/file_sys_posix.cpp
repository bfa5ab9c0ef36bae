#include "common/win/file_sys.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "common/text/compare.h"
#include "common/text/convert.h"
#include "common/win/errno_codes_posix.h"
#include "common/win/file_lock_posix.h"
#include "common/win/path_map_posix.h"

namespace win::sys {

namespace {

int fd_of(native_handle_t handle) { return static_cast<int>(handle); }

// "mkdir -p" of a folder that the host build promises to exist, as Windows has its temp and
// common data folders from installation on.
void ensure_folder(const std::string& host_path) {
  std::string prefix;
  size_t pos = 0;
  while (pos != std::string::npos) {
    pos = host_path.find('/', pos + 1);
    prefix = host_path.substr(0, pos);
    if (!prefix.empty()) ::mkdir(prefix.c_str(), 0777);
  }
}

// Windows' wildcard match of one name: "*" any run, "?" one character, letters without
// regard to case.
bool wildcard_match(const std::u16string& pattern, const std::u16string& name) {
  size_t p = 0, n = 0, star = std::u16string::npos, mark = 0;
  while (n < name.size()) {
    if (p < pattern.size() &&
        (pattern[p] == u'?' || util::fold_case(pattern[p]) == util::fold_case(name[n]))) {
      ++p;
      ++n;
    } else if (p < pattern.size() && pattern[p] == u'*') {
      star = p++;
      mark = n;
    } else if (star != std::u16string::npos) {
      p = star + 1;
      n = ++mark;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == u'*') ++p;
  return p == pattern.size();
}

}  // namespace

bool is_valid(native_handle_t handle) { return handle >= 0; }

uint32_t open(const std::u16string& path, uint32_t access, uint32_t share, uint32_t disposition,
              uint32_t flags, native_handle_t& out) {
  const std::string host = host::host_path(path);
  const bool writes = (access & kGenericWrite) != 0;
  // Read rights come with every open here: the share markers are read locks.
  int mode = (writes ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NOCTTY;
  const bool no_follow = (flags & kFileFlagOpenReparsePoint) != 0;
  // Windows opens the link itself and lets the caller look; the host refuses at the open.
  if (no_follow) mode |= O_NOFOLLOW;
  switch (disposition) {
    case kCreateNew:
      mode |= O_CREAT | O_EXCL;
      break;
    case kCreateAlways:
    case kOpenAlways:
      mode |= O_CREAT;
      break;
    case kOpenExisting:
    case kTruncateExisting:
      break;
    default:
      return kErrorInvalidParameter;
  }
  int fd;
  do {
    fd = ::open(host.c_str(), mode, 0666);
  } while (fd < 0 && errno == EINTR);
  if (fd < 0) {
    const int error = errno;
    if (error == EEXIST) return kErrorFileExists;
    if (error == ELOOP && no_follow) return kErrorReparsePointEncountered;
    return host::error_from_errno(error, host);
  }
  struct stat st;
  if (::fstat(fd, &st) != 0) {
    const int error = errno;
    ::close(fd);
    return host::error_from_errno(error, host);
  }
  if (S_ISDIR(st.st_mode)) {
    // A folder opens only with backup semantics, as on Windows, and holds no share markers.
    if ((flags & kFileFlagBackupSemantics) == 0) {
      ::close(fd);
      return kErrorAccessDenied;
    }
    out = fd;
    return 0;
  }
  if (const uint32_t error = host::take_share_markers(fd, access, share)) {
    ::close(fd);
    return error;
  }
  // Truncation comes after the share test, as Windows refuses before it changes anything.
  if (disposition == kCreateAlways || disposition == kTruncateExisting) {
    // An empty file is left alone: truncating even a fresh file makes some file systems
    // flush everything later written to it when it is closed.
    if (st.st_size > 0 && ::ftruncate(fd, 0) != 0) {
      const int error = errno;
      ::close(fd);
      return host::error_from_errno(error, host);
    }
  }
  if (flags & kFileFlagNoBuffering) {
    // Windows reads such a file past its cache; the host has no aligned-I/O rule to keep, so a
    // hint to keep the file out of the cache stands in.
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_DONTNEED);
  }
  out = fd;
  return 0;
}

void close(native_handle_t handle) noexcept { ::close(fd_of(handle)); }

uint32_t write(native_handle_t handle, const void* data, uint32_t size, uint32_t& done) {
  done = 0;
  const int fd = fd_of(handle);
  if (host::region_at_position_locked_by_other(fd, true, size)) return kErrorLockViolation;
  const char* bytes = static_cast<const char*>(data);
  while (done < size) {
    const ssize_t n = ::write(fd, bytes + done, size - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      return errno == EBADF ? kErrorAccessDenied : host::error_from_errno(errno);
    }
    if (n == 0) return kErrorDiskFull;
    done += static_cast<uint32_t>(n);
  }
  return 0;
}

uint32_t read(native_handle_t handle, void* data, uint32_t size, uint32_t& done) {
  done = 0;
  const int fd = fd_of(handle);
  if (host::region_at_position_locked_by_other(fd, false, size)) return kErrorLockViolation;
  char* bytes = static_cast<char*>(data);
  while (done < size) {
    const ssize_t n = ::read(fd, bytes + done, size - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      // A folder opened with backup semantics cannot be read.
      return errno == EISDIR ? kErrorInvalidFunction
                             : errno == EBADF ? kErrorAccessDenied : host::error_from_errno(errno);
    }
    if (n == 0) break;  // the end of the file: a smaller count, no failure
    done += static_cast<uint32_t>(n);
  }
  return 0;
}

uint32_t seek(native_handle_t handle, int64_t distance, uint32_t method, int64_t& position) {
  if (method > kFileEnd) return kErrorInvalidParameter;
  const int whence = method == kFileBegin ? SEEK_SET : method == kFileCurrent ? SEEK_CUR : SEEK_END;
  const off_t result = ::lseek(fd_of(handle), static_cast<off_t>(distance), whence);
  if (result < 0) return errno == EINVAL ? kErrorNegativeSeek : host::error_from_errno(errno);
  position = result;
  return 0;
}

uint32_t move_pointer(native_handle_t handle, uint64_t position) {
  if (position > static_cast<uint64_t>(INT64_MAX)) return kErrorNegativeSeek;
  if (::lseek(fd_of(handle), static_cast<off_t>(position), SEEK_SET) < 0) {
    return errno == EINVAL ? kErrorNegativeSeek : host::error_from_errno(errno);
  }
  return 0;
}

uint32_t set_end(native_handle_t handle) {
  const int fd = fd_of(handle);
  const off_t position = ::lseek(fd, 0, SEEK_CUR);
  if (position < 0) return host::error_from_errno(errno);
  if (::ftruncate(fd, position) != 0) {
    return errno == EBADF || errno == EINVAL ? kErrorAccessDenied : host::error_from_errno(errno);
  }
  return 0;
}

uint32_t size(native_handle_t handle, uint64_t& out) {
  struct stat st;
  if (::fstat(fd_of(handle), &st) != 0) return host::error_from_errno(errno);
  out = static_cast<uint64_t>(st.st_size);
  return 0;
}

uint32_t flush(native_handle_t handle) {
  if (::fsync(fd_of(handle)) != 0) return errno == EINVAL ? 0 : host::error_from_errno(errno);
  return 0;
}

uint32_t find_first(const std::u16string& pattern) {
  std::u16string dir, name;
  const size_t sep = pattern.find_last_of(u"/\\");
  if (sep == std::u16string::npos) {
    name = pattern;
  } else {
    dir = pattern.substr(0, sep + 1);
    name = pattern.substr(sep + 1);
  }
  // Wildcards stand only in the last part of a search ("?" of a long-path prefix aside).
  const auto is_sep = [](char16_t c) { return c == u'\\' || c == u'/'; };
  const bool long_prefix =
      dir.size() >= 4 && is_sep(dir[0]) && is_sep(dir[1]) && (dir[2] == u'?' || dir[2] == u'.');
  if (dir.find_first_of(u"*?", long_prefix ? 3 : 0) != std::u16string::npos) {
    return kErrorInvalidName;
  }
  if (name.find_first_of(u"*?") == std::u16string::npos) {
    const std::string host = host::host_path(pattern);
    struct stat st;
    if (::lstat(host.c_str(), &st) == 0) return 0;
    return host::error_from_errno(errno, host);
  }
  const std::string host_dir = dir.empty() ? "." : host::host_path(dir);
  DIR* d = ::opendir(host_dir.c_str());
  if (d == nullptr) {
    const int error = errno;
    return error == ENOENT || error == ENOTDIR ? kErrorPathNotFound : host::error_from_errno(error);
  }
  bool found = false;
  while (const dirent* entry = ::readdir(d)) {
    if (wildcard_match(name, util::from_utf8(entry->d_name))) {
      found = true;
      break;
    }
  }
  ::closedir(d);
  return found ? 0 : kErrorFileNotFound;
}

bool path_file_exists(const std::u16string& path) {
  struct stat st;
  return ::stat(host::host_path(path).c_str(), &st) == 0;
}

file_kind_t status(const std::u16string& path) {
  struct stat st;
  if (::stat(host::host_path(path).c_str(), &st) != 0) {
    return errno == ENOENT || errno == ENOTDIR ? file_kind_t::not_found
                                               : file_kind_t::status_error;
  }
  if (S_ISDIR(st.st_mode)) return file_kind_t::directory;
  if (S_ISREG(st.st_mode)) return file_kind_t::regular;
  return file_kind_t::other;
}

uint32_t create_directory(const std::u16string& path) {
  const std::string host = host::host_path(path);
  if (::mkdir(host.c_str(), 0777) != 0) return host::error_from_errno(errno, host);
  return 0;
}

uint32_t remove(const std::u16string& path, bool is_directory) {
  const std::string host = host::host_path(path);
  if (is_directory) {
    return ::rmdir(host.c_str()) == 0 ? 0 : host::error_from_errno(errno, host);
  }
  if (host::delete_withheld(host)) return kErrorSharingViolation;
  return ::unlink(host.c_str()) == 0 ? 0 : host::error_from_errno(errno, host);
}

uint32_t rename(const std::u16string& from, const std::u16string& to) {
  const std::string host_from = host::host_path(from);
  const std::string host_to = host::host_path(to);
  if (host::delete_withheld(host_from) || host::delete_withheld(host_to)) {
    return kErrorSharingViolation;
  }
  if (::rename(host_from.c_str(), host_to.c_str()) != 0) {
    const int error = errno;
    // Which of the two names is missing decides between 2 and 3, as for an open.
    struct stat st;
    const bool source_there = ::lstat(host_from.c_str(), &st) == 0;
    return host::error_from_errno(error, source_there ? host_to : host_from);
  }
  return 0;
}

uint32_t temp_path(std::u16string& out) {
  static const char16_t kTemp[] = u"C:\\Temp\\";
  ensure_folder(host::host_path(kTemp));
  out = kTemp;
  return 0;
}

int32_t common_appdata(std::u16string& out) {
  static const char16_t kProgramData[] = u"C:\\ProgramData";
  ensure_folder(host::host_path(kProgramData));
  out = kProgramData;
  return 0;
}

uint32_t list_directory(const std::u16string& path, std::vector<dir_entry_t>& out) {
  const std::string host = host::host_path(path);
  DIR* d = ::opendir(host.c_str());
  if (d == nullptr) {
    const int error = errno;
    if (error == ENOENT) return kErrorPathNotFound;
    return error == ENOTDIR ? kErrorDirectory : host::error_from_errno(error, host);
  }
  std::vector<dir_entry_t> entries;
  while (const dirent* entry = ::readdir(d)) {
    const std::string name = entry->d_name;
    if (name == "." || name == "..") continue;
    dir_entry_t e;
    e.name = util::from_utf8(name);
    struct stat st;
    const std::string full = host + (host.empty() || host.back() == '/' ? "" : "/") + name;
    if (::stat(full.c_str(), &st) == 0) {
      e.is_directory = S_ISDIR(st.st_mode);
      e.is_regular = S_ISREG(st.st_mode);
    }
    entries.push_back(std::move(e));
  }
  ::closedir(d);
  out = std::move(entries);
  return 0;
}

}  // namespace win::sys
