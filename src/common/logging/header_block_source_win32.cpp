#include "common/logging/header_block.h"

#include <windows.h>

#include <vector>

#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"
#include "common/logging/header_block_os.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"

namespace logging {

namespace {

const char kPathFailed[] = "Fully-qualified path for the executable file cannot be retrieved.";
const char kSizeFailed[] = "Size of the version resource is unknown.";
const char kInfoFailed[] = "GetFileVersionInfo() function call has failed.";
const char kNoVersion[] = "Module version cannot be extracted from the version resource.";
const char kVersionFailed[] =
    "Cannot retrieve the version of the specified module. Module path: [%1].";

std::string read_version(const std::string& module_path, std::string& comments) {
  const std::u16string wide = util::from_utf8(module_path);
  const auto* path = reinterpret_cast<const wchar_t*>(wide.c_str());
  DWORD ignored = 0;
  const DWORD size = ::GetFileVersionInfoSizeW(path, &ignored);
  if (size == 0) throw exc::win_sys_exc_t(kSizeFailed, ::GetLastError());
  std::vector<BYTE> block(size);
  if (!::GetFileVersionInfoW(path, /*dwHandle=*/0, size, block.data())) {
    throw exc::win_sys_exc_t(kInfoFailed, ::GetLastError());
  }
  void* value = nullptr;
  UINT length = 0;
  if (!::VerQueryValueW(block.data(), L"\\", &value, &length) || value == nullptr ||
      length < sizeof(VS_FIXEDFILEINFO)) {
    throw exc::runtime_exc_t(kNoVersion);
  }
  const auto* fixed = static_cast<const VS_FIXEDFILEINFO*>(value);
  const std::string version = std::to_string(HIWORD(fixed->dwFileVersionMS)) + "." +
                              std::to_string(LOWORD(fixed->dwFileVersionMS)) + "." +
                              std::to_string(HIWORD(fixed->dwFileVersionLS)) + "." +
                              std::to_string(LOWORD(fixed->dwFileVersionLS));
  // A module without comments simply has none: no failure.
  value = nullptr;
  length = 0;
  if (::VerQueryValueW(block.data(), L"\\StringFileInfo\\040904B0\\Comments", &value, &length) &&
      value != nullptr && length > 0) {
    const auto* text = static_cast<const char16_t*>(value);
    std::u16string wide_comments(text, length);
    const size_t end = wide_comments.find(u'\0');
    if (end != std::u16string::npos) wide_comments.resize(end);
    comments = util::to_utf8(wide_comments);
  }
  return version;
}

class win32_header_source_t : public header_source_t {
 public:
  std::string module_path() const override {
    wchar_t buffer[MAX_PATH] = {};
    const DWORD length = ::GetModuleFileNameW(/*hModule=*/nullptr, buffer, MAX_PATH);
    if (length == 0) throw exc::win_sys_exc_t(kPathFailed, ::GetLastError());
    return util::to_utf8(std::u16string(reinterpret_cast<const char16_t*>(buffer), length));
  }

  std::string module_version(const std::string& module_path,
                             std::string& comments) const override {
    try {
      return read_version(module_path, comments);
    } catch (const std::exception& failure) {
      exc::rethrow_with_context(util::fmt_t::format(kVersionFailed, module_path), failure);
    }
  }

  std::string os_version() const override { return os::os_version_text(); }

  uint32_t process_id() const override { return ::GetCurrentProcessId(); }
};

}  // namespace

const header_source_t& platform_header_source() {
  static const win32_header_source_t source;
  return source;
}

}  // namespace logging
