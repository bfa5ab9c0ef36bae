#include "common/win/impersonation_tables.h"

#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "common/exc/exc_log.h"
#include "common/logging/log_channel.h"

namespace win {

namespace {

std::vector<std::u16string> split_parts(const std::u16string& text) {
  // Every separator ends a part, so "a\\b" has an empty middle part: the rule counts parts as
  // the text shows them, without tidying.
  std::vector<std::u16string> parts;
  std::u16string part;
  for (char16_t c : text) {
    if (c == u'\\' || c == u'/') {
      parts.push_back(std::move(part));
      part.clear();
    } else {
      part.push_back(c);
    }
  }
  parts.push_back(std::move(part));
  return parts;
}

std::u16string make_key(const std::u16string& server, const std::u16string& share) {
  return u"\\\\" + server + u"\\" + share;
}

char16_t fold_ascii_lower(char16_t c) {
  return (c >= u'A' && c <= u'Z') ? static_cast<char16_t>(c + 0x20) : c;
}

std::array<uint8_t, 16> guid_bytes(const util::guid_t& g) {
  // The layout of a GUID in memory: the three leading fields little-endian, then data4.
  std::array<uint8_t, 16> b{};
  for (int i = 0; i < 4; ++i) b[i] = static_cast<uint8_t>(g.data1 >> (8 * i));
  for (int i = 0; i < 2; ++i) b[4 + i] = static_cast<uint8_t>(g.data2 >> (8 * i));
  for (int i = 0; i < 2; ++i) b[6 + i] = static_cast<uint8_t>(g.data3 >> (8 * i));
  for (int i = 0; i < 8; ++i) b[8 + i] = g.data4[i];
  return b;
}

}  // namespace

std::u16string share_key(const std::u16string& path) {
  if (path.size() < 2 || path[0] != u'\\' || path[1] != u'\\') return {};
  const std::vector<std::u16string> p = split_parts(path.substr(2));
  if (p.size() < 2) return {};
  if (p[0] != u"?") return make_key(p[0], p[1]);
  if (p[1] == u"UNC") return p.size() >= 4 ? make_key(p[2], p[3]) : std::u16string();
  return p.size() >= 3 ? make_key(p[1], p[2]) : std::u16string();
}

bool share_less_t::operator()(const std::u16string& a, const std::u16string& b) const {
  const size_t n = a.size() < b.size() ? a.size() : b.size();
  for (size_t i = 0; i < n; ++i) {
    const char16_t x = fold_ascii_lower(a[i]);
    const char16_t y = fold_ascii_lower(b[i]);
    if (x != y) return x < y;
  }
  return a.size() < b.size();
}

WinImpersonationTokensMap::~WinImpersonationTokensMap() {
  try {
    std::lock_guard<std::mutex> guard(lock_);
    entries_.clear();
  } catch (const std::exception& e) {
    exc::log_error(logging::default_channel(), "Failed to destroy WinImpersonationTokensMap", e);
  }
}

void WinImpersonationTokensMap::insert(std::shared_ptr<impersonation_entry_t> entry) {
  if (!entry) return;
  std::lock_guard<std::mutex> guard(lock_);
  const std::u16string key = entry->share;
  entries_[key] = std::move(entry);
}

bool WinImpersonationTokensMap::erase(const std::u16string& share) {
  std::lock_guard<std::mutex> guard(lock_);
  return entries_.erase(share) != 0;
}

std::shared_ptr<impersonation_entry_t> WinImpersonationTokensMap::find(
    const std::u16string& share) const {
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = entries_.find(share);
  return it != entries_.end() ? it->second : nullptr;
}

size_t WinImpersonationTokensMap::size() const {
  std::lock_guard<std::mutex> guard(lock_);
  return entries_.size();
}

bool guid_less_t::operator()(const util::guid_t& a, const util::guid_t& b) const {
  const auto x = guid_bytes(a);
  const auto y = guid_bytes(b);
  return std::memcmp(x.data(), y.data(), x.size()) < 0;
}

bool is_null_guid(const util::guid_t& guid) {
  for (uint8_t b : guid_bytes(guid)) {
    if (b != 0) return false;
  }
  return true;
}

void impersonation_contexts_t::insert(const util::guid_t& id,
                                      std::shared_ptr<security_context_t> context) {
  std::lock_guard<std::mutex> guard(lock_);
  contexts_[id] = std::move(context);
}

bool impersonation_contexts_t::erase(const util::guid_t& id) {
  std::lock_guard<std::mutex> guard(lock_);
  return contexts_.erase(id) != 0;
}

std::shared_ptr<security_context_t> impersonation_contexts_t::find(const util::guid_t& id) const {
  std::lock_guard<std::mutex> guard(lock_);
  const auto it = contexts_.find(id);
  return it != contexts_.end() ? it->second : nullptr;
}

size_t impersonation_contexts_t::size() const {
  std::lock_guard<std::mutex> guard(lock_);
  return contexts_.size();
}

}  // namespace win
