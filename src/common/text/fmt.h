// fmt_t: the "%1" placeholder formatter behind every message of the library.
//   "%N" with 1 <= N <= count is replaced by argument N; any other N stays visible as "%N"
//   (normalised: "%007" gives "%7"); a "%" not followed by a number is copied. The number is
//   read as strtol reads it, with 32-bit saturation as on Windows: leading blanks and one sign
//   are accepted, and every following digit belongs to it ("%10" is argument ten).
// Pure functions: safe from any thread.
#pragma once
#include <string>

namespace util {

class fmt_t {
 public:
  static std::string format(const std::string& tmpl, const std::string* args, size_t count);
  static std::u16string format(const std::u16string& tmpl, const std::u16string* args,
                               size_t count);

  // Narrow forms: one to four arguments.
  static std::string format(const std::string& tmpl, const std::string& a1);
  static std::string format(const std::string& tmpl, const std::string& a1,
                            const std::string& a2);
  static std::string format(const std::string& tmpl, const std::string& a1,
                            const std::string& a2, const std::string& a3);
  static std::string format(const std::string& tmpl, const std::string& a1,
                            const std::string& a2, const std::string& a3,
                            const std::string& a4);

  // Wide forms: one, two, three or seven arguments.
  static std::u16string format(const std::u16string& tmpl, const std::u16string& a1);
  static std::u16string format(const std::u16string& tmpl, const std::u16string& a1,
                               const std::u16string& a2);
  static std::u16string format(const std::u16string& tmpl, const std::u16string& a1,
                               const std::u16string& a2, const std::u16string& a3);
  static std::u16string format(const std::u16string& tmpl, const std::u16string& a1,
                               const std::u16string& a2, const std::u16string& a3,
                               const std::u16string& a4, const std::u16string& a5,
                               const std::u16string& a6, const std::u16string& a7);
};

}  // namespace util
