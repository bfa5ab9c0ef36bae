#include "common/win/path_ops.h"

#include "common/exc/exc_base.h"
#include "common/logging/log_file_blank.h"
#include "common/product.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "common/text/guid.h"
#include "common/win/file.h"
#include "common/win/file_codes.h"
#include "common/win/file_hooks.h"
#include "common/win/file_sys.h"
#include "common/win/path.h"
#include "common/win/safe_folder.h"

namespace win {

namespace {

const char kExistsFailed[] = "Failed to check whether file '%1' exists.";
const char kDeleteFailed[] = "Failed to delete file [%1].";
const char kRenameFailed[] = "Failed to rename file [%1] to [%2].";
const char kCreateDirFailed[] = "Failed to create directory [%1].";
const char kListFailed[] = "Failed to list directory [%1].";
const char kTempPathFailed[] =
    "Failed to retrieve the path of the directory designated for temporary files.";

// The folder part of `path`, in the form the caller gave.
path_holder_t folder_of(const path_holder_t& path) {
  if (path.has_narrow()) {
    std::string dir, file;
    split_path(path.narrow(), dir, file);
    return path_holder_t(dir);
  }
  std::u16string dir, file;
  split_path(path.wide(), dir, file);
  return path_holder_t(dir);
}

}  // namespace

bool file_exists(const path_holder_t& path) {
  path_guard_t guard(path);
  const std::u16string search = existence_search_text(path.wide());
  const uint32_t error = sys::find_first(search);
  if (error == 0) return true;
  if (error == kErrorFileNotFound || error == kErrorPathNotFound) {
    // The search does not see everything that is there (a bare drive, a path with a prefix
    // the search does not take): a direct test has the last word.
    return sys::path_file_exists(search);
  }
  const exc::win_sys_exc_t failure(error);
  logging::write_blank_error(util::fmt_t::format(kExistsFailed, path.narrow_or_empty()));
  logging::write_blank_error(failure.what());
  throw exc::win_sys_exc_t(kExistsFailed, path.narrow_or_empty(), error);
}

bool dir_exists(const path_holder_t& path) { return file_exists(folder_of(path)); }

bool remove_file(const path_holder_t& path) {
  path_guard_t guard(path, folder_of(path));
  const std::u16string& wide = path.wide();
  check_not_link(wide, /*writes=*/true);
  const sys::file_kind_t kind = sys::status(wide);
  if (kind == sys::file_kind_t::not_found) return false;
  const uint32_t error = sys::remove(wide, kind == sys::file_kind_t::directory);
  if (error == kErrorFileNotFound || error == kErrorPathNotFound) return false;
  if (error != 0) throw exc::win_sys_exc_t(kDeleteFailed, path.narrow_or_empty(), error);
  return true;
}

void rename_file(const path_holder_t& from, const path_holder_t& to) {
  path_guard_t guard(from, folder_of(from));
  file_hooks().check_access(to);
  check_not_link(from.wide(), /*writes=*/true);
  check_not_link(to.wide(), /*writes=*/true);
  const uint32_t error = sys::rename(from.wide(), to.wide());
  if (error != 0) {
    throw exc::win_sys_exc_t(kRenameFailed, from.narrow_or_empty(), to.narrow_or_empty(),
                             error);
  }
}

uint64_t file_size(const path_holder_t& path) { return win_file_t::open_read(path)->size(); }

void create_directories(const path_holder_t& path) {
  path_guard_t guard(path);
  // The data folder's own folders are made (or found) safe first; the loop then finds them.
  const std::u16string& wide = path.wide();
  const bool ends_in_separator = !wide.empty() && (wide.back() == u'\\' || wide.back() == u'/');
  ensure_safe_folders(wide, ends_in_separator, /*create=*/true);
  for (const std::u16string& prefix : directory_prefixes(wide)) {
    const sys::file_kind_t kind = sys::status(prefix);
    if (kind != sys::file_kind_t::status_error && kind != sys::file_kind_t::not_found) continue;
    const uint32_t error = sys::create_directory(prefix);
    if (error == 0) continue;
    if (error == kErrorAlreadyExists || error == kErrorFileExists) {
      // Another thread or process made it in between: that is as good.
      if (sys::status(prefix) == sys::file_kind_t::directory) continue;
    }
    throw exc::win_sys_exc_t(kCreateDirFailed, util::to_utf8(prefix), error);
  }
}

std::vector<dir_entry_t> list_directory(const path_holder_t& path) {
  path_guard_t guard(path);
  std::vector<dir_entry_t> entries;
  const uint32_t error = sys::list_directory(path.wide(), entries);
  if (error != 0) throw exc::win_sys_exc_t(kListFailed, path.narrow_or_empty(), error);
  return entries;
}

std::u16string temp_path() {
  std::u16string path;
  const uint32_t error = sys::temp_path(path);
  if (error != 0) throw exc::win_sys_exc_t(kTempPathFailed, error);
  return path;
}

int32_t common_appdata_folder(std::u16string& folder) {
  std::u16string found;
  const int32_t result = sys::common_appdata(found);
  if (result == 0) folder = std::move(found);
  return result;
}

std::u16string library_temp_folder() {
  std::u16string common;
  if (common_appdata_folder(common) != 0) return temp_path();
  const std::u16string folder =
      join_path_windows(common, std::u16string(product::kDataFolder) + u"\\Tmp\\");
  // Made when missing and, made or found, checked to be the library's own before a temporary
  // file goes there.
  create_directories(folder);
  return folder;
}

std::u16string make_temp_file_path() {
  return join_path_windows(library_temp_folder(), util::guid_to_text(util::new_guid()));
}

}  // namespace win
