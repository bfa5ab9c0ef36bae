#include "common/win/share_root.h"

#include <vector>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "common/win/path.h"

namespace win {

namespace {

bool is_dots(const std::u16string& part) { return part == u"." || part == u".."; }

}  // namespace

bool share_root_is_valid(const std::u16string& path) {
  if (!is_network_path(path)) return true;
  const std::vector<std::u16string> parts = path_parts(path);
  // "\\?\UNC\server\share": the server and share follow "?" and "UNC".
  size_t first = 0;
  if (!parts.empty() && parts[0] == u"?") first = 2;
  if (parts.size() < first + 2) return false;
  return !is_dots(parts[first]) && !is_dots(parts[first + 1]);
}

void check_share_root(const std::u16string& path) {
  if (share_root_is_valid(path)) return;
  throw exc::runtime_exc_t(util::fmt_t::format(
      "The share path [%1] names no valid server and share.", util::to_utf8(path)));
}

}  // namespace win
