#include "common/security/protection.h"

namespace crypto {

bytes_t protect(const bytes_t& /*clear*/) { return {}; }

bytes_t unprotect(const bytes_t& /*protected_bytes*/) { return {}; }

}  // namespace crypto
