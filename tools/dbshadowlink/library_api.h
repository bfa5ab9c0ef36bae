// The loaded library seen through its public header: typed exports found by name, and the
// texts the exports hand out, which go back through the library's own OracleLibStrFree.
// Main thread only.
#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "DbShadowLink.h"
#include "library_loader.h"

namespace host {

// Text in the library's code units (UTF-16 on every platform).
using wide_string_t = std::basic_string<DSL_WCHAR>;
static_assert(sizeof(DSL_WCHAR) == 2, "the library's text is UTF-16");

// UTF-8 that the parser has already checked, as the library's text.
wide_string_t to_wide(std::string_view utf8);
// A NUL-terminated text from the library, as UTF-8.
std::string to_utf8(const DSL_WCHAR* text);

class library_api_t {
 public:
  // Does not look at the exports yet: check_exports says which are missing.
  explicit library_api_t(std::unique_ptr<library_loader_t> library);

  // Throws library_error_t naming every export of `names` that the library lacks.
  void check_exports(const std::vector<std::string_view>& names) const;

  // The export `name`; throws library_error_t when the library has none of that name.
  void* require(std::string_view name) const;
  template <class Fn>
  Fn get(std::string_view name) const {
    return reinterpret_cast<Fn>(require(name));
  }
  void free_text(DSL_WCHAR* text) const;
  const std::string& path() const { return library_->path(); }

 private:
  std::unique_ptr<library_loader_t> library_;
  decltype(&OracleLibStrFree) free_ = nullptr;
};

// The export `name` of the header, typed by its declaration.
#define HOST_EXPORT(api, name) (api).get<decltype(&name)>(#name)

// One out text of one export call; released through the library when it goes.
class out_text_t {
 public:
  explicit out_text_t(const library_api_t& api) : api_(api) {}
  out_text_t(const out_text_t&) = delete;
  out_text_t& operator=(const out_text_t&) = delete;
  ~out_text_t() { api_.free_text(text_); }

  DSL_WCHAR** out() { return &text_; }
  bool is_set() const { return text_ != nullptr; }
  std::string utf8() const { return text_ == nullptr ? std::string() : to_utf8(text_); }

 private:
  const library_api_t& api_;
  DSL_WCHAR* text_ = nullptr;
};

}  // namespace host
