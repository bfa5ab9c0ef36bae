#include "common/win/path.h"

#include "common/text/compare.h"

namespace win {

namespace {

template <typename Char>
bool is_sep(Char c) {
  return c == Char('/') || c == Char('\\');
}

template <typename Char>
size_t last_sep(const std::basic_string<Char>& path) {
  const size_t slash = path.rfind(Char('/'));
  const size_t backslash = path.rfind(Char('\\'));
  if (slash == std::basic_string<Char>::npos) return backslash;
  if (backslash == std::basic_string<Char>::npos) return slash;
  return slash > backslash ? slash : backslash;
}

template <typename Char>
void split(const std::basic_string<Char>& path, std::basic_string<Char>& dir,
           std::basic_string<Char>& file) {
  const size_t pos = last_sep(path);
  if (pos == std::basic_string<Char>::npos) {
    dir.clear();
    file = path;
    return;
  }
  // Built before assigning, so that `path` may be one of the outputs.
  std::basic_string<Char> d = path.substr(0, pos);
  std::basic_string<Char> f = path.substr(pos + 1);
  dir = std::move(d);
  file = std::move(f);
}

template <typename Char>
std::basic_string<Char> separator_of(const std::basic_string<Char>& path) {
  return std::basic_string<Char>(1, path.find(Char('\\')) != std::basic_string<Char>::npos
                                        ? Char('\\')
                                        : Char('/'));
}

template <typename Char>
std::basic_string<Char> join(const std::basic_string<Char>& dir,
                             const std::basic_string<Char>& name,
                             const std::basic_string<Char>& separator) {
  if (dir.empty()) return name;
  if (is_sep(dir.back())) return dir + name;
  return dir + separator + name;
}

template <typename Char>
std::basic_string<Char> join_windows(const std::basic_string<Char>& dir,
                                     const std::basic_string<Char>& name) {
  std::basic_string<Char> result = join(dir, name, separator_of(dir));
  for (auto& c : result) {
    if (c == Char('/')) c = Char('\\');
  }
  return result;
}

template <typename Char>
std::basic_string<Char> strip_sep(const std::basic_string<Char>& path) {
  if (!path.empty() && is_sep(path.back())) return path.substr(0, path.size() - 1);
  return path;
}

template <typename Char>
Char upper(Char c) {
  return (c >= Char('a') && c <= Char('z')) ? Char(c - Char('a') + Char('A')) : c;
}

// `text` begins with `prefix`, letters compared without regard to case, and a "\" of the
// prefix matching only a "\" (or either separator when `any_sep`).
template <typename Char>
bool begins(const std::basic_string<Char>& text, const char* prefix, bool any_sep) {
  size_t i = 0;
  for (; prefix[i] != '\0'; ++i) {
    if (i >= text.size()) return false;
    const Char c = text[i];
    const char p = prefix[i];
    if (p == '\\') {
      if (any_sep ? !is_sep(c) : c != Char('\\')) return false;
    } else if (upper(c) != upper(Char(p))) {
      return false;
    }
  }
  return true;
}

template <typename Char>
bool network(const std::basic_string<Char>& path) {
  if (begins(path, "\\\\?\\UNC", false)) return true;
  return !begins(path, "\\\\?\\", false) && begins(path, "\\\\", false);
}

template <typename Char>
std::basic_string<Char> with_extension(const std::basic_string<Char>& path,
                                       std::basic_string<Char> extension) {
  if (!extension.empty() && extension.front() != Char('.')) extension.insert(0, 1, Char('.'));
  const size_t dot = path.rfind(Char('.'));
  if (dot == std::basic_string<Char>::npos) return path + extension;
  return path.substr(0, dot) + extension;
}

}  // namespace

size_t last_separator(const std::string& path) { return last_sep(path); }
size_t last_separator(const std::u16string& path) { return last_sep(path); }

void split_path(const std::string& path, std::string& dir, std::string& file) {
  split(path, dir, file);
}
void split_path(const std::u16string& path, std::u16string& dir, std::u16string& file) {
  split(path, dir, file);
}

std::string file_name(const std::string& path) {
  std::string dir, file;
  split(path, dir, file);
  return file;
}
std::u16string file_name(const std::u16string& path) {
  std::u16string dir, file;
  split(path, dir, file);
  return file;
}

std::string path_separator(const std::string& path) { return separator_of(path); }
std::u16string path_separator(const std::u16string& path) { return separator_of(path); }

std::string join_path(const std::string& dir, const std::string& name) {
  return join(dir, name, separator_of(dir));
}
std::u16string join_path(const std::u16string& dir, const std::u16string& name) {
  return join(dir, name, separator_of(dir));
}
std::string join_path(const std::string& dir, const std::string& name,
                      const std::string& separator) {
  return join(dir, name, separator);
}
std::u16string join_path(const std::u16string& dir, const std::u16string& name,
                         const std::u16string& separator) {
  return join(dir, name, separator);
}

std::string join_path_windows(const std::string& dir, const std::string& name) {
  return join_windows(dir, name);
}
std::u16string join_path_windows(const std::u16string& dir, const std::u16string& name) {
  return join_windows(dir, name);
}

std::string strip_trailing_separator(const std::string& path) { return strip_sep(path); }
std::u16string strip_trailing_separator(const std::u16string& path) { return strip_sep(path); }

bool is_network_path(const std::string& path) { return network(path); }
bool is_network_path(const std::u16string& path) { return network(path); }

std::string replace_extension(const std::string& path, const std::string& extension) {
  return with_extension(path, extension);
}
std::u16string replace_extension(const std::u16string& path, const std::u16string& extension) {
  return with_extension(path, extension);
}

std::vector<std::u16string> path_parts(const std::u16string& path) {
  std::vector<std::u16string> parts;
  std::u16string part;
  for (char16_t c : path) {
    if (is_sep(c)) {
      if (!part.empty()) parts.push_back(std::move(part));
      part.clear();
    } else {
      part += c;
    }
  }
  if (!part.empty()) parts.push_back(std::move(part));
  return parts;
}

int path_relation(const std::u16string& a, const std::u16string& b) {
  if (util::equals_nocase(a, b)) return kPathEqual;
  const auto pa = path_parts(a);
  const auto pb = path_parts(b);
  const size_t common = pa.size() < pb.size() ? pa.size() : pb.size();
  for (size_t i = 0; i < common; ++i) {
    if (!util::equals_nocase(pa[i], pb[i])) return kPathUnrelated;
  }
  if (pa.size() == pb.size()) return kPathEqual;
  return pa.size() > pb.size() ? kPathInside : kPathContains;
}

std::u16string existence_search_text(const std::u16string& path) {
  std::u16string text = strip_sep(path);
  if (begins(text, "\\\\", true) && path_parts(text).size() == 2) text += u"\\*";
  return text;
}

std::vector<std::u16string> directory_prefixes(const std::u16string& path) {
  std::vector<size_t> seps;
  for (size_t i = 0; i < path.size(); ++i) {
    if (is_sep(path[i])) seps.push_back(i);
  }
  // Index into `seps` of the first separator worth looking at.
  size_t first = 0;
  if (begins(path, "\\\\", true)) {
    if (begins(path, "\\\\?\\UNC\\", true)) {
      // The two leading ones, then "?", "UNC", the server and the share.
      first = 2 + 4;
    } else if (begins(path, "\\\\?\\", true)) {
      // The two leading ones and "?": the drive root that follows is looked at, as for a
      // drive path without the prefix.
      first = 2 + 1;
    } else {
      // The two leading ones, the server and the share.
      first = 2 + 2;
    }
  }
  std::vector<std::u16string> prefixes;
  for (size_t i = first; i < seps.size(); ++i) prefixes.push_back(path.substr(0, seps[i] + 1));
  return prefixes;
}

}  // namespace win
