// Connects the file layer to the rest of the common library: the access policy of the
// library's context, the impersonation table for network paths, and the per-thread observers.
// Installed once by OracleVssInitLib; until then the file layer grants everything and observes
// nothing, which is also what an unrestricted policy and an empty impersonation table give.
#pragma once

namespace common {

void install_file_hooks();

}  // namespace common
