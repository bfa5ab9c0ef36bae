// The reader of .reg files against the system's own importer: for the forms in which both read
// a file alike (UTF-16LE files, and REGEDIT4 files of ASCII text), "reg import" must leave the
// registry holding exactly the keys, names, types and bytes the reader makes of the file.
// (Wine's importer reads a file without byte-order mark in the ANSI code page and then takes
// hex(2) and hex(7) bytes as narrow text even under the version 5 header; the fixtures written
// in UTF-8 are therefore put in place through the API, see reg_machine.h.)
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/text/convert.h"
#include "common/win/reg_file.h"
#include "support/reg_machine.h"

namespace {

LPCWSTR wide(const std::u16string& text) { return reinterpret_cast<LPCWSTR>(text.c_str()); }

DWORD run(const std::wstring& command_line) {
  std::wstring command = command_line;
  STARTUPINFOW startup{};
  startup.cb = sizeof(startup);
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(/*lpApplicationName=*/nullptr, command.data(), nullptr, nullptr,
                      /*bInheritHandles=*/FALSE, /*dwCreationFlags=*/0, nullptr, nullptr, &startup,
                      &process)) {
    return GetLastError();
  }
  WaitForSingleObject(process.hProcess, 60000);
  DWORD code = 1;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code;
}

void expect_same(HKEY root, const std::u16string& path, const win::reg_file::key_t& key) {
  HKEY handle = nullptr;
  ASSERT_EQ(RegOpenKeyExW(root, wide(path), 0, KEY_READ, &handle), ERROR_SUCCESS)
      << util::to_utf8(path);
  for (const auto& value : key.values) {
    DWORD type = 0;
    DWORD size = 0;
    ASSERT_EQ(RegQueryValueExW(handle, wide(value.name), nullptr, &type, nullptr, &size),
              ERROR_SUCCESS)
        << util::to_utf8(path) << " " << util::to_utf8(value.name);
    std::vector<uint8_t> data(size);
    ASSERT_EQ(RegQueryValueExW(handle, wide(value.name), nullptr, &type, data.data(), &size),
              ERROR_SUCCESS);
    data.resize(size);
    EXPECT_EQ(type, value.type) << util::to_utf8(value.name);
    EXPECT_EQ(data, value.data) << util::to_utf8(value.name);
  }
  DWORD values = 0;
  DWORD subkeys = 0;
  ASSERT_EQ(RegQueryInfoKeyW(handle, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values,
                             nullptr, nullptr, nullptr, nullptr),
            ERROR_SUCCESS);
  EXPECT_EQ(values, key.values.size()) << util::to_utf8(path);
  EXPECT_EQ(subkeys, key.subkeys.size()) << util::to_utf8(path);
  RegCloseKey(handle);
  for (const auto& [folded, child] : key.subkeys) {
    expect_same(root, path + u"\\" + child->name, *child);
  }
}

void check_import(const std::string& fixture, const std::u16string& machine_key) {
  const std::u16string machine = std::u16string(dsl_test::kTestArea) + u"\\" + machine_key;
  RegDeleteTreeW(HKEY_LOCAL_MACHINE, wide(machine));
  const std::string path = dsl_test::fixture_path(fixture);
  ASSERT_EQ(run(L"reg.exe import \"" + std::wstring(path.begin(), path.end()) + L"\""), 0u);
  const win::reg_file::tree_t tree = win::reg_file::load(path);
  const win::reg_file::key_t* expected = tree.find(win::reg_file::root_t::local_machine, machine);
  ASSERT_NE(expected, nullptr);
  expect_same(HKEY_LOCAL_MACHINE, machine, *expected);
  EXPECT_EQ(RegDeleteTreeW(HKEY_LOCAL_MACHINE, wide(machine)), ERROR_SUCCESS);
  RegDeleteKeyW(HKEY_LOCAL_MACHINE, wide(machine));
  RegDeleteKeyW(HKEY_LOCAL_MACHINE, wide(dsl_test::kTestArea));  // only when nothing else is left
}

TEST(RegImport, LeavesWhatTheReaderReadsInAUtf16File) {
  check_import("registry_wide_machine.reg", u"Wide Machine");
}

TEST(RegImport, LeavesWhatTheReaderReadsInARegedit4File) {
  check_import("registry_regedit4_machine.reg", u"Old Machine");
}

}  // namespace
