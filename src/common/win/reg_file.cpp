#include "common/win/reg_file.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

#include "common/exc/exc_base.h"
#include "common/text/compare.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "common/win/reg_api.h"

namespace win::reg_file {

// Names -------------------------------------------------------------------------------------

char16_t fold_name_char(char16_t c) {
  if (c >= u'A' && c <= u'Z') return static_cast<char16_t>(c + 0x20);
  if (c < 0xC0) return c;
  if (c <= 0xDE) return c == 0xD7 ? c : static_cast<char16_t>(c + 0x20);
  if (c < 0x100) return c;
  if (c < 0x180) {
    // Latin Extended-A pairs capital and small letter side by side; which of the two comes
    // first changes twice in the block. Dotted and dotless i, kra, n preceded by apostrophe and
    // long s have no partner beside them.
    if (c == 0x130 || c == 0x131 || c == 0x138 || c == 0x149 || c == 0x17F) return c;
    if (c == 0x178) return 0xFF;
    if ((c >= 0x139 && c <= 0x148) || (c >= 0x179 && c <= 0x17E)) {
      return (c % 2 == 1) ? static_cast<char16_t>(c + 1) : c;
    }
    return (c % 2 == 0) ? static_cast<char16_t>(c + 1) : c;
  }
  if (c >= 0x391 && c <= 0x3A9 && c != 0x3A2) return static_cast<char16_t>(c + 0x20);
  if (c >= 0x400 && c <= 0x40F) return static_cast<char16_t>(c + 0x50);
  if (c >= 0x410 && c <= 0x42F) return static_cast<char16_t>(c + 0x20);
  return c;
}

std::u16string fold_name(const std::u16string& name) {
  std::u16string folded(name);
  for (auto& c : folded) c = fold_name_char(c);
  return folded;
}

bool root_from_name(const std::u16string& name, root_t& out) {
  static const std::pair<const char16_t*, root_t> kRoots[] = {
      {u"HKEY_LOCAL_MACHINE", root_t::local_machine},
      {u"HKLM", root_t::local_machine},
      {u"HKEY_CURRENT_USER", root_t::current_user},
      {u"HKCU", root_t::current_user},
      {u"HKEY_CLASSES_ROOT", root_t::classes_root},
      {u"HKCR", root_t::classes_root},
      {u"HKEY_USERS", root_t::users},
      {u"HKU", root_t::users},
      {u"HKEY_CURRENT_CONFIG", root_t::current_config},
      {u"HKCC", root_t::current_config},
  };
  for (const auto& [text, root] : kRoots) {
    if (util::equals_nocase(name, text)) {
      out = root;
      return true;
    }
  }
  return false;
}

// The tree --------------------------------------------------------------------------------

const key_t* key_t::find_subkey(const std::u16string& name) const {
  const auto it = subkeys.find(fold_name(name));
  return it == subkeys.end() ? nullptr : it->second.get();
}

const value_t* key_t::find_value(const std::u16string& name) const {
  const std::u16string folded = fold_name(name);
  for (const auto& v : values) {
    if (fold_name(v.name) == folded) return &v;
  }
  return nullptr;
}

const key_t* key_t::find_path(const std::u16string& path) const {
  const key_t* key = this;
  size_t start = 0;
  while (key != nullptr && start < path.size()) {
    size_t end = path.find(u'\\', start);
    if (end == std::u16string::npos) end = path.size();
    if (end > start) key = key->find_subkey(path.substr(start, end - start));
    start = end + 1;
  }
  return key;
}

const key_t* tree_t::find(root_t root, const std::u16string& path) const {
  const auto it = roots.find(root);
  return it == roots.end() ? nullptr : it->second.find_path(path);
}

namespace {

// Failures ----------------------------------------------------------------------------------

[[noreturn]] void fail(const std::string& source, size_t line, const std::string& what) {
  throw exc::runtime_exc_t(util::fmt_t::format("Failed to parse registry file [%1], line %2: %3.",
                                               source, std::to_string(line), what));
}

// Text decoding -----------------------------------------------------------------------------

void append_code_point(std::u16string& out, char32_t cp) {
  if (cp < 0x10000) {
    out.push_back(static_cast<char16_t>(cp));
  } else {
    cp -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 | (cp >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 | (cp & 0x3FF)));
  }
}

// Strict UTF-8: nullopt for any ill-formed sequence, overlong form or surrogate.
std::optional<std::u16string> decode_utf8(const uint8_t* p, size_t n) {
  std::u16string out;
  out.reserve(n);
  size_t i = 0;
  while (i < n) {
    const uint8_t b = p[i];
    if (b < 0x80) {
      out.push_back(b);
      ++i;
      continue;
    }
    size_t extra = 0;
    char32_t cp = 0;
    char32_t min = 0;
    if ((b & 0xE0) == 0xC0) {
      extra = 1, cp = b & 0x1F, min = 0x80;
    } else if ((b & 0xF0) == 0xE0) {
      extra = 2, cp = b & 0x0F, min = 0x800;
    } else if ((b & 0xF8) == 0xF0) {
      extra = 3, cp = b & 0x07, min = 0x10000;
    } else {
      return std::nullopt;
    }
    if (i + extra >= n) return std::nullopt;
    for (size_t k = 1; k <= extra; ++k) {
      if ((p[i + k] & 0xC0) != 0x80) return std::nullopt;
      cp = (cp << 6) | (p[i + k] & 0x3F);
    }
    if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return std::nullopt;
    append_code_point(out, cp);
    i += extra + 1;
  }
  return out;
}

std::vector<uint8_t> utf16le_bytes(const std::u16string& text) {
  std::vector<uint8_t> bytes;
  bytes.reserve(text.size() * 2);
  for (char16_t c : text) {
    bytes.push_back(static_cast<uint8_t>(c & 0xFF));
    bytes.push_back(static_cast<uint8_t>(c >> 8));
  }
  return bytes;
}

// The file as lines of UTF-16 text, without line ends (CR LF, LF or CR).
std::vector<std::u16string> split_lines(const std::string& bytes, const std::string& source) {
  const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
  if (bytes.size() >= 2 && data[0] == 0xFE && data[1] == 0xFF) {
    fail(source, 1, "UTF-16 big-endian text is not supported");
  }
  std::vector<std::u16string> lines;
  if (bytes.size() >= 2 && data[0] == 0xFF && data[1] == 0xFE) {
    std::u16string current;
    const size_t units = (bytes.size() - 2) / 2;
    for (size_t i = 0; i < units; ++i) {
      const auto c = static_cast<char16_t>(data[2 + 2 * i] | (data[3 + 2 * i] << 8));
      const bool cr_before = i > 0 && data[2 * i] == '\r' && data[2 * i + 1] == 0;
      if (c == u'\n' && cr_before) continue;  // the second half of CR LF
      if (c == u'\r' || c == u'\n') {
        lines.push_back(std::move(current));
        current.clear();
      } else {
        current.push_back(c);
      }
    }
    lines.push_back(std::move(current));
    if (bytes.size() % 2 != 0)
      fail(source, lines.size(), "the UTF-16 text ends in half a character");
    return lines;
  }
  size_t start = 0;
  if (bytes.size() >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF) start = 3;
  size_t line_start = start;
  auto take = [&](size_t end) {
    auto decoded = decode_utf8(data + line_start, end - line_start);
    if (!decoded) fail(source, lines.size() + 1, "the text is not valid UTF-8");
    lines.push_back(std::move(*decoded));
  };
  for (size_t i = start; i < bytes.size(); ++i) {
    if (data[i] == '\r' || data[i] == '\n') {
      take(i);
      if (data[i] == '\r' && i + 1 < bytes.size() && data[i + 1] == '\n') ++i;
      line_start = i + 1;
    }
  }
  take(bytes.size());
  return lines;
}

// Lines -------------------------------------------------------------------------------------

bool is_blank(char16_t c) { return c == u' ' || c == u'\t'; }

std::u16string trim(const std::u16string& s) {
  size_t b = 0;
  size_t e = s.size();
  while (b < e && is_blank(s[b])) ++b;
  while (e > b && is_blank(s[e - 1])) --e;
  return s.substr(b, e - b);
}

// For error texts only.
std::string shown(const std::u16string& s) { return util::to_utf8(s); }

int hex_digit(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

// Reads "digits" of 1 to `max_digits` hexadecimal digits; nullopt otherwise.
std::optional<uint32_t> parse_hex_number(const std::u16string& digits, size_t max_digits) {
  if (digits.empty() || digits.size() > max_digits) return std::nullopt;
  uint32_t value = 0;
  for (char16_t c : digits) {
    const int d = hex_digit(c);
    if (d < 0) return std::nullopt;
    value = (value << 4) | static_cast<uint32_t>(d);
  }
  return value;
}

bool starts_with_nocase(const std::u16string& s, size_t pos, const std::u16string& word) {
  return s.size() >= pos + word.size() && util::equals_nocase(s.substr(pos, word.size()), word);
}

class parser_t {
 public:
  parser_t(const std::string& bytes, const std::string& source)
      : source_(source), lines_(split_lines(bytes, source)) {}

  tree_t run() {
    while (index_ < lines_.size()) {
      const size_t line_no = index_ + 1;
      const std::u16string line = trim(lines_[index_++]);
      if (!header_seen_) {
        if (line.empty()) continue;
        if (line == u"REGEDIT4") {
          narrow_hex_text_ = true;
        } else if (line != u"Windows Registry Editor Version 5.00") {
          fail(source_, line_no,
               "the file must begin with \"Windows Registry Editor Version 5.00\" or "
               "\"REGEDIT4\"");
        }
        header_seen_ = true;
        continue;
      }
      if (line.empty() || line[0] == u';') continue;
      if (line[0] == u'[') {
        key_line(line, line_no);
      } else if (line[0] == u'"' || line[0] == u'@') {
        value_line(line, line_no);
      } else {
        fail(source_, line_no,
             "expected a key in brackets, a value, a comment or an empty line, found [" +
                 shown(line) + "]");
      }
    }
    if (!header_seen_) {
      fail(source_, lines_.size(),
           "the file must begin with \"Windows Registry Editor Version 5.00\" or \"REGEDIT4\"");
    }
    return std::move(tree_);
  }

 private:
  void key_line(const std::u16string& line, size_t line_no) {
    if (line.back() != u']') fail(source_, line_no, "a key line must end with \"]\"");
    std::u16string path = line.substr(1, line.size() - 2);
    const bool deletion = !path.empty() && path[0] == u'-';
    if (deletion) path.erase(0, 1);
    std::vector<std::u16string> names;
    size_t start = 0;
    while (true) {
      size_t end = path.find(u'\\', start);
      if (end == std::u16string::npos) end = path.size();
      names.push_back(path.substr(start, end - start));
      if (end == path.size()) break;
      start = end + 1;
    }
    root_t root;
    if (!root_from_name(names[0], root)) {
      fail(source_, line_no, "unknown root key [" + shown(names[0]) + "]");
    }
    for (size_t i = 1; i < names.size(); ++i) {
      if (names[i].empty()) {
        fail(source_, line_no, "the key path [" + shown(path) + "] has an empty name in it");
      }
      if (names[i].size() > kMaxKeyNameLength) {
        fail(source_, line_no, "a key name is longer than 255 characters");
      }
    }
    key_t* key = &tree_.roots[root];
    if (deletion) {
      if (names.size() == 1) fail(source_, line_no, "a root key cannot be deleted");
      for (size_t i = 1; key != nullptr && i + 1 < names.size(); ++i) {
        const auto it = key->subkeys.find(fold_name(names[i]));
        key = it == key->subkeys.end() ? nullptr : it->second.get();
      }
      if (key != nullptr) key->subkeys.erase(fold_name(names.back()));
      current_ = nullptr;
      after_deletion_ = true;
      return;
    }
    for (size_t i = 1; i < names.size(); ++i) {
      auto& slot = key->subkeys[fold_name(names[i])];
      if (!slot) {
        slot = std::make_unique<key_t>();
        slot->name = names[i];
      }
      key = slot.get();
    }
    current_ = key;
    after_deletion_ = false;
  }

  // A quoted text starting at `pos` (on the quote); `pos` ends behind the closing quote.
  std::u16string quoted(const std::u16string& line, size_t& pos, size_t line_no, const char* what) {
    std::u16string text;
    ++pos;
    while (pos < line.size()) {
      const char16_t c = line[pos++];
      if (c == u'"') return text;
      if (c == u'\\') {
        if (pos >= line.size()) break;
        const char16_t next = line[pos++];
        if (next != u'\\' && next != u'"') {
          fail(source_, line_no,
               std::string("unknown escape \"\\") + shown(std::u16string(1, next)) + "\" in " +
                   what + " (only \\\\ and \\\" are known)");
        }
        text.push_back(next);
      } else {
        text.push_back(c);
      }
    }
    fail(source_, line_no, std::string(what) + " is not closed by a quote");
  }

  // After complete data only blanks and a ";" comment may follow.
  void expect_end(const std::u16string& line, size_t pos, size_t line_no) {
    while (pos < line.size() && is_blank(line[pos])) ++pos;
    if (pos < line.size() && line[pos] != u';') {
      fail(source_, line_no,
           "unexpected text after the value data: [" + shown(line.substr(pos)) + "]");
    }
  }

  void value_line(const std::u16string& line, size_t line_no) {
    size_t pos = 0;
    std::u16string name;
    if (line[0] == u'@') {
      pos = 1;
    } else {
      name = quoted(line, pos, line_no, "the value name");
    }
    while (pos < line.size() && is_blank(line[pos])) ++pos;
    if (pos >= line.size() || line[pos] != u'=') {
      fail(source_, line_no, "expected \"=\" after the value name");
    }
    ++pos;
    while (pos < line.size() && is_blank(line[pos])) ++pos;

    bool remove = false;
    value_t value;
    value.name = name;
    if (pos < line.size() && line[pos] == u'-') {
      remove = true;
      expect_end(line, pos + 1, line_no);
    } else if (pos < line.size() && line[pos] == u'"') {
      const std::u16string text = quoted(line, pos, line_no, "the text value");
      expect_end(line, pos, line_no);
      value.type = kRegSz;
      value.data = utf16le_bytes(text);
      value.data.push_back(0);
      value.data.push_back(0);
    } else if (starts_with_nocase(line, pos, u"dword:")) {
      pos += 6;
      size_t end = pos;
      while (end < line.size() && hex_digit(line[end]) >= 0) ++end;
      const auto number = parse_hex_number(line.substr(pos, end - pos), 8);
      if (!number) fail(source_, line_no, "a dword value needs 1 to 8 hexadecimal digits");
      expect_end(line, end, line_no);
      value.type = kRegDword;
      for (int i = 0; i < 4; ++i) value.data.push_back(static_cast<uint8_t>(*number >> (8 * i)));
    } else if (starts_with_nocase(line, pos, u"hex:")) {
      value.type = kRegBinary;
      value.data = hex_list(line.substr(pos + 4), line_no);
    } else if (starts_with_nocase(line, pos, u"hex(")) {
      const size_t close = line.find(u')', pos);
      const auto type = close == std::u16string::npos
                            ? std::nullopt
                            : parse_hex_number(line.substr(pos + 4, close - pos - 4), 8);
      if (!type || close + 1 >= line.size() || line[close + 1] != u':') {
        fail(source_, line_no, "a typed hex value is written hex(N): with N in hexadecimal");
      }
      value.type = *type;
      value.data = hex_list(line.substr(close + 2), line_no);
      if (narrow_hex_text_ &&
          (value.type == kRegSz || value.type == kRegExpandSz || value.type == kRegMultiSz)) {
        auto wide = decode_utf8(value.data.data(), value.data.size());
        if (!wide) fail(source_, line_no, "the text of the hex value is not valid UTF-8");
        value.data = utf16le_bytes(*wide);
      }
    } else {
      fail(source_, line_no, "unknown value data [" + shown(line.substr(pos)) + "]");
    }

    if (current_ == nullptr) {
      if (after_deletion_) return;
      fail(source_, line_no, "a value needs a key line above it");
    }
    const std::u16string folded = fold_name(name);
    for (auto it = current_->values.begin(); it != current_->values.end(); ++it) {
      if (fold_name(it->name) == folded) {
        if (remove) {
          current_->values.erase(it);
        } else {
          it->type = value.type;
          it->data = std::move(value.data);
        }
        return;
      }
    }
    if (!remove) current_->values.push_back(std::move(value));
  }

  // The bytes of a hex list that starts with `first` on line `line_no` and goes on over the
  // following lines while a line ends in a backslash.
  std::vector<uint8_t> hex_list(std::u16string segment, size_t line_no) {
    std::vector<uint8_t> bytes;
    while (true) {
      const size_t comment = segment.find(u';');
      if (comment != std::u16string::npos) segment.erase(comment);
      segment = trim(segment);
      bool continued = false;
      if (!segment.empty() && segment.back() == u'\\') {
        continued = true;
        segment.pop_back();
      }
      size_t start = 0;
      while (start < segment.size()) {
        size_t end = segment.find(u',', start);
        const bool last = end == std::u16string::npos;
        if (last) end = segment.size();
        const std::u16string item = trim(segment.substr(start, end - start));
        if (!(last && item.empty())) {
          const auto byte = parse_hex_number(item, 2);
          if (!byte) fail(source_, line_no, "bad hexadecimal byte [" + shown(item) + "]");
          bytes.push_back(static_cast<uint8_t>(*byte));
        }
        start = end + 1;
      }
      if (!continued) return bytes;
      if (index_ >= lines_.size()) {
        fail(source_, line_no, "the file ends inside a value continued by a backslash");
      }
      line_no = index_ + 1;
      segment = lines_[index_++];
    }
  }

  std::string source_;
  std::vector<std::u16string> lines_;
  size_t index_ = 0;
  bool header_seen_ = false;
  bool narrow_hex_text_ = false;
  bool after_deletion_ = false;
  key_t* current_ = nullptr;
  tree_t tree_;
};

}  // namespace

tree_t parse(const std::string& bytes, const std::string& source_name) {
  return parser_t(bytes, source_name).run();
}

tree_t load(const std::string& path) {
  const auto failure = [&path](const std::string& reason) {
    return exc::runtime_exc_t(
        util::fmt_t::format("Failed to read registry file [%1]: %2.", path, reason));
  };
  std::error_code error;
  const auto status = std::filesystem::status(path, error);
  if (status.type() == std::filesystem::file_type::not_found) return tree_t();
  if (error) throw failure(error.message());
  if (status.type() == std::filesystem::file_type::directory) throw failure("it is a folder");
  errno = 0;
  std::ifstream in(path, std::ios::binary);
  if (!in) throw failure(errno != 0 ? std::strerror(errno) : "the file cannot be opened");
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) throw failure(errno != 0 ? std::strerror(errno) : "the file cannot be read");
  return parse(bytes, path);
}

}  // namespace win::reg_file
