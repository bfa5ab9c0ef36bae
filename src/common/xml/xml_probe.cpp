#include "common/xml/xml_probe.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>
#include <vector>

namespace xml::detail {

namespace {

// Each step below copies the decision TinyXML 2.6.2 makes at the same place, including its
// quirks: a lead byte in UTF-8 mode swallows the bytes after it, an unquoted declaration
// attribute reads up to the first blank, an end tag matches by prefix. Where TinyXML stops on
// an error, so does the walk, since TinyXML never recurses past that point.

enum class encoding_t { unknown, utf8, legacy };

enum class kind_t { none, declaration, comment, cdata, unknown, element };

// TinyXML's table of sequence lengths by lead byte; anything not a valid lead counts as one.
int utf8_length(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return 2;
  if (lead >= 0xE0 && lead <= 0xEF) return 3;
  if (lead >= 0xF0 && lead <= 0xF4) return 4;
  return 1;
}

// The character classes come from the C library, as they do for TinyXML, so that both agree
// under whatever locale the host process has set.
bool is_white(char c) {
  return std::isspace(static_cast<unsigned char>(c)) || c == '\n' || c == '\r';
}
bool is_alpha(unsigned char b) { return b < 127 ? std::isalpha(b) != 0 : true; }
bool is_alnum(unsigned char b) { return b < 127 ? std::isalnum(b) != 0 : true; }

int to_lower(int v, encoding_t enc) {
  if (enc == encoding_t::utf8 && v >= 128) return v;
  return std::tolower(v);
}

bool string_equal(const char* p, const char* tag, bool ignore_case, encoding_t enc) {
  if (!p || !*p) return false;
  const char* q = p;
  if (ignore_case) {
    while (*q && *tag && to_lower(*q, enc) == to_lower(*tag, enc)) {
      ++q;
      ++tag;
    }
  } else {
    while (*q && *tag && *q == *tag) {
      ++q;
      ++tag;
    }
  }
  return *tag == 0;
}

class prober_t {
 public:
  prober_t(size_t max_depth, size_t max_attributes)
      : max_depth_(max_depth), max_attributes_(max_attributes) {}

  probe_result_t run(const char* p);

 private:
  const char* skip_white(const char* p) const;
  const char* read_name(const char* p, std::string_view* name) const;
  const char* get_entity(const char* p, std::string* out) const;
  const char* get_char(const char* p, std::string* out) const;
  const char* read_text(const char* p, bool trim, const char* end_tag, std::string* out) const;
  kind_t identify(const char* p) const;
  const char* attribute(const char* p, std::string_view* name, std::string* value) const;
  const char* declaration(const char* p, std::string* encoding) const;
  const char* comment(const char* p) const;
  const char* cdata(const char* p) const;
  const char* unknown(const char* p) const;
  const char* text(const char* p) const;
  const char* other(kind_t kind, const char* p) const;
  const char* start_tag(const char* p, std::string_view* name, bool* opened);
  const char* value(const char* p, bool* child) const;
  const char* end_tag(const char* p, std::string_view name) const;
  const char* element(const char* p);

  size_t max_depth_;
  size_t max_attributes_;
  encoding_t enc_ = encoding_t::unknown;
  probe_result_t result_;
  std::vector<std::string_view> open_;        // names of the elements open around the walk
  std::vector<std::string_view> attributes_;  // names of the current start tag's attributes
};

// TiXmlBase::SkipWhiteSpace; like it, answers null at the end of the text.
const char* prober_t::skip_white(const char* p) const {
  if (!p || !*p) return nullptr;
  if (enc_ == encoding_t::utf8) {
    while (*p) {
      const auto* u = reinterpret_cast<const unsigned char*>(p);
      // Byte-order marks and the two non-characters EF BF BE and EF BF BF count as blanks.
      if (u[0] == 0xEF && ((u[1] == 0xBB && u[2] == 0xBF) ||
                           (u[1] == 0xBF && (u[2] == 0xBE || u[2] == 0xBF)))) {
        p += 3;
        continue;
      }
      if (!is_white(*p)) break;
      ++p;
    }
  } else {
    while (*p && is_white(*p)) ++p;
  }
  return p;
}

const char* prober_t::read_name(const char* p, std::string_view* name) const {
  if (!p || !*p || !(is_alpha(static_cast<unsigned char>(*p)) || *p == '_')) return nullptr;
  const char* start = p;
  while (*p && (is_alnum(static_cast<unsigned char>(*p)) || *p == '_' || *p == '-' || *p == '.' ||
                *p == ':')) {
    ++p;
  }
  *name = std::string_view(start, static_cast<size_t>(p - start));
  return p;
}

// TiXmlBase::GetEntity. `out` is only ever asked for in the byte-wise encodings (it serves
// the declaration's encoding name), where a reference yields its code as a single byte.
const char* prober_t::get_entity(const char* p, std::string* out) const {
  if (p[1] && p[1] == '#' && p[2]) {
    unsigned long code = 0;
    unsigned long mult = 1;
    const char* q = nullptr;
    const bool hex = p[2] == 'x';
    if (hex) {
      if (!p[3]) return nullptr;
      q = std::strchr(p + 3, ';');
    } else {
      q = std::strchr(p + 2, ';');
    }
    if (!q || !*q) return nullptr;
    const char* const semicolon = q;
    --q;
    const char stop = hex ? 'x' : '#';
    while (*q != stop) {
      if (*q >= '0' && *q <= '9') {
        code += mult * static_cast<unsigned long>(*q - '0');
      } else if (hex && *q >= 'a' && *q <= 'f') {
        code += mult * static_cast<unsigned long>(*q - 'a' + 10);
      } else if (hex && *q >= 'A' && *q <= 'F') {
        code += mult * static_cast<unsigned long>(*q - 'A' + 10);
      } else {
        return nullptr;
      }
      mult *= hex ? 16 : 10;
      --q;
    }
    if (out) out->push_back(static_cast<char>(code));
    return semicolon + 1;
  }
  static const struct {
    const char* text;
    size_t length;
    char value;
  } kEntities[] = {{"&amp;", 5, '&'},
                   {"&lt;", 4, '<'},
                   {"&gt;", 4, '>'},
                   {"&quot;", 6, '"'},
                   {"&apos;", 6, '\''}};
  for (const auto& e : kEntities) {
    if (std::strncmp(e.text, p, e.length) == 0) {
      if (out) out->push_back(e.value);
      return p + e.length;
    }
  }
  // An unknown reference: TinyXML steps over the ampersand and keeps nothing of it.
  return p + 1;
}

const char* prober_t::get_char(const char* p, std::string* out) const {
  const int length = enc_ == encoding_t::utf8 ? utf8_length(static_cast<unsigned char>(*p)) : 1;
  if (length == 1) {
    if (*p == '&') return get_entity(p, out);
    if (out) out->push_back(*p);
    return p + 1;
  }
  // A whole sequence, whatever its bytes are: the padding keeps this inside the buffer.
  return p + length;
}

// TiXmlBase::ReadText with white space condensed, TinyXML's default, which the library never
// changes. Answers the place behind the end tag, or null when the text ends first.
const char* prober_t::read_text(const char* p, bool trim, const char* end_tag,
                                std::string* out) const {
  if (!trim) {
    while (p && *p && !string_equal(p, end_tag, false, enc_)) p = get_char(p, out);
  } else {
    p = skip_white(p);
    while (p && *p && !string_equal(p, end_tag, false, enc_)) {
      if (is_white(*p)) {
        ++p;
      } else {
        p = get_char(p, out);
      }
    }
  }
  if (p && *p) p += std::strlen(end_tag);
  return (p && *p) ? p : nullptr;
}

kind_t prober_t::identify(const char* p) const {
  p = skip_white(p);
  if (!p || *p != '<') return kind_t::none;
  if (string_equal(p, "<?xml", true, enc_)) return kind_t::declaration;
  if (string_equal(p, "<!--", false, enc_)) return kind_t::comment;
  if (string_equal(p, "<![CDATA[", false, enc_)) return kind_t::cdata;
  if (string_equal(p, "<!", false, enc_)) return kind_t::unknown;
  if (is_alpha(static_cast<unsigned char>(p[1])) || p[1] == '_') return kind_t::element;
  return kind_t::unknown;
}

// TiXmlAttribute::Parse.
const char* prober_t::attribute(const char* p, std::string_view* name, std::string* value) const {
  p = skip_white(p);
  if (!p) return nullptr;
  std::string_view ignored;
  p = read_name(p, name ? name : &ignored);
  if (!p || !*p) return nullptr;
  p = skip_white(p);
  if (!p || *p != '=') return nullptr;
  p = skip_white(p + 1);
  if (!p) return nullptr;
  if (value) value->clear();
  if (*p == '\'') return read_text(p + 1, false, "'", value);
  if (*p == '"') return read_text(p + 1, false, "\"", value);
  while (*p && !is_white(*p) && *p != '/' && *p != '>') {
    if (*p == '\'' || *p == '"') return nullptr;
    if (value) value->push_back(*p);
    ++p;
  }
  return p;
}

// TiXmlDeclaration::Parse; `encoding`, when given, receives its encoding attribute.
const char* prober_t::declaration(const char* p, std::string* encoding) const {
  p = skip_white(p);
  if (!p || !string_equal(p, "<?xml", true, enc_)) return nullptr;
  p += 5;
  while (p && *p) {
    if (*p == '>') return p + 1;
    p = skip_white(p);
    if (!p) break;
    if (string_equal(p, "version", true, enc_) || string_equal(p, "standalone", true, enc_)) {
      p = attribute(p, nullptr, nullptr);
    } else if (string_equal(p, "encoding", true, enc_)) {
      std::string read;
      p = attribute(p, nullptr, encoding ? &read : nullptr);
      if (encoding) *encoding = read;
    } else {
      while (*p && *p != '>' && !is_white(*p)) ++p;
    }
  }
  return nullptr;
}

const char* prober_t::comment(const char* p) const {
  p = skip_white(p);
  if (!string_equal(p, "<!--", false, enc_)) return nullptr;
  p += 4;
  while (*p && !string_equal(p, "-->", false, enc_)) ++p;
  if (*p) p += 3;
  return p;
}

const char* prober_t::cdata(const char* p) const {
  p += 9;  // "<![CDATA["
  while (*p && !string_equal(p, "]]>", false, enc_)) ++p;
  return read_text(p, false, "]]>", nullptr);
}

const char* prober_t::unknown(const char* p) const {
  p = skip_white(p);
  if (!p || *p != '<') return nullptr;
  ++p;
  while (*p && *p != '>') ++p;
  return *p == '>' ? p + 1 : p;
}

// TiXmlText::Parse outside CDATA: up to the next '<', which is left for the caller.
const char* prober_t::text(const char* p) const {
  p = read_text(p, true, "<", nullptr);
  return (p && *p) ? p - 1 : nullptr;
}

const char* prober_t::other(kind_t kind, const char* p) const {
  switch (kind) {
    case kind_t::declaration:
      return declaration(p, nullptr);
    case kind_t::comment:
      return comment(p);
    case kind_t::cdata:
      return cdata(p);
    default:
      return unknown(p);
  }
}

// TiXmlElement::Parse up to the end of the start tag. `opened` tells a tag closed by ">"
// (content follows) from an empty one closed by "/>".
const char* prober_t::start_tag(const char* p, std::string_view* name, bool* opened) {
  *opened = false;
  p = skip_white(p);
  if (!p || *p != '<') return nullptr;
  p = read_name(skip_white(p + 1), name);
  if (!p || !*p) return nullptr;
  attributes_.clear();
  while (p && *p) {
    p = skip_white(p);
    if (!p) return nullptr;
    if (*p == '/') {
      ++p;
      return *p == '>' ? p + 1 : nullptr;
    }
    if (*p == '>') {
      *opened = true;
      return p + 1;
    }
    std::string_view attribute_name;
    p = attribute(p, &attribute_name, nullptr);
    if (!p || !*p) return nullptr;
    if (std::find(attributes_.begin(), attributes_.end(), attribute_name) != attributes_.end()) {
      return nullptr;  // TinyXML refuses a repeated attribute
    }
    attributes_.push_back(attribute_name);
    result_.most_attributes = std::max(result_.most_attributes, attributes_.size());
    if (attributes_.size() > max_attributes_) {
      result_.stopped_at_limit = true;
      return nullptr;
    }
  }
  return p;
}

// TiXmlElement::ReadValue, up to the start of a child element (`child` set, the answer at
// its '<') or up to what should be the end tag. Null or the end of the text: TinyXML fails.
const char* prober_t::value(const char* p, bool* child) const {
  *child = false;
  p = skip_white(p);
  while (p && *p) {
    if (*p != '<') {
      p = text(p);
    } else if (string_equal(p, "</", false, enc_)) {
      return p;
    } else {
      const kind_t kind = identify(p);
      if (kind == kind_t::element) {
        *child = true;
        return p;
      }
      p = other(kind, p);
    }
    p = skip_white(p);
  }
  return p;
}

// The end tag: "</" and the name as a prefix, blanks, then ">".
const char* prober_t::end_tag(const char* p, std::string_view name) const {
  if (p[0] != '<' || p[1] != '/' || std::strncmp(p + 2, name.data(), name.size()) != 0) {
    return nullptr;
  }
  p = skip_white(p + 2 + name.size());
  return (p && *p == '>') ? p + 1 : nullptr;
}

// One top-level element and everything in it, with the open elements on a stack of our own
// where TinyXML uses the call stack.
const char* prober_t::element(const char* p) {
  open_.clear();
  for (;;) {
    const size_t level = open_.size() + 1;
    result_.depth = std::max(result_.depth, level);
    if (level > max_depth_) {
      result_.stopped_at_limit = true;
      return nullptr;
    }
    std::string_view name;
    bool opened = false;
    p = start_tag(p, &name, &opened);
    if (!p) return nullptr;
    if (opened) {
      open_.push_back(name);
    } else if (open_.empty()) {
      return p;
    }
    for (;;) {
      bool child = false;
      p = value(p, &child);
      if (child) break;
      if (!p || !*p) return nullptr;
      p = end_tag(p, open_.back());
      if (!p) return nullptr;
      open_.pop_back();
      if (open_.empty()) return p;
    }
  }
}

// TiXmlDocument::Parse with encoding 0.
probe_result_t prober_t::run(const char* p) {
  if (!p || !*p) return result_;
  const auto* u = reinterpret_cast<const unsigned char*>(p);
  if (u[0] == 0xEF && u[1] == 0xBB && u[2] == 0xBF) enc_ = encoding_t::utf8;
  p = skip_white(p);
  while (p && *p) {
    const kind_t kind = identify(p);
    if (kind == kind_t::none) break;
    if (kind == kind_t::element) {
      p = element(p);
    } else if (kind == kind_t::declaration && enc_ == encoding_t::unknown) {
      // The first declaration before the encoding is known decides it.
      std::string name;
      p = declaration(p, &name);
      name.resize(std::strlen(name.c_str()));
      if (name.empty() || string_equal(name.c_str(), "UTF-8", true, encoding_t::unknown) ||
          string_equal(name.c_str(), "UTF8", true, encoding_t::unknown)) {
        enc_ = encoding_t::utf8;
      } else {
        enc_ = encoding_t::legacy;
      }
    } else {
      p = other(kind, p);
    }
    if (result_.stopped_at_limit) break;
    p = skip_white(p);
  }
  return result_;
}

}  // namespace

std::string padded_copy(const std::string& text) {
  std::string copy(text.c_str());
  copy.append(kPadding, '\0');
  return copy;
}

probe_result_t probe_structure(const char* text, size_t max_depth, size_t max_attributes) {
  prober_t prober(max_depth, max_attributes);
  return prober.run(text);
}

}  // namespace xml::detail
