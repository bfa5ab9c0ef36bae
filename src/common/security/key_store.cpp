#include "common/security/key_store.h"

namespace crypto {

bool CRuntimeKeyStore::empty() const {
  std::lock_guard<std::mutex> guard(lock_);
  return keys_.empty() && primary_.empty() && secondary_.empty();
}

}  // namespace crypto
