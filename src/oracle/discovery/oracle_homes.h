// COracleHomes: the Oracle instances of this machine, found without connecting to any of them.
// It joins the home keys below HKLM\SOFTWARE\ORACLE and the database and ASM service keys below
// HKLM\SYSTEM\CurrentControlSet\Services on the path of the server executable, and keeps the
// list. Every caller builds its own object; nothing is cached between objects or shared with
// other threads.
#pragma once
#include <cstddef>
#include <vector>

#include "oracle/discovery/oracle_sid.h"

namespace specific::oracle {

class COracleRegKey;

class COracleHomes {
 public:
  using const_iterator = std::vector<SOracleSid>::const_iterator;

  // Scans the machine's registry. The order of the list is that of the home keys, then that of
  // the services inside a home; callers impose their own order where they need one.
  // A machine without Oracle, keys that do not open and values that are absent give fewer or no
  // instances, not a failure. A failure to list subkeys or to read a value unwinds the
  // constructor with the chain
  //   <cause>, "COracleHomes: failed to enum reg subkeys." or
  //   "COracleHomes: failed to get reg key value.", then one of "COracleHomes: failed to find
  //   oracle homes." / "... oracle services." / "... oracle instances.", then
  //   "Failed to create oracle homes."
  // and no partial list reaches anyone.
  COracleHomes();
  // The same over another registry; `root` stands for HKEY_LOCAL_MACHINE.
  explicit COracleHomes(const COracleRegKey& root);

  const_iterator begin() const { return sids_.begin(); }
  const_iterator end() const { return sids_.end(); }
  size_t count() const { return sids_.size(); }

 private:
  std::vector<SOracleSid> sids_;
};

}  // namespace specific::oracle
