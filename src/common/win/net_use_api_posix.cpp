#include "common/win/net_use_api.h"

#include <map>
#include <mutex>

#include "common/text/compare.h"

namespace win {

namespace {

struct nocase_less_t {
  bool operator()(const std::u16string& a, const std::u16string& b) const {
    const size_t n = a.size() < b.size() ? a.size() : b.size();
    for (size_t i = 0; i < n; ++i) {
      const char16_t x = util::fold_case(a[i]);
      const char16_t y = util::fold_case(b[i]);
      if (x != y) return x < y;
    }
    return a.size() < b.size();
  }
};

// There is no client for shares on the host build. The table stands in for the system's, for
// the life of the process: a connection exists from its add to its delete, with a use count
// that grows with each add, and the share names compare without regard to case as Windows
// compares them. No network is touched and the credentials are not checked.
class posix_net_use_api_t : public net_use_api_t {
 public:
  uint32_t get_info(const std::u16string& share, net_use_info_t& info) override {
    std::lock_guard<std::mutex> guard(lock_);
    const auto it = uses_.find(share);
    if (it == uses_.end()) return kNerrUseNotFound;
    info = it->second;
    return 0;
  }

  uint32_t add(const std::u16string& share, const std::u16string&, const std::u16string&,
               const std::u16string&) override {
    std::lock_guard<std::mutex> guard(lock_);
    net_use_info_t& use = uses_[share];
    if (use.remote.empty()) use.remote = share;
    ++use.use_count;
    return 0;
  }

  uint32_t del(const std::u16string& share) override {
    std::lock_guard<std::mutex> guard(lock_);
    return uses_.erase(share) != 0 ? 0 : kNerrUseNotFound;
  }

 private:
  std::mutex lock_;
  std::map<std::u16string, net_use_info_t, nocase_less_t> uses_;
};

}  // namespace

std::shared_ptr<net_use_api_t> platform_net_use_api() {
  static auto* const api = new std::shared_ptr<net_use_api_t>(std::make_shared<posix_net_use_api_t>());
  return *api;
}

}  // namespace win
