#include "common/win/safe_folder_sys.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "common/win/errno_codes_posix.h"
#include "common/win/path.h"
#include "common/win/path_map_posix.h"

namespace win::sys {

folder_state_t inspect_folder(const std::u16string& path, std::string& reason) {
  const std::string host = host::host_path(path);
  struct stat st;
  if (::lstat(host.c_str(), &st) != 0) {
    if (errno == ENOENT) return folder_state_t::missing;
    reason = "its status cannot be read (errno " + std::to_string(errno) + ")";
    return folder_state_t::refused;
  }
  if (S_ISLNK(st.st_mode)) {
    reason = "it is a symbolic link";
    return folder_state_t::refused;
  }
  if (!S_ISDIR(st.st_mode)) {
    reason = "it is not a folder";
    return folder_state_t::refused;
  }
  if (st.st_uid != ::geteuid() && st.st_uid != 0) {
    reason = "it belongs to another user";
    return folder_state_t::refused;
  }
  if ((st.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
    reason = "other users may write in it";
    return folder_state_t::refused;
  }
  return folder_state_t::safe;
}

uint32_t create_private_folder(const std::u16string& path) {
  const std::string host = host::host_path(path);
  if (::mkdir(host.c_str(), 0700) != 0) {
    if (errno == EEXIST) return kErrorAlreadyExists;
    return host::error_from_errno(errno, host);
  }
  // The mode of mkdir passes through the umask, which can only take rights away; set it
  // outright all the same, so that the folder is what the rule says whatever the umask.
  ::chmod(host.c_str(), 0700);
  return 0;
}

namespace {

int kind_of(const struct stat& st) {
  if (S_ISLNK(st.st_mode)) return 1;
  if (S_ISREG(st.st_mode) && st.st_nlink > 1) return 2;
  return 0;
}

}  // namespace

int entry_link_kind(const std::u16string& path) {
  struct stat st;
  if (::lstat(host::host_path(path).c_str(), &st) != 0) return 0;
  return kind_of(st);
}

int handle_link_kind(native_handle_t handle) {
  struct stat st;
  if (::fstat(static_cast<int>(handle), &st) != 0) return 0;
  return kind_of(st);
}

std::u16string full_path(const std::u16string& path) {
  // The host build resolves names only through its drive mapping, which folds "." and ".."
  // lexically: the same folding here, on the Windows form, keeps the recognition in step with
  // what the mapping reaches.
  std::u16string prefix;
  std::u16string rest = path;
  const auto is_sep = [](char16_t c) { return c == u'\\' || c == u'/'; };
  if (rest.size() >= 4 && is_sep(rest[0]) && is_sep(rest[1]) && (rest[2] == u'?' || rest[2] == u'.') &&
      is_sep(rest[3])) {
    rest = rest.substr(4);
  }
  if (rest.size() >= 2 && rest[1] == u':') {
    prefix = rest.substr(0, 2);
    rest = rest.substr(2);
  } else if (rest.size() >= 2 && is_sep(rest[0]) && is_sep(rest[1])) {
    prefix = u"\\";
  } else if (!rest.empty() && is_sep(rest[0])) {
    prefix = u"C:";
  } else {
    return path;  // relative: nothing to fold it against
  }
  std::vector<std::u16string> kept;
  for (const std::u16string& part : path_parts(rest)) {
    if (part == u".") continue;
    if (part == u"..") {
      if (!kept.empty()) kept.pop_back();
      continue;
    }
    kept.push_back(part);
  }
  std::u16string out = prefix;
  for (const auto& part : kept) out += u"\\" + part;
  if (kept.empty()) out += u"\\";
  return out;
}

}  // namespace win::sys
