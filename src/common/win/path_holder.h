// path_holder_t: a path kept in the form it was given (UTF-8 or UTF-16) and converted to the
// other form on first request, once, so that the error paths of the file layer do not pay for
// the conversion twice. Belongs to one operation or one open file: not for concurrent use.
#pragma once
#include <string>

namespace win {

class path_holder_t {
 public:
  path_holder_t() = default;
  path_holder_t(std::string narrow);      // UTF-8
  path_holder_t(const char* narrow);      // UTF-8
  path_holder_t(std::u16string wide);
  path_holder_t(const char16_t* wide);

  bool has_narrow() const { return has_narrow_; }
  bool has_wide() const { return has_wide_; }

  // The UTF-8 form, converted from the wide one with to_utf8 when it is missing. Throws
  // runtime_exc_t "Parameter is not available." when neither form is set.
  const std::string& narrow() const;
  // The UTF-16 form, converted from the narrow one with from_utf8 when it is missing. Same
  // failure.
  const std::u16string& wide() const;

  // For failure texts: the UTF-8 form, or an empty text when there is none.
  std::string narrow_or_empty() const;

 private:
  mutable bool has_narrow_ = false;
  mutable std::string narrow_;
  mutable bool has_wide_ = false;
  mutable std::u16string wide_;
};

}  // namespace win
