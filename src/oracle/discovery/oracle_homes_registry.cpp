#include "oracle/discovery/oracle_homes_registry.h"

#include <utility>

#include "common/exc/exc_base.h"
#include "common/win/reg_key.h"

namespace specific::oracle {

namespace {

constexpr char kRootHasNoContent[] =
    "The registry root is only opened from, never listed or read.";

// An open key of the machine's registry; closed with the object.
class CMachineRegKey : public COracleRegKey {
 public:
  explicit CMachineRegKey(win::reg_handle_t handle) : key_(handle) {}

  std::unique_ptr<COracleRegKey> open(const std::u16string& path) const override {
    return open_below(key_.handle(), path);
  }
  std::vector<std::u16string> subkey_names() const override {
    return list_oracle_subkeys(key_.handle());
  }
  std::u16string read_string(const std::u16string& name) const override {
    return read_oracle_reg_string(key_.handle(), name);
  }

  // A parent of 0 is HKEY_LOCAL_MACHINE. On the host build a store file that cannot be read
  // makes open_key throw; that is a broken test machine rather than an absent key, so it goes
  // on to the caller.
  static std::unique_ptr<COracleRegKey> open_below(win::reg_handle_t parent,
                                                   const std::u16string& path) {
    win::reg_handle_t handle = nullptr;
    if (win::reg_api::open_key(parent, path, win::kKeyRead, handle) != win::kErrorSuccess) {
      return nullptr;
    }
    return std::make_unique<CMachineRegKey>(handle);
  }

 private:
  win::win_reg_key_t key_;  // owns the handle
};

class CMachineRoot : public COracleRegKey {
 public:
  std::unique_ptr<COracleRegKey> open(const std::u16string& path) const override {
    return CMachineRegKey::open_below(/*parent=*/nullptr, path);
  }
  std::vector<std::u16string> subkey_names() const override {
    throw exc::runtime_exc_t(kRootHasNoContent);
  }
  std::u16string read_string(const std::u16string&) const override {
    throw exc::runtime_exc_t(kRootHasNoContent);
  }
};

}  // namespace

std::unique_ptr<COracleRegKey> machine_registry_root() { return std::make_unique<CMachineRoot>(); }

std::vector<std::u16string> list_oracle_subkeys(win::reg_handle_t key) {
  return win::subkey_names_of(key, kOracleKeyInfoFailure, kOracleKeyEnumFailure,
                              kOracleKeyNameCapacity);
}

std::u16string read_oracle_reg_string(win::reg_handle_t key, const std::u16string& name) {
  std::vector<char16_t> buffer(kOracleValueCapacity, u'\0');
  uint32_t type = win::kRegNone;
  uint32_t size = kOracleValueCapacity * sizeof(char16_t);
  const uint32_t status = win::reg_api::query_value_w(
      key, name, &type, reinterpret_cast<uint8_t*>(buffer.data()), &size);
  if (status != win::kErrorSuccess) return {};
  if (type != win::kRegSz && type != win::kRegExpandSz) return {};
  // A value stored without its terminator, or with half a character at its end, is not
  // trusted at all rather than cut to some guess.
  if (size == 0 || size % sizeof(char16_t) != 0) return {};
  if (size > kOracleValueCapacity * sizeof(char16_t)) return {};
  if (buffer[size / sizeof(char16_t) - 1] != u'\0') return {};
  return std::u16string(buffer.data());
}

}  // namespace specific::oracle
