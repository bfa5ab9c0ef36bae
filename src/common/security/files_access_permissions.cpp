#include "common/security/files_access_permissions.h"

namespace security {

// Deliberately empty: the path is not even converted, so the policy costs nothing per call.
void CUnrestrictedFilesAccessPermissions::check_access(const win::path_holder_t&) {}

}  // namespace security
