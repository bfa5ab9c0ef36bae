// The two process-wide tables behind impersonation, both held by the common library context:
// share to identity (WinImpersonationTokensMap) and security-context id to SSPI context. A host
// fills them before file calls begin; this library only reads them. Each has its own lock,
// taken for the lookup alone and never across a system call.
#pragma once
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "common/text/guid.h"
#include "common/win/impersonation_api.h"
#include "common/win/impersonation_entry.h"

namespace win {

// The share a path lies on, "\\server\share", for the forms "\\server\share...",
// "\\?\UNC\server\share..." and "\\?\server\share..."; empty for any other path. Both "/" and
// "\" separate, and empty parts count as parts.
std::u16string share_key(const std::u16string& path);

// Orders texts as _wcsicmp does in the "C" locale: A to Z fold to lower case, every other
// unit compares by value.
struct share_less_t {
  bool operator()(const std::u16string& a, const std::u16string& b) const;
};

class WinImpersonationTokensMap {
 public:
  WinImpersonationTokensMap() = default;
  ~WinImpersonationTokensMap();
  WinImpersonationTokensMap(const WinImpersonationTokensMap&) = delete;
  WinImpersonationTokensMap& operator=(const WinImpersonationTokensMap&) = delete;

  // Keyed by entry->share; replaces an entry with an equal key.
  void insert(std::shared_ptr<impersonation_entry_t> entry);
  bool erase(const std::u16string& share);
  std::shared_ptr<impersonation_entry_t> find(const std::u16string& share) const;
  size_t size() const;

  // The lock of the table, for tests that prove it is not taken.
  std::mutex& lock() const { return lock_; }

 private:
  mutable std::mutex lock_;
  std::map<std::u16string, std::shared_ptr<impersonation_entry_t>, share_less_t> entries_;
};

// Orders GUIDs by the bytes of their binary form.
struct guid_less_t {
  bool operator()(const util::guid_t& a, const util::guid_t& b) const;
};

bool is_null_guid(const util::guid_t& guid);

class impersonation_contexts_t {
 public:
  void insert(const util::guid_t& id, std::shared_ptr<security_context_t> context);
  bool erase(const util::guid_t& id);
  // Empty for an unknown id.
  std::shared_ptr<security_context_t> find(const util::guid_t& id) const;
  size_t size() const;

 private:
  mutable std::mutex lock_;
  std::map<util::guid_t, std::shared_ptr<security_context_t>, guid_less_t> contexts_;
};

}  // namespace win
