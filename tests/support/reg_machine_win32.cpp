#include <windows.h>
#include <sddl.h>
#include <winternl.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "common/text/convert.h"
#include "common/win/reg_file.h"
#include "support/reg_machine.h"

namespace dsl_test {

namespace {

using nt_set_value_key_t = NTSTATUS(NTAPI*)(HANDLE, PUNICODE_STRING, ULONG, ULONG, PVOID, ULONG);

LPCWSTR wide(const std::u16string& text) { return reinterpret_cast<LPCWSTR>(text.c_str()); }

std::u16string environment(const wchar_t* name) {
  wchar_t buffer[32768];
  const DWORD length = GetEnvironmentVariableW(name, buffer, 32768);
  if (length == 0 || length >= 32768) return std::u16string();
  return std::u16string(reinterpret_cast<const char16_t*>(buffer), length);
}

HKEY root_handle(win::reg_file::root_t root) {
  switch (root) {
    case win::reg_file::root_t::classes_root:
      return HKEY_CLASSES_ROOT;
    case win::reg_file::root_t::current_user:
      return HKEY_CURRENT_USER;
    case win::reg_file::root_t::local_machine:
      return HKEY_LOCAL_MACHINE;
    case win::reg_file::root_t::users:
      return HKEY_USERS;
    case win::reg_file::root_t::current_config:
      return HKEY_CURRENT_CONFIG;
  }
  return HKEY_LOCAL_MACHINE;
}

std::u16string join(const std::u16string& path, const std::u16string& name) {
  return path.empty() ? name : path + u"\\" + name;
}

bool key_exists(HKEY root, const std::u16string& path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, wide(path), /*ulOptions=*/0, KEY_READ, &key) != ERROR_SUCCESS) {
    return false;
  }
  RegCloseKey(key);
  return true;
}

void set_dacl(HKEY root, const std::u16string& path, const wchar_t* sddl) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, wide(path), /*ulOptions=*/0, WRITE_DAC, &key) != ERROR_SUCCESS) return;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1, &descriptor,
                                                           /*size=*/nullptr)) {
    RegSetKeySecurity(key, DACL_SECURITY_INFORMATION, descriptor);
    LocalFree(descriptor);
  }
  RegCloseKey(key);
}

// Removes a key and everything below it, also keys a test made read-only: each key is first
// given back to everyone, which its owner may always do.
void remove_key_tree(HKEY root, const std::u16string& path) {
  set_dacl(root, path, L"D:(A;;KA;;;WD)");
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, wide(path), /*ulOptions=*/0, KEY_READ, &key) != ERROR_SUCCESS) return;
  std::vector<std::u16string> children;
  wchar_t name[256];
  for (DWORD index = 0;; ++index) {
    DWORD length = 256;
    if (RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
        ERROR_SUCCESS) {
      break;
    }
    children.emplace_back(reinterpret_cast<const char16_t*>(name), length);
  }
  RegCloseKey(key);
  for (const auto& child : children) remove_key_tree(root, join(path, child));
  RegDeleteKeyW(root, wide(path));
}

}  // namespace

std::string fixture_path(const std::string& name) {
  std::u16string root = environment(L"DSL_SOURCE_DIR");
  if (root.empty()) root = u".";
  // ctest hands over the source folder as a host path; Wine shows the host's root as Z:.
  if (root[0] == u'/') root.insert(0, u"Z:");
  std::string path = util::to_multibyte(root) + "\\tests\\fixtures\\" + name;
  for (auto& c : path) c = (c == '/') ? '\\' : c;
  return path;
}

std::string scratch_folder(const std::string& name) {
  wchar_t temp[MAX_PATH + 1];
  const DWORD length = GetTempPathW(MAX_PATH + 1, temp);
  std::filesystem::path path(std::wstring(temp, length));
  path /= "dsl-" + name + "-" + std::to_string(GetCurrentProcessId());
  std::filesystem::remove_all(path);
  std::filesystem::create_directories(path);
  return path.string();
}

void remove_folder(const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

void write_file(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(out.good()) << path;
}

struct reg_machine_t::state_t {
  struct place_t {
    HKEY root;
    std::u16string path;
    std::u16string value;  // for values written into keys that were there before
  };
  std::vector<place_t> created_keys;
  std::vector<place_t> written_values;
  nt_set_value_key_t set_value = nullptr;

  void write_key(HKEY root, const std::u16string& path, const win::reg_file::key_t& key,
                 bool inside_created) {
    if (!inside_created && !key_exists(root, path)) {
      created_keys.push_back({root, path, {}});
      inside_created = true;
    }
    HKEY handle = nullptr;
    ASSERT_EQ(RegCreateKeyExW(root, wide(path), /*Reserved=*/0, /*lpClass=*/nullptr,
                              /*dwOptions=*/0, KEY_ALL_ACCESS, /*lpSecurityAttributes=*/nullptr,
                              &handle, /*lpdwDisposition=*/nullptr),
              ERROR_SUCCESS)
        << util::to_utf8(path);
    for (const auto& value : key.values) {
      std::u16string name = value.name;
      UNICODE_STRING nt_name;
      nt_name.Buffer = reinterpret_cast<PWSTR>(name.data());
      nt_name.Length = static_cast<USHORT>(name.size() * sizeof(wchar_t));
      nt_name.MaximumLength = nt_name.Length;
      std::vector<uint8_t> data = value.data;
      const NTSTATUS status =
          set_value(handle, &nt_name, /*TitleIndex=*/0, value.type,
                    data.empty() ? nullptr : data.data(), static_cast<ULONG>(data.size()));
      EXPECT_EQ(status, 0) << util::to_utf8(path) << " " << util::to_utf8(value.name);
      if (!inside_created) written_values.push_back({root, path, value.name});
    }
    RegCloseKey(handle);
    for (const auto& [folded, child] : key.subkeys) {
      write_key(root, join(path, child->name), *child, inside_created);
    }
  }
};

reg_machine_t::reg_machine_t(const std::string& reg_file_path) : state_(new state_t) {
  // Through the generic function pointer type, which any function pointer may be cast from.
  state_->set_value = reinterpret_cast<nt_set_value_key_t>(reinterpret_cast<void (*)()>(
      GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtSetValueKey")));
  if (state_->set_value == nullptr) {
    ADD_FAILURE() << "NtSetValueKey not found";
    return;
  }
  const win::reg_file::tree_t tree = win::reg_file::load(reg_file_path);
  if (const auto* area = tree.find(win::reg_file::root_t::local_machine, kTestArea)) {
    for (const auto& [folded, child] : area->subkeys) {
      remove_key_tree(HKEY_LOCAL_MACHINE, join(kTestArea, child->name));
    }
  }
  for (const auto& [root, key] : tree.roots) {
    EXPECT_TRUE(key.values.empty()) << "values on a root key are not supported here";
    for (const auto& [folded, child] : key.subkeys) {
      state_->write_key(root_handle(root), child->name, *child, /*inside_created=*/false);
    }
  }
}

reg_machine_t::~reg_machine_t() {
  for (auto it = state_->written_values.rbegin(); it != state_->written_values.rend(); ++it) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(it->root, wide(it->path), 0, KEY_SET_VALUE, &key) == ERROR_SUCCESS) {
      RegDeleteValueW(key, wide(it->value));
      RegCloseKey(key);
    }
  }
  for (auto it = state_->created_keys.rbegin(); it != state_->created_keys.rend(); ++it) {
    remove_key_tree(it->root, it->path);
  }
  delete state_;
}

void reg_machine_t::make_read_only(const std::u16string& path) {
  set_dacl(HKEY_LOCAL_MACHINE, path, L"D:P(A;;KR;;;WD)");
}

void reg_machine_t::make_unreadable(const std::u16string& path) {
  // A protected, empty access list: nobody may open the key, its owner excepted for WRITE_DAC,
  // so that the clean-up can still remove it.
  set_dacl(HKEY_LOCAL_MACHINE, path, L"D:P");
}

}  // namespace dsl_test
