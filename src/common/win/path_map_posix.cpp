#include "common/win/path_map_posix.h"

#include <sys/stat.h>

#include <cstdlib>
#include <vector>

#include "common/text/convert.h"
#include "common/win/case_cache_posix.h"

namespace win::host {

namespace {

bool is_sep(char16_t c) { return c == u'/' || c == u'\\'; }

char16_t upper(char16_t c) { return (c >= u'a' && c <= u'z') ? char16_t(c - u'a' + u'A') : c; }

bool is_letter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }

// `text` at `pos` begins with `word` (ASCII letters, no separators) without regard to case.
bool word_at(const std::u16string& text, size_t pos, const char* word) {
  for (size_t i = 0; word[i] != '\0'; ++i) {
    if (pos + i >= text.size() || upper(text[pos + i]) != upper(char16_t(word[i]))) return false;
  }
  return true;
}

enum class anchor_t { relative, drive, unc };

struct parsed_t {
  anchor_t anchor = anchor_t::relative;
  char drive = 'c';
  size_t rest = 0;  // where the parts below the anchor begin
};

parsed_t parse(const std::u16string& p) {
  parsed_t r;
  size_t pos = 0;
  const bool two_seps = p.size() >= 2 && is_sep(p[0]) && is_sep(p[1]);
  if (two_seps && p.size() >= 4 && (p[2] == u'?' || p[2] == u'.') && is_sep(p[3])) {
    pos = 4;  // the long-path or device prefix
    if (word_at(p, pos, "UNC") && (pos + 3 == p.size() || is_sep(p[pos + 3]))) {
      r.anchor = anchor_t::unc;
      r.rest = pos + 3;
      return r;
    }
  } else if (two_seps) {
    r.anchor = anchor_t::unc;
    r.rest = 2;
    return r;
  }
  if (pos + 1 < p.size() && is_letter(p[pos]) && p[pos + 1] == u':') {
    r.anchor = anchor_t::drive;
    const char16_t d = p[pos];
    r.drive = static_cast<char>(d >= u'A' && d <= u'Z' ? d - u'A' + u'a' : d);
    r.rest = pos + 2;
    return r;
  }
  if (pos > 0 || (!p.empty() && is_sep(p[0]))) {
    // Rooted without a drive, or a long prefix without one: the current drive, taken as C.
    r.anchor = anchor_t::drive;
    r.rest = pos;
    return r;
  }
  return r;
}

std::string join_root(const std::string& root, const char* folder) {
  std::string out = root;
  if (out.empty() || out.back() != '/') out += '/';
  out += folder;
  return out;
}

}  // namespace

std::string map_windows_path(const std::u16string& path, const std::string& root) {
  const parsed_t parsed = parse(path);
  std::vector<std::u16string> parts;
  std::u16string part;
  auto flush_part = [&]() {
    if (part.empty() || part == u".") {
      // nothing to add
    } else if (part == u".." && parsed.anchor != anchor_t::relative) {
      // Never above the drive; for a share never above the share, which Windows takes as the
      // root of the path (and, before the share is named, never above the server).
      if (!parts.empty() && !(parsed.anchor == anchor_t::unc && parts.size() <= 2)) {
        parts.pop_back();
      }
    } else {
      parts.push_back(part);
    }
    part.clear();
  };
  for (size_t i = parsed.rest; i < path.size(); ++i) {
    if (is_sep(path[i])) {
      flush_part();
    } else {
      part += path[i];
    }
  }
  flush_part();

  std::string out;
  switch (parsed.anchor) {
    case anchor_t::drive:
      out = join_root(root, std::string(1, parsed.drive).c_str());
      break;
    case anchor_t::unc:
      out = join_root(root, "unc");
      break;
    case anchor_t::relative:
      break;
  }
  for (const auto& p : parts) {
    if (!out.empty() && out.back() != '/') out += '/';
    out += util::to_utf8(p);
  }
  if (parsed.anchor == anchor_t::relative && out.empty() && !path.empty()) out = ".";
  if (!path.empty() && is_sep(path.back()) && !out.empty() && out.back() != '/') out += '/';
  return out;
}

std::string map_windows_path(const std::string& utf8_path, const std::string& root) {
  return map_windows_path(util::from_utf8(utf8_path), root);
}

std::string mapping_root() {
  const char* root = std::getenv("DBSHADOWLINK_ROOT");
  if (root != nullptr && *root != '\0') return root;
  const char* home = std::getenv("HOME");
  if (home != nullptr && *home != '\0') return std::string(home) + "/.dbshadowlink";
  return ".dbshadowlink";
}

std::string resolve_case(const std::string& mapped, size_t fixed_length) {
  struct stat st;
  if (::lstat(mapped.c_str(), &st) == 0 || fixed_length >= mapped.size()) return mapped;
  std::string out = mapped.substr(0, fixed_length);
  size_t pos = fixed_length;
  bool searching = true;
  while (pos < mapped.size()) {
    size_t end = mapped.find('/', pos);
    if (end == std::string::npos) end = mapped.size();
    const std::string part = mapped.substr(pos, end - pos);
    std::string chosen = part;
    if (searching && !part.empty()) {
      const std::string candidate = out + (out.empty() || out.back() == '/' ? "" : "/") + part;
      if (::lstat(candidate.c_str(), &st) != 0) {
        searching = false;
        // One hash probe in a cached listing of the folder, not a listing per lookup: see
        // case_cache_posix.cpp for how the cache stays true to the folder.
        const std::string dir_path = out.empty() ? "." : out;
        if (auto found = find_entry_nocase(dir_path, part)) {
          chosen = std::move(*found);
          searching = true;
        }
      }
    }
    if (!out.empty() && out.back() != '/') out += '/';
    out += chosen;
    pos = end;
    if (pos < mapped.size()) {
      ++pos;
      if (pos == mapped.size()) out += '/';
    }
  }
  return out;
}

std::string host_path(const std::u16string& path) {
  const std::string root = mapping_root();
  const std::string mapped = map_windows_path(path, root);
  // The root and its drive or "unc" folder are the host's own names: only below them does
  // case not matter.
  if (mapped.compare(0, root.size(), root) != 0) return mapped;
  const size_t anchor_end = mapped.find('/', root.size() + 1);
  if (anchor_end == std::string::npos) return mapped;
  return resolve_case(mapped, anchor_end + 1);
}

}  // namespace win::host
