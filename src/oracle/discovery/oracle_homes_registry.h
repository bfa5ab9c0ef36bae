// The registry as discovery reads it: open a key below another, list its subkeys, read one
// string value. COracleHomes takes these three operations from COracleRegKey, so that its rules
// can be exercised on a registry made up by a test as well as on the machine's own (through
// the reg_api calls, which reach the Win32 registry or the host build's .reg store).
// A key object belongs to one thread at a time.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/win/reg_api.h"

namespace specific::oracle {

class COracleRegKey {
 public:
  virtual ~COracleRegKey() = default;

  // The key at `path` below this one, opened for KEY_READ; null when it does not open, for
  // whatever reason: to discovery a key it cannot open is a key that is not there.
  virtual std::unique_ptr<COracleRegKey> open(const std::u16string& path) const = 0;

  // The names of the direct subkeys in the order the registry enumerates them. Failures as
  // list_oracle_subkeys.
  virtual std::vector<std::u16string> subkey_names() const = 0;

  // A string value by the rules of read_oracle_reg_string: empty when it is absent or unusable.
  virtual std::u16string read_string(const std::u16string& name) const = 0;
};

// HKEY_LOCAL_MACHINE of this machine. Its open() reaches the registry; it has no subkey list
// or values of its own to offer (both fail: discovery never asks the root for them).
std::unique_ptr<COracleRegKey> machine_registry_root();

// Capacity of the name buffer when listing subkeys, in characters, terminator included: a
// subkey whose name has 255 characters (the registry's longest) does not fit, and the listing
// fails on it.
constexpr uint32_t kOracleKeyNameCapacity = 255;
// Capacity of the value buffer, in characters, terminator included: 520 bytes.
constexpr uint32_t kOracleValueCapacity = 260;

constexpr char kOracleKeyInfoFailure[] = "Failed to query info from oracle reg key";
// Used by both scans; the word "home" is part of the text in the service scan too.
constexpr char kOracleKeyEnumFailure[] = "Failed to enum oracle home reg key";

// The subkey names of an open key: the count is asked once, then each name by index from 0
// into a buffer of kOracleKeyNameCapacity characters, the length reset before every call.
// A failure of the count throws win_sys_exc_t kOracleKeyInfoFailure with the code; any
// failure of a name, the end-of-list code included (subkeys that vanished after the count),
// throws win_sys_exc_t kOracleKeyEnumFailure with the code.
std::vector<std::u16string> list_oracle_subkeys(win::reg_handle_t key);

// One string value of an open key, read into a zero-filled buffer of kOracleValueCapacity
// characters. Empty when the read fails (absent, or longer than the buffer), when the value is
// neither REG_SZ nor REG_EXPAND_SZ, when its size is 0 or odd, or when its last character is
// no terminator; otherwise the text up to the first terminator. REG_EXPAND_SZ text is taken
// as stored. Throws only when the buffer cannot be had.
std::u16string read_oracle_reg_string(win::reg_handle_t key, const std::u16string& name);

}  // namespace specific::oracle
