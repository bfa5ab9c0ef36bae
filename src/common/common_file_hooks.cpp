#include "common/common_file_hooks.h"

#include <memory>
#include <mutex>

#include "common/common_lib_ctx.h"
#include "common/monitoring/file_op_activity.h"
#include "common/monitoring/file_trace_config.h"
#include "common/monitoring/workload_monitor.h"
#include "common/security/files_access_permissions.h"
#include "common/win/file_hooks.h"
#include "common/win/impersonation.h"

namespace common {

namespace {

auto& counter_of(win::io_counter_t counter) {
  return counter == win::io_counter_t::read ? workload::read_counter() : workload::write_counter();
}

class common_file_hooks_t : public win::file_hooks_t {
 public:
  void check_access(const win::path_holder_t& path) override {
    ctx()->files_permissions()->check_access(path);
  }

  std::shared_ptr<void> scope_for_path(const win::path_holder_t& path) override {
    // The wide form looks a path up once; the narrow one only for paths that came narrow.
    auto session = (path.has_narrow() && !path.has_wide()) ? win::scope_for_path(path.narrow())
                                                            : win::scope_for_path(path.wide());
    if (!session.entered()) return {};
    return std::make_shared<win::win_impersonation_session_t>(std::move(session));
  }

  void file_op_enter() override { monitoring::file_op_enter(); }
  void file_op_leave() noexcept override { monitoring::file_op_leave(); }

  void counter_enter(win::io_counter_t counter) override {
    workload::counter_enter(counter_of(counter));
  }

  void counter_leave(win::io_counter_t counter, int64_t amount) override {
    workload::counter_leave(counter_of(counter), amount);
  }

  win::file_trace_flags_t trace_flags() override {
    const auto& t = monitoring::file_trace_config_t::instance();
    return {t.seek(), t.write(), t.read(), t.flush(), t.resize(), t.open_close()};
  }
};

}  // namespace

void install_file_hooks() {
  static std::once_flag once;
  std::call_once(once, [] { win::set_file_hooks(std::make_shared<common_file_hooks_t>()); });
}

bool file_hooks_installed() {
  return dynamic_cast<common_file_hooks_t*>(&win::file_hooks()) != nullptr;
}

namespace {

// Joins at load: an export that the agent calls before OracleVssInitLib, and that touches a
// file before anything else, must find the policy in force. Only a pointer is set here; what
// the hooks reach is made at its first use.
const bool g_joined_at_load = (install_file_hooks(), true);

}  // namespace

}  // namespace common
