// Connects the file layer to the rest of the common library: the access policy of the
// library's context, the impersonation table for network paths, and the per-thread observers.
// Joined once, whichever comes first: the loading of this unit (a static initialiser, so that
// an export called before OracleVssInitLib already works under the policy), the first use of
// the library's context (ctx()), or an explicit call (OracleVssInitLib). Joining builds
// nothing: the context, its policy and tables and the thread accounting are made at their
// first use by a file operation. Until joined the file layer grants everything and observes
// nothing, which is also what an unrestricted policy and an empty impersonation table give.
#pragma once

namespace common {

// Joins the file layer to the common library; idempotent and safe from any thread.
void install_file_hooks();

// Whether the file layer runs through the common library's hooks now.
bool file_hooks_installed();

}  // namespace common
