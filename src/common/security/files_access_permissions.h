// The policy asked before any file operation names a path: it may refuse by throwing. The
// library installs CUnrestrictedFilesAccessPermissions, which grants everything; a host may put
// a stricter one in the common library context. Called from any thread, so a policy must be
// safe for concurrent use.
#pragma once
#include "common/win/path_holder.h"

namespace security {

class IFilesAccessPermissions {
 public:
  // Returns when `path` may be used; throws to stop the operation.
  virtual void check_access(const win::path_holder_t& path) = 0;
  virtual ~IFilesAccessPermissions() = default;
};

class CUnrestrictedFilesAccessPermissions : public IFilesAccessPermissions {
 public:
  // Grants everything and never throws.
  void check_access(const win::path_holder_t& path) override;
};

}  // namespace security
