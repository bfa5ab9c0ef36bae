#include "common/win/safe_folder.h"

#include <vector>

#include "common/exc/exc_base.h"
#include "common/product.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "common/win/path.h"
#include "common/win/path_ops.h"
#include "common/win/safe_folder_sys.h"

namespace win {

namespace {

const char kFolderRefused[] =
    "The folder [%1] cannot hold the library's files: %2. Nothing is written through it.";
const char kLinkRefused[] =
    "The path [%1] is a junction or a symbolic link; the library does not write, rename or "
    "delete through one.";
const char kHardLinkRefused[] =
    "The path [%1] is a file with several hard links; the library does not write, rename or "
    "delete through one.";
const char kFolderNotMade[] = "it could not be created (error %1)";

std::string text_of(const std::u16string& path) { return util::to_utf8(path); }

std::u16string common_folder() {
  std::u16string common;
  if (common_appdata_folder(common) != 0) return std::u16string();
  return strip_trailing_separator(common);
}

// The folders to look at for `target` (a folder in the data folder), from "<common>\Trelo"
// down, each spelled as the common folder is followed by the parts of `target` below it.
std::vector<std::u16string> folder_chain(const std::u16string& common,
                                         const std::u16string& target) {
  const size_t skip = path_parts(common).size();
  const std::vector<std::u16string> parts = path_parts(target);
  std::vector<std::u16string> chain;
  std::u16string folder = common;
  for (size_t i = skip; i < parts.size(); ++i) {
    folder += u"\\";
    folder += parts[i];
    chain.push_back(folder);
  }
  return chain;
}

void refuse_folder(const std::u16string& folder, const std::string& reason) {
  throw exc::runtime_exc_t(util::fmt_t::format(kFolderRefused, text_of(folder), reason));
}

}  // namespace

std::u16string data_folder() {
  // Asked before every file operation; the machine's common data folder does not move while
  // the process runs, so the first answer that names one is kept.
  static const std::u16string kept = [] {
    const std::u16string common = common_folder();
    return common.empty() ? common : common + u"\\" + product::kDataFolder;
  }();
  if (!kept.empty()) return kept;
  const std::u16string common = common_folder();
  if (common.empty()) return common;
  return common + u"\\" + product::kDataFolder;
}

bool lies_in_data_folder(const std::u16string& path) {
  const std::u16string data = data_folder();
  if (data.empty() || path.empty()) return false;
  const int relation = path_relation(sys::full_path(path), data);
  return relation == kPathInside || relation == kPathEqual;
}

void ensure_safe_folders(const std::u16string& path, bool path_is_folder, bool create) {
  if (!lies_in_data_folder(path)) return;
  const std::u16string full = sys::full_path(path);
  std::u16string target = strip_trailing_separator(full);
  if (!path_is_folder) {
    std::u16string dir, file;
    split_path(target, dir, file);
    target = dir;
  }
  for (const std::u16string& folder : folder_chain(common_folder(), target)) {
    std::string reason;
    sys::folder_state_t state = sys::inspect_folder(folder, reason);
    if (state == sys::folder_state_t::missing) {
      if (!create) return;
      const uint32_t error = sys::create_private_folder(folder);
      if (error != 0 && error != kErrorAlreadyExists && error != kErrorFileExists) {
        refuse_folder(folder, util::fmt_t::format(kFolderNotMade, std::to_string(error)));
      }
      // Made now by us or, a moment earlier, by somebody else: either way it is looked at.
      state = sys::inspect_folder(folder, reason);
      if (state == sys::folder_state_t::missing) {
        refuse_folder(folder, util::fmt_t::format(kFolderNotMade, std::to_string(error)));
      }
    }
    if (state == sys::folder_state_t::refused) refuse_folder(folder, reason);
  }
}

void check_not_link(const std::u16string& path, bool writes) {
  if (!lies_in_data_folder(path)) return;
  ensure_safe_folders(path, /*path_is_folder=*/false, /*create=*/false);
  const int kind = sys::entry_link_kind(strip_trailing_separator(path));
  if (kind == 1) throw exc::runtime_exc_t(link_refused_text(path));
  if (kind == 2 && writes) throw exc::runtime_exc_t(hard_link_refused_text(path));
}

std::string link_refused_text(const std::u16string& path) {
  return util::fmt_t::format(kLinkRefused, text_of(path));
}

std::string hard_link_refused_text(const std::u16string& path) {
  return util::fmt_t::format(kHardLinkRefused, text_of(path));
}

}  // namespace win
