// The drive mapping of the host build: a Windows path becomes a path below a root folder, as
// Wine maps drives. `C:\a\b` is `<root>/c/a/b`, `\\srv\share\x` is `<root>/unc/srv/share/x`,
// long-path prefixes (`\\?\`, `\\?\UNC\`) are dropped, and either slash separates. A path
// without a drive or server is only given forward slashes. Pure text; any thread.
#pragma once
#include <string>

namespace ocisim {

std::string map_windows_path(const std::string& root, const std::string& windows_path);

}  // namespace ocisim
