// Stand-ins for the system calls behind impersonation and share connections, for tests that
// pin the rules built on them: each records what was asked and answers as it is told.
#pragma once
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/common_lib_ctx.h"
#include "common/win/impersonation_api.h"
#include "common/win/net_use_api.h"

namespace dsl_test {

class fake_impersonation_api_t : public win::impersonation_api_t {
 public:
  bool duplicate_token(win::win_handle_t::native_t token, win::win_handle_t& copy) override {
    ++duplicates;
    if (duplicate_fails) return false;
    // A value of its own, so that a test can tell the copy from the original; never closed,
    // since the host build closes nothing and the Windows build is given no real handle here.
    *copy.put() = reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(token) + 0x1000);
    return true;
  }
  bool impersonate_logged_on_user(win::win_handle_t::native_t token, uint32_t& error) override {
    ++impersonations;
    last_impersonated = token;
    if (impersonate_error != 0) {
      error = impersonate_error;
      return false;
    }
    return true;
  }
  void revert_to_self() override { ++reverts; }
  int32_t impersonate_security_context(const win::security_context_t& context) override {
    ++context_impersonations;
    last_context_lower = context.lower;
    return context_impersonate_status;
  }
  int32_t revert_security_context(const win::security_context_t&) override {
    ++context_reverts;
    return context_revert_status;
  }

  std::atomic<int> duplicates{0};
  std::atomic<int> impersonations{0};
  std::atomic<int> reverts{0};
  std::atomic<int> context_impersonations{0};
  std::atomic<int> context_reverts{0};
  std::atomic<void*> last_impersonated{nullptr};
  std::atomic<uintptr_t> last_context_lower{0};
  bool duplicate_fails = false;
  uint32_t impersonate_error = 0;
  int32_t context_impersonate_status = 0;
  int32_t context_revert_status = 0;
};

class fake_net_use_api_t : public win::net_use_api_t {
 public:
  uint32_t get_info(const std::u16string& share, win::net_use_info_t& info) override {
    std::lock_guard<std::mutex> guard(lock_);
    calls.push_back("get_info");
    if (get_info_error != 0) return get_info_error;
    const auto it = connections.find(share);
    if (it == connections.end()) return win::kNerrUseNotFound;
    info = it->second;
    return 0;
  }
  uint32_t add(const std::u16string& share, const std::u16string& domain,
               const std::u16string& user, const std::u16string& password) override {
    std::lock_guard<std::mutex> guard(lock_);
    calls.push_back("add");
    added_domain = domain;
    added_user = user;
    added_password = password;
    if (add_error != 0) return add_error;
    win::net_use_info_t info;
    info.remote = share;
    info.use_count = 1;
    connections[share] = info;
    return 0;
  }
  uint32_t del(const std::u16string& share) override {
    std::lock_guard<std::mutex> guard(lock_);
    calls.push_back("del");
    if (del_error != 0) return del_error;
    return connections.erase(share) != 0 ? 0 : win::kNerrUseNotFound;
  }

  std::vector<std::string> taken_calls() {
    std::lock_guard<std::mutex> guard(lock_);
    return calls;
  }

  std::mutex lock_;
  std::vector<std::string> calls;
  std::map<std::u16string, win::net_use_info_t> connections;
  std::u16string added_domain;
  std::u16string added_user;
  std::u16string added_password;
  uint32_t get_info_error = 0;
  uint32_t add_error = 0;
  uint32_t del_error = 0;
};

// Installs both stand-ins for the span of a test and takes out of the process-wide tables
// whatever the test put in.
class fake_platform_t {
 public:
  fake_platform_t()
      : api(std::make_shared<fake_impersonation_api_t>()),
        net(std::make_shared<fake_net_use_api_t>()) {
    win::set_impersonation_api(api);
    win::set_net_use_api(net);
  }
  ~fake_platform_t() {
    for (const auto& share : shares_) ctx()->impersonation_tokens().erase(share);
    for (const auto& id : contexts_) ctx()->impersonation_contexts().erase(id);
    win::set_impersonation_api(nullptr);
    win::set_net_use_api(nullptr);
  }

  void add_entry(const std::shared_ptr<win::impersonation_entry_t>& entry) {
    shares_.push_back(entry->share);
    ctx()->impersonation_tokens().insert(entry);
  }
  void add_context(const util::guid_t& id, std::shared_ptr<win::security_context_t> context) {
    contexts_.push_back(id);
    ctx()->impersonation_contexts().insert(id, std::move(context));
  }

  std::shared_ptr<fake_impersonation_api_t> api;
  std::shared_ptr<fake_net_use_api_t> net;

 private:
  std::vector<std::u16string> shares_;
  std::vector<util::guid_t> contexts_;
};

}  // namespace dsl_test
