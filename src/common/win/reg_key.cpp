#include "common/win/reg_key.h"

#include <algorithm>
#include <utility>

#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"

namespace win {

namespace {

constexpr char kNotInitialized[] = "Registry key object is not initialized.";
constexpr char kAlreadyInitialized[] =
    "operator& cannot be called because registry key already initialized.";
constexpr char kUnexpectedType[] = "Unexpected registry type: [%1].";
constexpr char kCannotRetrieve[] = "Cannot retrieve a registry value. Value name: [%1].";
constexpr char kFailedToOpen[] = "Failed to open subkey. Path: [%1].";

// A value that grows between the size probe and the read is asked again, this many times in all.
constexpr int kReadAttempts = 4;

bool is_absent(uint32_t status) {
  return status == kErrorFileNotFound || status == kErrorPathNotFound;
}

void require_text_type(uint32_t type) {
  if (type != kRegSz && type != kRegExpandSz) {
    throw exc::runtime_exc_t(kUnexpectedType, std::to_string(type));
  }
}

[[noreturn]] void rethrow_for_value(const std::string& name, const std::exception& caught) {
  exc::rethrow_with_context(util::fmt_t::format(kCannotRetrieve, name), caught);
}

}  // namespace

win_reg_key_t::~win_reg_key_t() {
  if (handle_ != nullptr) reg_api::close_key(handle_);
}

win_reg_key_t::win_reg_key_t(win_reg_key_t&& other) noexcept : handle_(other.handle_) {
  other.handle_ = nullptr;
}

win_reg_key_t& win_reg_key_t::operator=(win_reg_key_t&& other) noexcept {
  if (this != std::addressof(other)) {
    if (handle_ != nullptr) reg_api::close_key(handle_);
    handle_ = other.handle_;
    other.handle_ = nullptr;
  }
  return *this;
}

reg_handle_t* win_reg_key_t::operator&() {
  if (handle_ != nullptr) throw exc::runtime_exc_t(kAlreadyInitialized);
  return &handle_;
}

void win_reg_key_t::require_open() const {
  if (handle_ == nullptr) throw exc::runtime_exc_t(kNotInitialized);
}

bool win_reg_key_t::query_string(const std::u16string& name, std::u16string& text) const {
  try {
    require_open();
    for (int attempt = 1;; ++attempt) {
      uint32_t type = 0;
      uint32_t size = 0;
      uint32_t status = reg_api::query_value_w(handle_, name, &type, nullptr, &size);
      if (is_absent(status)) return false;
      if (status != kErrorSuccess) throw exc::win_sys_exc_t(status);
      require_text_type(type);
      // One wide character more than reported, zero-filled, so that the text always ends.
      std::vector<uint8_t> buffer(static_cast<size_t>(size) + sizeof(char16_t), 0);
      uint32_t received = size;
      status = reg_api::query_value_w(handle_, name, &type, buffer.data(), &received);
      if (status == kErrorMoreData && attempt < kReadAttempts) continue;
      if (is_absent(status)) return false;
      if (status != kErrorSuccess) throw exc::win_sys_exc_t(status);
      require_text_type(type);
      // A trailing odd byte is half a character and is left out.
      const size_t units = std::min(received, size) / sizeof(char16_t);
      std::u16string result = utf16le_text(buffer.data(), units);
      result.resize(std::min(result.find(u'\0'), result.size()));  // up to the first NUL
      text = std::move(result);
      return true;
    }
  } catch (const std::exception& e) {
    rethrow_for_value(util::to_multibyte_safe(name), e);
  }
}

bool win_reg_key_t::read_narrow(const std::string& name, std::string& text,
                                bool absent_is_failure) const {
  try {
    require_open();
    for (int attempt = 1;; ++attempt) {
      uint32_t type = 0;
      uint32_t size = 0;
      uint32_t status = reg_api::query_value_a(handle_, name, &type, nullptr, &size);
      if (is_absent(status) && !absent_is_failure) return false;
      if (status != kErrorSuccess) throw exc::win_sys_exc_t(status);
      require_text_type(type);
      std::vector<char> buffer(static_cast<size_t>(size) + 1, '\0');
      uint32_t received = size;
      status = reg_api::query_value_a(handle_, name, &type,
                                      reinterpret_cast<uint8_t*>(buffer.data()), &received);
      if (status == kErrorMoreData && attempt < kReadAttempts) continue;
      if (is_absent(status) && !absent_is_failure) return false;
      if (status != kErrorSuccess) throw exc::win_sys_exc_t(status);
      require_text_type(type);
      const auto end = std::find(buffer.begin(), buffer.begin() + std::min(received, size), '\0');
      text.assign(buffer.begin(), end);
      return true;
    }
  } catch (const std::exception& e) {
    rethrow_for_value(name, e);
  }
}

bool win_reg_key_t::read_dword(const std::string& name, uint32_t& number,
                               bool absent_is_failure) const {
  try {
    require_open();
    uint8_t bytes[4] = {0, 0, 0, 0};
    uint32_t type = 0;
    uint32_t size = sizeof(bytes);
    const uint32_t status = reg_api::query_value_a(handle_, name, &type, bytes, &size);
    if (is_absent(status) && !absent_is_failure) return false;
    if ((status == kErrorSuccess || status == kErrorMoreData) && type != kRegDword) {
      throw exc::runtime_exc_t(kUnexpectedType, std::to_string(type));
    }
    if (status != kErrorSuccess) throw exc::win_sys_exc_t(status);
    number = le_dword(bytes);
    return true;
  } catch (const std::exception& e) {
    rethrow_for_value(name, e);
  }
}

bool win_reg_key_t::query_dword(const std::string& name, uint32_t& number) const {
  return read_dword(name, number, /*absent_is_failure=*/false);
}

void win_reg_key_t::get_string(const std::string& name, std::string& text) const {
  read_narrow(name, text, /*absent_is_failure=*/true);
}

uint32_t win_reg_key_t::get_dword(const std::string& name) const {
  uint32_t number = 0;
  read_dword(name, number, /*absent_is_failure=*/true);
  return number;
}

std::u16string win_reg_key_t::value_or(const std::u16string& name,
                                       const std::u16string& default_value) const {
  std::u16string text;
  return query_string(name, text) ? text : default_value;
}

uint32_t win_reg_key_t::value_or(const std::string& name, uint32_t default_value) const {
  uint32_t number = 0;
  return query_dword(name, number) ? number : default_value;
}

bool win_reg_key_t::value_or(const std::string& name, bool default_value) const {
  uint32_t number = 0;
  return query_dword(name, number) ? number != 0 : default_value;
}

std::vector<std::u16string> win_reg_key_t::subkey_names(const std::string& info_failure,
                                                        const std::string& enum_failure,
                                                        uint32_t name_capacity) const {
  require_open();
  return subkey_names_of(handle_, info_failure, enum_failure, name_capacity);
}

std::vector<std::u16string> subkey_names_of(reg_handle_t key, const std::string& info_failure,
                                            const std::string& enum_failure,
                                            uint32_t name_capacity) {
  uint32_t count = 0;
  uint32_t status = reg_api::query_subkey_count(key, count);
  if (status != kErrorSuccess) throw exc::win_sys_exc_t(info_failure, status);
  std::vector<std::u16string> names;
  names.reserve(count);
  std::vector<char16_t> buffer(std::max<uint32_t>(name_capacity, 1), u'\0');
  for (uint32_t index = 0; index < count; ++index) {
    uint32_t length = name_capacity;
    status = reg_api::enum_key(key, index, buffer.data(), length);
    if (status != kErrorSuccess) throw exc::win_sys_exc_t(enum_failure, status);
    names.emplace_back(buffer.data(), length);
  }
  return names;
}

win_reg_key_ptr_t open_subkey(reg_handle_t parent, const std::u16string& path, uint32_t access) {
  auto key = std::make_shared<win_reg_key_t>();
  uint32_t status = kErrorSuccess;
  try {
    status = reg_api::open_key(parent, path, access, *&*key);
  } catch (const std::exception& e) {
    // The host build's store could not be read: that failure is the cause, the path the context.
    exc::rethrow_with_context(util::fmt_t::format(kFailedToOpen, util::to_multibyte_safe(path)), e);
  }
  if (status == kErrorSuccess) return key;
  if (is_absent(status)) return nullptr;
  throw exc::win_sys_exc_t(kFailedToOpen, util::to_multibyte_safe(path), status);
}

win_reg_key_ptr_t open_subkey(const win_reg_key_t& parent, const std::u16string& path,
                              uint32_t access) {
  if (!parent.is_open()) throw exc::runtime_exc_t(kNotInitialized);
  return open_subkey(parent.handle(), path, access);
}

}  // namespace win
