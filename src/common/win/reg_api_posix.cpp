// The registry calls answered from the host build's read-only store. A handle is a record of the
// key it stands for and the tree that key lives in, so that a reload of the store does not pull
// the key from under an open handle. Handles are kept in a set: a call with a handle that was
// never given out, or was closed already, answers ERROR_INVALID_HANDLE as Windows does.
#include <cstring>
#include <iterator>
#include <memory>

#include "common/text/codepage.h"
#include "common/win/handle_table_posix.h"
#include "common/win/reg_api.h"
#include "common/win/reg_file.h"
#include "common/win/reg_store_posix.h"

namespace win::reg_api {

namespace {

struct open_key_t {
  std::shared_ptr<const reg_file::tree_t> tree;
  const reg_file::key_t* key = nullptr;
  uint32_t access = 0;
};

host::handle_table_t<open_key_t>& handles() {
  static host::handle_table_t<open_key_t> instance;
  return instance;
}

open_key_t* find_handle(reg_handle_t handle) { return handles().find(handle); }

// The store is read-only: what a read asks for is granted, anything that would write is refused.
constexpr uint32_t kGenericExecute = 0x20000000;
constexpr uint32_t kMaximumAllowed = 0x02000000;
constexpr uint32_t kKeyWow64_32Key = 0x0200;
constexpr uint32_t kGrantable =
    kKeyRead | kKeyWow64_64Key | kKeyWow64_32Key | kGenericRead | kGenericExecute | kMaximumAllowed;

uint32_t effective_access(uint32_t access) {
  uint32_t granted = access & kKeyRead;
  if (access & (kGenericRead | kGenericExecute | kMaximumAllowed)) granted |= kKeyRead;
  return granted;
}

const reg_file::key_t& empty_key() {
  static const reg_file::key_t instance;
  return instance;
}

// Wide text to the system code page, keeping embedded NULs and a missing terminator as they
// are, as RegQueryValueExA converts the whole stored buffer.
std::string narrow_keeping_nuls(const std::u16string& wide) {
  std::string result;
  size_t start = 0;
  while (start <= wide.size()) {
    size_t end = wide.find(u'\0', start);
    if (end == std::u16string::npos) end = wide.size();
    std::string piece;
    uint32_t error = 0;
    if (end > start &&
        !util::codepage::wide_to_narrow(util::codepage::kSystem, wide.substr(start, end - start),
                                        piece, error)) {
      piece.assign(end - start, '?');
    }
    result += piece;
    if (end == wide.size()) break;
    result.push_back('\0');
    start = end + 1;
  }
  return result;
}

uint32_t copy_out(const uint8_t* bytes, size_t length, uint8_t* data, uint32_t* size) {
  if (size == nullptr) return kErrorSuccess;
  const uint32_t needed = static_cast<uint32_t>(length);
  if (data == nullptr) {
    *size = needed;
    return kErrorSuccess;
  }
  if (*size < needed) {
    *size = needed;
    return kErrorMoreData;
  }
  if (length != 0) std::memcpy(data, bytes, length);
  *size = needed;
  return kErrorSuccess;
}

const reg_file::value_t* find_value(reg_handle_t key, const std::u16string& name,
                                    uint32_t& status) {
  const open_key_t* open = find_handle(key);
  if (open == nullptr) {
    status = kErrorInvalidHandle;
    return nullptr;
  }
  if ((open->access & kKeyQueryValue) == 0) {
    status = kErrorAccessDenied;
    return nullptr;
  }
  const reg_file::value_t* value = open->key->find_value(name);
  status = value == nullptr ? kErrorFileNotFound : kErrorSuccess;
  return value;
}

}  // namespace

uint32_t open_key(reg_handle_t parent, const std::u16string& path, uint32_t access,
                  reg_handle_t& out) {
  std::shared_ptr<const reg_file::tree_t> tree;
  const reg_file::key_t* key = nullptr;
  if (parent == nullptr) {
    tree = reg_store::current();
    const auto root = tree->roots.find(reg_file::root_t::local_machine);
    key = root == tree->roots.end() ? &empty_key() : &root->second;
  } else {
    const open_key_t* open = find_handle(parent);
    if (open == nullptr) return kErrorInvalidHandle;
    tree = open->tree;
    key = open->key;
  }
  // A path may not begin with a backslash; empty names between backslashes, and a trailing
  // backslash, are passed over, as the system does.
  if (!path.empty() && path[0] == u'\\') return kErrorBadPathname;
  key = key->find_path(path);
  if (key == nullptr) return kErrorFileNotFound;
  if ((access & ~kGrantable) != 0) return kErrorAccessDenied;
  auto record = std::make_unique<open_key_t>();
  record->tree = std::move(tree);
  record->key = key;
  record->access = effective_access(access);
  out = handles().keep(std::move(record));
  return kErrorSuccess;
}

uint32_t close_key(reg_handle_t key) noexcept {
  return handles().close(key) ? kErrorSuccess : kErrorInvalidHandle;
}

uint32_t query_value_w(reg_handle_t key, const std::u16string& name, uint32_t* type, uint8_t* data,
                       uint32_t* size) {
  if (data != nullptr && size == nullptr) return kErrorInvalidParameter;
  uint32_t status = 0;
  const reg_file::value_t* value = find_value(key, name, status);
  if (value == nullptr) return status;
  if (type != nullptr) *type = value->type;
  return copy_out(value->data.data(), value->data.size(), data, size);
}

uint32_t query_value_a(reg_handle_t key, const std::string& name, uint32_t* type, uint8_t* data,
                       uint32_t* size) {
  if (data != nullptr && size == nullptr) return kErrorInvalidParameter;
  std::u16string wide_name;
  uint32_t error = 0;
  if (!name.empty() &&
      !util::codepage::narrow_to_wide(util::codepage::kSystem, name, wide_name, error)) {
    return error;
  }
  uint32_t status = 0;
  const reg_file::value_t* value = find_value(key, wide_name, status);
  if (value == nullptr) return status;
  if (type != nullptr) *type = value->type;
  if (value->type != kRegSz && value->type != kRegExpandSz && value->type != kRegMultiSz) {
    return copy_out(value->data.data(), value->data.size(), data, size);
  }
  // A trailing odd byte is not part of any character and does not survive the conversion.
  const std::u16string wide = utf16le_text(value->data.data(), value->data.size() / 2);
  const std::string narrow = narrow_keeping_nuls(wide);
  return copy_out(reinterpret_cast<const uint8_t*>(narrow.data()), narrow.size(), data, size);
}

uint32_t query_subkey_count(reg_handle_t key, uint32_t& count) {
  const open_key_t* open = find_handle(key);
  if (open == nullptr) return kErrorInvalidHandle;
  count = static_cast<uint32_t>(open->key->subkeys.size());
  return kErrorSuccess;
}

uint32_t enum_key(reg_handle_t key, uint32_t index, char16_t* name, uint32_t& length) {
  const open_key_t* open = find_handle(key);
  if (open == nullptr) return kErrorInvalidHandle;
  if ((open->access & kKeyEnumerateSubKeys) == 0) return kErrorAccessDenied;
  if (index >= open->key->subkeys.size()) return kErrorNoMoreItems;
  const std::u16string& found = std::next(open->key->subkeys.begin(), index)->second->name;
  if (name == nullptr || found.size() + 1 > length) return kErrorMoreData;
  std::memcpy(name, found.data(), found.size() * sizeof(char16_t));
  name[found.size()] = u'\0';
  length = static_cast<uint32_t>(found.size());
  return kErrorSuccess;
}

}  // namespace win::reg_api
