#include "common/win/path_holder.h"

#include <utility>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"

namespace win {

namespace {
const char kNotAvailable[] = "Parameter is not available.";
}  // namespace

path_holder_t::path_holder_t(std::string narrow) : has_narrow_(true), narrow_(std::move(narrow)) {}

path_holder_t::path_holder_t(const char* narrow)
    : has_narrow_(narrow != nullptr), narrow_(narrow != nullptr ? narrow : "") {}

path_holder_t::path_holder_t(std::u16string wide) : has_wide_(true), wide_(std::move(wide)) {}

path_holder_t::path_holder_t(const char16_t* wide)
    : has_wide_(wide != nullptr), wide_(wide != nullptr ? wide : u"") {}

const std::string& path_holder_t::narrow() const {
  if (!has_narrow_) {
    if (!has_wide_) throw exc::runtime_exc_t(kNotAvailable);
    narrow_ = util::to_utf8(wide_);
    has_narrow_ = true;
  }
  return narrow_;
}

const std::u16string& path_holder_t::wide() const {
  if (!has_wide_) {
    if (!has_narrow_) throw exc::runtime_exc_t(kNotAvailable);
    wide_ = util::from_utf8(narrow_);
    has_wide_ = true;
  }
  return wide_;
}

std::string path_holder_t::narrow_or_empty() const {
  try {
    if (!has_narrow_ && !has_wide_) return std::string();
    return narrow();
  } catch (const std::exception&) {
    return std::string();
  }
}

}  // namespace win
