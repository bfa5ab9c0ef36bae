#include "support/test_folder.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "common/text/convert.h"
#include "common/text/guid.h"

namespace dsl_test {

namespace fs = std::filesystem;

namespace {

fs::path native(const std::u16string& path) {
  return fs::path(std::wstring(reinterpret_cast<const wchar_t*>(path.c_str()), path.size()));
}

}  // namespace

test_folder_t::test_folder_t() {
  wchar_t temp[MAX_PATH + 1] = {};
  if (::GetTempPathW(MAX_PATH + 1, temp) == 0) throw std::runtime_error("GetTempPathW failed");
  std::u16string guid = util::guid_to_text(util::new_guid());
  guid = guid.substr(1, guid.size() - 2);
  base_ = std::u16string(reinterpret_cast<const char16_t*>(temp)) + u"dsl-win-files-" + guid +
          u"\\";
  fs::create_directories(native(base_));
}

test_folder_t::~test_folder_t() {
  std::error_code ignored;
  fs::remove_all(native(base_), ignored);
}

std::string test_folder_t::path8(const std::string& name) const {
  return util::to_utf8(base_) + name;
}

void test_folder_t::raw_write(const std::u16string& name, const std::string& bytes) const {
  const fs::path where = native(path(name));
  fs::create_directories(where.parent_path());
  std::ofstream out(where, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) throw std::runtime_error("raw_write failed");
}

std::string test_folder_t::raw_read(const std::u16string& name) const {
  std::ifstream in(native(path(name)), std::ios::binary);
  if (!in) throw std::runtime_error("raw_read failed");
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

bool test_folder_t::raw_exists(const std::u16string& name) const {
  return fs::exists(native(path(name)));
}

bool test_folder_t::raw_is_directory(const std::u16string& name) const {
  return fs::is_directory(native(path(name)));
}

void test_folder_t::raw_mkdir(const std::u16string& name) const {
  fs::create_directories(native(path(name)));
}

win::native_handle_t test_folder_t::raw_open_for_writing(const std::u16string& name) const {
  const std::u16string full = path(name);
  HANDLE h = ::CreateFileW(reinterpret_cast<const wchar_t*>(full.c_str()),
                           GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
  if (h == INVALID_HANDLE_VALUE) throw std::runtime_error("raw open failed");
  return reinterpret_cast<win::native_handle_t>(h);
}

bool raw_handle_is_open(win::native_handle_t handle) {
  DWORD flags = 0;
  return ::GetHandleInformation(reinterpret_cast<HANDLE>(handle), &flags) != FALSE;
}

bool running_under_wine() {
  HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
  return ntdll != nullptr && ::GetProcAddress(ntdll, "wine_get_version") != nullptr;
}

}  // namespace dsl_test
