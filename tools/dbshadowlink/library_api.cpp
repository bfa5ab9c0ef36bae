#include "library_api.h"

#include <algorithm>

#include "host_errors.h"
#include "utf.h"

namespace host {

wide_string_t to_wide(std::string_view utf8) {
  std::u16string wide;
  size_t bad_offset = 0;
  if (!utf8_to_utf16(utf8, wide, bad_offset)) {
    throw usage_error_t("text is not valid UTF-8 (byte " + std::to_string(bad_offset) + ")");
  }
  return wide_string_t(wide.begin(), wide.end());
}

std::string to_utf8(const DSL_WCHAR* text) {
  std::u16string wide;
  for (const DSL_WCHAR* p = text; *p != 0; ++p) wide.push_back(static_cast<char16_t>(*p));
  return utf16_to_utf8(wide);
}

library_api_t::library_api_t(std::unique_ptr<library_loader_t> library)
    : library_(std::move(library)),
      free_(reinterpret_cast<decltype(&OracleLibStrFree)>(library_->symbol("OracleLibStrFree"))) {}

void library_api_t::check_exports(const std::vector<std::string_view>& names) const {
  std::vector<std::string> missing;
  for (const auto name : names) {
    std::string symbol(name);
    if (library_->symbol(symbol.c_str()) != nullptr) continue;
    if (std::find(missing.begin(), missing.end(), symbol) == missing.end()) {
      missing.push_back(std::move(symbol));
    }
  }
  if (missing.empty()) return;
  std::string list;
  for (const auto& symbol : missing) list += (list.empty() ? "" : ", ") + symbol;
  throw library_error_t("the library '" + library_->path() + "' does not export " + list);
}

void* library_api_t::require(std::string_view name) const {
  const std::string symbol(name);
  void* address = library_->symbol(symbol.c_str());
  if (address == nullptr) {
    throw library_error_t("the library '" + library_->path() + "' does not export " + symbol);
  }
  return address;
}

void library_api_t::free_text(DSL_WCHAR* text) const {
  // Without OracleLibStrFree the host never gets this far: check_exports refuses the library.
  if (text != nullptr && free_ != nullptr) free_(text);
}

}  // namespace host
