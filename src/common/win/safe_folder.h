// The library writes as LocalSystem into its data folder below the machine's common application
// data folder, where any user may create folders. A user who made ours first, or planted a
// junction, a symbolic link or a hard link in it, could turn each write, rename or delete of the
// library into one on a file of the user's choosing. This unit keeps the data folder the
// library's own: every folder from "<common data>\Trelo" down to the one that is written in must
// belong to a trusted owner, let nobody else write, and be no link; files in it are opened without
// following a link. The file layer calls it before each operation on a path in the data folder
// (file.cpp, path_ops.cpp); any thread.
//
// Trusted owner: SYSTEM, the Administrators group or the process's own user (on the host build
// the process's own uid or root). A folder the library creates gets a protected access list that
// lets only those write (on the host build mode 0700). A present folder with a trusted owner and
// a wider access list is repaired on Windows; on the host build, and on Windows with any other
// owner, it is refused: nothing is written through it.
#pragma once
#include <string>

namespace win {

// "<common data>\Trelo\Backup", without a final separator; empty when the system cannot name
// the common data folder.
std::u16string data_folder();

// Whether `path`, once "." and ".." are folded as the system folds them, lies at or below the
// data folder (letter case aside).
bool lies_in_data_folder(const std::u16string& path);

// For a path in the data folder: makes sure that every folder from "<common data>\Trelo" down to
// the folder of `path` (to `path` itself when `path_is_folder`) is safe. With `create`, a missing
// one is created with the safe access list; without, the walk stops quietly at the first missing
// one (the operation then fails by itself). A path outside the data folder is left alone.
// Refusal: runtime_exc_t "The folder [%1] cannot hold the library's files: %2. Nothing is
// written through it." with the reason.
void ensure_safe_folders(const std::u16string& path, bool path_is_folder, bool create);

// For a path in the data folder: refuses (runtime_exc_t "The path [%1] is a junction or a
// symbolic link; the library does not write, rename or delete through one.") when what stands
// at `path` is a link, and (for `writes`) when it is a file with more than one hard link
// ("... is a file with several hard links; ..."). Nothing there is no failure. Checks the
// folders first, as ensure_safe_folders does without creating.
void check_not_link(const std::u16string& path, bool writes);

// The failure texts, for callers that refuse the same things on an open handle.
std::string link_refused_text(const std::u16string& path);
std::string hard_link_refused_text(const std::u16string& path);

}  // namespace win
