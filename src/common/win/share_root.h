// The root of a path on a share. Windows takes "\\server\share" as the root of such a path: ".."
// never climbs above it, so the share that a path names is the share it reaches, and the
// impersonation entry chosen by that share is the right one. A server or share spelled "." or
// ".." would let the two part ways, and the file layer refuses such a path. Pure, any thread.
#pragma once
#include <string>

namespace win {

// False for a network path (is_network_path) whose server or share is missing, ".", or "..";
// true for every other path.
bool share_root_is_valid(const std::u16string& path);

// Throws runtime_exc_t "The share path [%1] names no valid server and share." when
// share_root_is_valid is false. Asked by the file layer before each operation.
void check_share_root(const std::u16string& path);

}  // namespace win
