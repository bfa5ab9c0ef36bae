// Reading the registry: win_reg_key_t owns one open key and reads its values; open_subkey opens
// one. Absence is an answer (an empty pointer, false, or the caller's default); every other
// failure is an exception of the exc family. Configuration, discovery and the log-file layer
// read the machine's settings through these. A key object belongs to one thread at a time.
#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/win/reg_api.h"

namespace win {

class win_reg_key_t {
 public:
  win_reg_key_t() = default;
  explicit win_reg_key_t(reg_handle_t handle) noexcept : handle_(handle) {}
  ~win_reg_key_t();
  win_reg_key_t(const win_reg_key_t&) = delete;
  win_reg_key_t& operator=(const win_reg_key_t&) = delete;
  win_reg_key_t(win_reg_key_t&& other) noexcept;
  win_reg_key_t& operator=(win_reg_key_t&& other) noexcept;

  // The address of the handle, for a system call to fill. On a key that already holds a handle
  // it fails with runtime_exc_t "operator& cannot be called because registry key already
  // initialized.", so that a handle is never overwritten and leaked.
  reg_handle_t* operator&();

  reg_handle_t handle() const noexcept { return handle_; }
  bool is_open() const noexcept { return handle_ != nullptr; }

  // Value readers. On a key that is not open each fails with runtime_exc_t "Registry key object
  // is not initialized."; a value of a type they do not accept fails with runtime_exc_t
  // "Unexpected registry type: [<number>]."; another failure of the system is a win_sys_exc_t
  // with its code. Every failure gets the context line "Cannot retrieve a registry value. Value
  // name: [<name>].". An empty name reads the key's default value. On false or failure the
  // out-parameter is not touched.
  //
  // Text is read defensively: the size is asked first and the buffer is one character larger and
  // zero-filled, so a value stored without its terminator still ends; the text stops at the first
  // terminator; a trailing odd byte is half a character and is dropped; a value that grows
  // between the two calls is asked again. REG_EXPAND_SZ text comes as stored, not expanded.

  // REG_SZ or REG_EXPAND_SZ, wide; false when the value is absent.
  [[nodiscard]] bool query_string(const std::u16string& name, std::u16string& text) const;
  // REG_DWORD; false when the value is absent. A shorter value reads zero-extended; a longer one
  // fails with the system's ERROR_MORE_DATA.
  [[nodiscard]] bool query_dword(const std::string& name, uint32_t& number) const;
  // REG_SZ or REG_EXPAND_SZ in the system code page; an absent value is a failure.
  void get_string(const std::string& name, std::string& text) const;
  // REG_DWORD; an absent value is a failure.
  uint32_t get_dword(const std::string& name) const;

  // Forms with a default, for settings: an absent value gives `default_value`, every other
  // failure passes on as above. A boolean is a REG_DWORD, non-zero being true.
  std::u16string value_or(const std::u16string& name, const std::u16string& default_value) const;
  uint32_t value_or(const std::string& name, uint32_t default_value) const;
  bool value_or(const std::string& name, bool default_value) const;
  // An int literal would be ambiguous between the number and the boolean form; it is a number.
  uint32_t value_or(const std::string& name, int default_value) const {
    return value_or(name, static_cast<uint32_t>(default_value));
  }
  // A narrow text default would quietly become the boolean form.
  void value_or(const std::string& name, const char* default_value) const = delete;

  // The names of the direct subkeys, in the order the registry enumerates them (by name without
  // regard to case). The count is asked once, then each name by index into a buffer of
  // `name_capacity` characters, terminator included, reset before every call. A failure of the
  // count throws win_sys_exc_t with `info_failure` and the code, a failure of any name (also the
  // end-of-list code when subkeys vanish in between) with `enum_failure` and the code. On a key
  // that is not open: runtime_exc_t "Registry key object is not initialized.".
  std::vector<std::u16string> subkey_names(
      const std::string& info_failure = "Failed to query registry key info.",
      const std::string& enum_failure = "Failed to enumerate registry subkeys.",
      uint32_t name_capacity = kMaxKeyNameLength + 1) const;

 private:
  void require_open() const;
  bool read_dword(const std::string& name, uint32_t& number, bool absent_is_failure) const;
  bool read_narrow(const std::string& name, std::string& text, bool absent_is_failure) const;

  reg_handle_t handle_ = nullptr;
};

using win_reg_key_ptr_t = std::shared_ptr<win_reg_key_t>;

// win_reg_key_t::subkey_names on a handle the caller keeps open and owns.
std::vector<std::u16string> subkey_names_of(reg_handle_t key, const std::string& info_failure,
                                            const std::string& enum_failure,
                                            uint32_t name_capacity);

// Opens `path` below `parent` (0: HKEY_LOCAL_MACHINE, the only root this library reads) with
// `access`, by default KEY_READ | KEY_WOW64_64KEY. A key that does not exist (Win32 2 or 3) gives
// an empty pointer and no exception; any other failure throws win_sys_exc_t "Failed to open
// subkey. Path: [<path>]." with the path in the system code page and the code.
[[nodiscard]] win_reg_key_ptr_t open_subkey(reg_handle_t parent, const std::u16string& path,
                                            uint32_t access = kKeyRead64);
// The same below an open key; a parent that is not open fails with "Registry key object is not
// initialized." rather than reading from the root.
[[nodiscard]] win_reg_key_ptr_t open_subkey(const win_reg_key_t& parent, const std::u16string& path,
                                            uint32_t access = kKeyRead64);

}  // namespace win
