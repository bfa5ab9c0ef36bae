// The process's store of runtime keys, held by the common library's context. It is built empty
// at start-up and stays so: this program protects nothing (protection.h), and no operation
// reads or fills it. Its lock guards its members for any thread.
#pragma once
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace crypto {

class CRuntimeKeyStore {
 public:
  CRuntimeKeyStore() = default;
  CRuntimeKeyStore(const CRuntimeKeyStore&) = delete;
  CRuntimeKeyStore& operator=(const CRuntimeKeyStore&) = delete;

  // True while no key and no buffer holds anything, which is always.
  bool empty() const;

 private:
  mutable std::mutex lock_;
  std::map<std::string, std::vector<uint8_t>> keys_;
  std::vector<uint8_t> primary_;
  std::vector<uint8_t> secondary_;
};

}  // namespace crypto
