#include "common/text/fmt.h"

#include "common/text/numbers.h"

namespace util {

namespace {

template <typename Char>
std::basic_string<Char> apply(const std::basic_string<Char>& tmpl,
                              const std::basic_string<Char>* args, size_t count) {
  std::basic_string<Char> out;
  out.reserve(tmpl.size() + 16 * count);
  size_t i = 0;
  while (i < tmpl.size()) {
    const Char c = tmpl[i];
    if (c != '%') {
      out.push_back(c);
      ++i;
      continue;
    }
    int32_t n = 0;
    size_t end = 0;
    if (!parse_long(tmpl, i + 1, n, end)) {
      out.push_back('%');
      ++i;
      continue;
    }
    if (n >= 1 && static_cast<size_t>(n) <= count) {
      out += args[n - 1];
    } else {
      // Keep the unfilled placeholder visible, in its normalised form.
      out.push_back('%');
      const std::string digits = to_str(n);
      out.append(digits.begin(), digits.end());
    }
    i = end;
  }
  return out;
}

}  // namespace

std::string fmt_t::format(const std::string& tmpl, const std::string* args, size_t count) {
  return apply(tmpl, args, count);
}

std::u16string fmt_t::format(const std::u16string& tmpl, const std::u16string* args,
                             size_t count) {
  return apply(tmpl, args, count);
}

std::string fmt_t::format(const std::string& tmpl, const std::string& a1) {
  const std::string args[] = {a1};
  return apply(tmpl, args, 1);
}

std::string fmt_t::format(const std::string& tmpl, const std::string& a1, const std::string& a2) {
  const std::string args[] = {a1, a2};
  return apply(tmpl, args, 2);
}

std::string fmt_t::format(const std::string& tmpl, const std::string& a1, const std::string& a2,
                          const std::string& a3) {
  const std::string args[] = {a1, a2, a3};
  return apply(tmpl, args, 3);
}

std::string fmt_t::format(const std::string& tmpl, const std::string& a1, const std::string& a2,
                          const std::string& a3, const std::string& a4) {
  const std::string args[] = {a1, a2, a3, a4};
  return apply(tmpl, args, 4);
}

std::u16string fmt_t::format(const std::u16string& tmpl, const std::u16string& a1) {
  const std::u16string args[] = {a1};
  return apply(tmpl, args, 1);
}

std::u16string fmt_t::format(const std::u16string& tmpl, const std::u16string& a1,
                             const std::u16string& a2) {
  const std::u16string args[] = {a1, a2};
  return apply(tmpl, args, 2);
}

std::u16string fmt_t::format(const std::u16string& tmpl, const std::u16string& a1,
                             const std::u16string& a2, const std::u16string& a3) {
  const std::u16string args[] = {a1, a2, a3};
  return apply(tmpl, args, 3);
}

std::u16string fmt_t::format(const std::u16string& tmpl, const std::u16string& a1,
                             const std::u16string& a2, const std::u16string& a3,
                             const std::u16string& a4, const std::u16string& a5,
                             const std::u16string& a6, const std::u16string& a7) {
  const std::u16string args[] = {a1, a2, a3, a4, a5, a6, a7};
  return apply(tmpl, args, 7);
}

}  // namespace util
