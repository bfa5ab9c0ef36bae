#include "common/win/impersonation.h"

#include <utility>

#include "common/common_lib_ctx.h"
#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/convert.h"
#include "common/text/numbers.h"
#include "common/win/impersonation_api.h"
#include "common/win/impersonation_tables.h"
#include "common/win/net_use.h"
#include "common/win/path.h"

namespace win {

namespace {

const char kUnderImpersonation[] =
    "File operations for path '%1' will be performed under impersonation context.";

}  // namespace

win_impersonation_session_t::win_impersonation_session_t(
    std::shared_ptr<impersonation_entry_t> entry)
    : entry_(std::move(entry)) {
  if (entry_) enter();
}

win_impersonation_session_t::win_impersonation_session_t(
    win_impersonation_session_t&& other) noexcept
    : entry_(std::move(other.entry_)),
      duplicate_token_(std::move(other.duplicate_token_)),
      entered_(other.entered_) {
  other.entered_ = false;
}

win_impersonation_session_t::~win_impersonation_session_t() {
  if (!entry_ || !entered_) return;
  try {
    leave();
  } catch (const std::exception& e) {
    exc::log_warn(logging::default_channel(), e);
  }
}

void win_impersonation_session_t::enter() {
  try {
    const auto api = impersonation_api();
    switch (entry_->kind) {
      case kImpersonateToken: {
        if (!entry_->token || !entry_->token->valid()) return;
        auto copy = std::make_shared<win_handle_t>();
        // A token that cannot be duplicated leaves the thread as it is, without a word: the
        // operation then runs under the process's identity.
        if (!api->duplicate_token(entry_->token->get(), *copy)) return;
        duplicate_token_ = std::move(copy);
        uint32_t error = 0;
        if (!api->impersonate_logged_on_user(duplicate_token_->get(), error)) {
          const exc::win_sys_exc_t failure(error);
          exc::log_error(logging::default_channel(), "Failed to impersonate thread.", failure);
          throw failure;
        }
        break;
      }
      case kImpersonateSecurityContext: {
        if (is_null_guid(entry_->context_id)) return;
        const auto context = ctx()->impersonation_contexts().find(entry_->context_id);
        if (!context) {
          throw exc::runtime_exc_t("Context '%1' not found.",
                                   util::to_multibyte_safe(util::guid_to_text(entry_->context_id)));
        }
        logging::log_step_t step(logging::default_channel(), "Impersonating security context.");
        const int32_t status = api->impersonate_security_context(*context);
        if (status != 0) {
          throw exc::runtime_exc_t("Security context failed to impersonate: %1.",
                                   util::to_hex(status));
        }
        step.ok();
        break;
      }
      case kImpersonateNetUse: {
        if (!entry_->credentials) return;
        net_use_report(entry_->share);
        if (!net_use_exists(entry_->share)) net_use_create(entry_->share, *entry_->credentials);
        break;
      }
      default:
        // A kind this library does not know names no identity it could take.
        return;
    }
    entered_ = true;
    entry_->counter->enter();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to impersonate user.", e);
  }
}

void win_impersonation_session_t::leave() {
  // Sessions nest on a thread; only the one that ends the thread's last entry takes the
  // identity off, so that an inner operation does not strip the outer one of its rights.
  const auto api = impersonation_api();
  switch (entry_->kind) {
    case kImpersonateToken:
      if (entry_->counter->leave()) api->revert_to_self();
      break;
    case kImpersonateSecurityContext: {
      if (!entry_->counter->leave()) break;
      const auto context = ctx()->impersonation_contexts().find(entry_->context_id);
      if (!context) throw exc::runtime_exc_t("Security context is null.");
      logging::log_step_t step(logging::default_channel(), "Reverting security context.");
      const int32_t status = api->revert_security_context(*context);
      if (status != 0) {
        throw exc::runtime_exc_t("Security context failed to revert to self: %1.",
                                 util::to_hex(status));
      }
      step.ok();
      break;
    }
    case kImpersonateNetUse:
      if (!entry_->counter->leave()) break;
      net_use_report(entry_->share);
      net_use_delete(entry_->share);
      break;
    default:
      break;
  }
}

std::shared_ptr<impersonation_entry_t> find_entry(const std::u16string& path) {
  const std::u16string key = share_key(path);
  if (key.empty()) return nullptr;
  auto entry = ctx()->impersonation_tokens().find(key);
  if (entry) {
    logging::default_channel().info("Found impersonation context for share [%1].",
                                    util::to_multibyte_safe(key));
  } else {
    logging::default_channel().info("No impersonation context found for path [%1].",
                                    util::to_multibyte_safe(key));
  }
  return entry;
}

win_impersonation_session_t scope_for_path(const std::u16string& path) {
  if (!is_network_path(path)) return {};
  auto entry = find_entry(path);
  if (!entry) return {};
  logging::default_channel().info(kUnderImpersonation, util::to_multibyte_safe(path));
  return win_impersonation_session_t(std::move(entry));
}

win_impersonation_session_t scope_for_path(const std::string& path) {
  if (!is_network_path(path)) return {};
  std::shared_ptr<impersonation_entry_t> entry;
  // The caller may hold the path in the system code page or in UTF-8; the code page is tried
  // first, and UTF-8 whenever that finds nothing.
  bool converted = false;
  std::u16string wide;
  try {
    wide = util::to_unicode(path);
    converted = true;
  } catch (const std::exception& e) {
    exc::log_error(logging::default_channel(), e);
  }
  if (converted) entry = find_entry(wide);
  if (!entry) entry = find_entry(util::from_utf8(path));
  if (!entry) return {};
  logging::default_channel().info(kUnderImpersonation, path);
  return win_impersonation_session_t(std::move(entry));
}

}  // namespace win
