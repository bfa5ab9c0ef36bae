// Pure path helpers: splitting, joining, extensions and the prefix rules of Windows paths
// (drive, UNC, long-path "\\?\"). They never touch the file system, so they behave the same on
// both builds and are safe from any thread. "/" and "\" are both separators unless said
// otherwise. Narrow paths are UTF-8.
#pragma once
#include <cstddef>
#include <string>
#include <vector>

namespace win {

// Position of the later of the last "/" and the last "\"; npos when there is none.
size_t last_separator(const std::string& path);
size_t last_separator(const std::u16string& path);

// Cuts at last_separator: `dir` is what stands before it, `file` what follows. Without a
// separator `dir` is empty and `file` is the whole path.
void split_path(const std::string& path, std::string& dir, std::string& file);
void split_path(const std::u16string& path, std::u16string& dir, std::u16string& file);

// The `file` part of split_path.
std::string file_name(const std::string& path);
std::u16string file_name(const std::u16string& path);

// "\" when `path` contains one, else "/".
std::string path_separator(const std::string& path);
std::u16string path_separator(const std::u16string& path);

// An empty `dir` gives `name`; a `dir` ending in a separator gives dir + name; any other gives
// dir + path_separator(dir) + name (or the given separator).
std::string join_path(const std::string& dir, const std::string& name);
std::u16string join_path(const std::u16string& dir, const std::u16string& name);
std::string join_path(const std::string& dir, const std::string& name,
                      const std::string& separator);
std::u16string join_path(const std::u16string& dir, const std::u16string& name,
                         const std::u16string& separator);

// join_path, then every "/" of the result becomes "\".
std::string join_path_windows(const std::string& dir, const std::string& name);
std::u16string join_path_windows(const std::u16string& dir, const std::u16string& name);

// Drops one final "/" or "\".
std::string strip_trailing_separator(const std::string& path);
std::u16string strip_trailing_separator(const std::u16string& path);

// True for "\\?\UNC..." and, failing that, for a path that begins with "\\" but not "\\?\".
// Only backslashes count here; "UNC" is compared without regard to case.
bool is_network_path(const std::string& path);
bool is_network_path(const std::u16string& path);

// `extension` gets a leading "." when it has none; the part of `path` from its last "." on is
// replaced by it, or it is appended when `path` has no ".". An empty `extension` leaves the
// path cut before its last ".". The last "." is taken wherever it stands, also in a folder name.
std::string replace_extension(const std::string& path, const std::string& extension);
std::u16string replace_extension(const std::u16string& path, const std::u16string& extension);

// How `a` stands to `b`, part by part (split at "/" and "\", empty parts skipped, compared
// without regard to case): 2 equal, 1 `a` lies under `b`, 0 `b` lies under `a`, 3 they part.
enum path_relation_t : int {
  kPathContains = 0,
  kPathInside = 1,
  kPathEqual = 2,
  kPathUnrelated = 3,
};
int path_relation(const std::u16string& a, const std::u16string& b);

// The non-empty parts of `path` between separators.
std::vector<std::u16string> path_parts(const std::u16string& path);

// What the existence test hands to the system's search: one trailing separator dropped, and
// for a share root ("\\server\share", exactly two parts) "\*" appended, since a share root
// itself cannot be searched for.
std::u16string existence_search_text(const std::u16string& path);

// The directory prefixes that create_directories looks at, in order, each ending with its
// separator. The last part of `path` is a file name unless `path` ends in a separator. Never
// included: the server and the share of a UNC path ("\\srv\share\", "\\?\UNC\srv\share\"), or
// the long-path prefix itself. Drive paths, with or without "\\?\", start with the drive root.
std::vector<std::u16string> directory_prefixes(const std::u16string& path);

}  // namespace win
