// The host build's stand-in for drives and shares: Windows paths are mapped onto one folder of
// the host, as Wine maps its drives. "C:\a\b" is ROOT/c/a/b, "\\srv\share\x" is
// ROOT/unc/srv/share/x; the long-path prefixes "\\?\" and "\\?\UNC\" are dropped, "/" and "\"
// are both separators, "." and ".." are folded as Windows folds them (never above the drive or
// the share: "\\srv\share" is the root of a path on a share). ROOT is $DBSHADOWLINK_ROOT.
// Only the _posix files of the platform layer (and the test stand-ins that must see the same
// machine) call this, right at the system call; everything above keeps Windows paths.
#pragma once
#include <string>

namespace win::host {

// Pure: the host path of `path` under `root`. A relative path stays relative (with "/"); a
// path rooted without a drive ("\a") lies on drive C. A trailing separator is kept.
std::string map_windows_path(const std::u16string& path, const std::string& root);
std::string map_windows_path(const std::string& utf8_path, const std::string& root);

// $DBSHADOWLINK_ROOT, read at each call; when it is unset or empty, $HOME/.dbshadowlink, as
// Wine keeps its drives under the home folder when no prefix is named.
std::string mapping_root();

// Windows looks names up without regard to case. Of `mapped`, the part from `fixed_length`
// on is matched against what exists, folder by folder: a part that is not found as written
// takes the spelling of an entry that differs only in case. Parts that match nothing stay as
// written. Touches the file system.
std::string resolve_case(const std::string& mapped, size_t fixed_length);

// map_windows_path under mapping_root(), then resolve_case below the drive or "unc" folder.
std::string host_path(const std::u16string& path);

}  // namespace win::host
