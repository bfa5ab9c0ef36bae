// One identity under which the file operations on a share run, and the count of how often each
// thread has entered it. Entries are made by a host before file calls begin and are then only
// read; the count is the one part that changes, under its own lock.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "common/text/guid.h"
#include "common/win/handle.h"
#include "common/win/net_use.h"

namespace win {

enum impersonation_kind_t : uint32_t {
  kImpersonateToken = 0,
  kImpersonateSecurityContext = 1,
  kImpersonateNetUse = 2,
};

// How many sessions each thread has entered on one entry. Safe from any thread; each call
// counts for the calling thread.
class impersonation_counter_t {
 public:
  void enter();
  // One less for the calling thread; true when that was its last, and the thread is then
  // forgotten. A thread that holds no count is left alone, with false.
  bool leave();
  int32_t count(uint32_t thread_id) const;
  size_t threads() const;

 private:
  mutable std::mutex lock_;
  std::map<uint32_t, int32_t> counts_;
};

struct impersonation_entry_t {
  uint32_t kind = kImpersonateToken;
  std::u16string share;                            // the key: "\\server\share"
  std::shared_ptr<win_handle_t> token;             // a logon token, for kImpersonateToken
  util::guid_t context_id;                         // for kImpersonateSecurityContext
  std::shared_ptr<net_credentials_t> credentials;  // for kImpersonateNetUse
  // Never null.
  std::shared_ptr<impersonation_counter_t> counter = std::make_shared<impersonation_counter_t>();
};

}  // namespace win
