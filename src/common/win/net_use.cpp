#include "common/win/net_use.h"

#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/compare.h"
#include "common/text/convert.h"
#include "common/text/numbers.h"
#include "common/win/net_use_api.h"

namespace win {

namespace {

const char kInfoFailed[] = "Failed to get information about connection to share '%1'";

std::string narrow(const std::u16string& text) { return util::to_multibyte_safe(text); }

}  // namespace

void net_use_report(const std::u16string& share) noexcept {
  try {
    net_use_info_t info;
    const uint32_t status = net_use_api()->get_info(share, info);
    const auto& channel = logging::default_channel();
    if (status == 0) {
      channel.info("Share: '%1', Status: '%2', RefCount: '%3', UseCount: '%4'.",
                   narrow(info.remote), util::to_str(info.status), util::to_str(info.ref_count),
                   util::to_str(info.use_count));
    } else if (status == kNerrUseNotFound) {
      channel.info("Connection to share '%1' not found.", narrow(share));
    } else {
      exc::log_error(channel, kInfoFailed, narrow(share), exc::win_sys_exc_t(status));
    }
  } catch (const std::exception&) {
    // A report is written on the way to or from the real work and must never stop it.
  }
}

bool net_use_exists(const std::u16string& share) {
  logging::log_step_t step(logging::default_channel(),
                           "Checking that NetUse connection to share '%1' is exist.",
                           narrow(share));
  net_use_info_t info;
  const uint32_t status = net_use_api()->get_info(share, info);
  if (status != 0 && status != kNerrUseNotFound) {
    throw exc::win_sys_exc_t(kInfoFailed, narrow(share), status);
  }
  step.ok();
  return status == 0;
}

void net_use_create(const std::u16string& share, const net_credentials_t& credentials) {
  logging::log_step_t step(logging::default_channel(), "Creating NetUse connection to share '%1'",
                           narrow(share));
  std::u16string domain;
  std::u16string name;
  split_net_user(credentials.user, domain, name);
  const uint32_t status = net_use_api()->add(share, domain, name, credentials.password);
  if (status != 0) {
    throw exc::win_sys_exc_t("Failed to create NetUse connection to share '%1'", narrow(share),
                             status);
  }
  step.ok();
}

void net_use_delete(const std::u16string& share) {
  logging::log_step_t step(logging::default_channel(), "Deleting NetUse connection to share '%1'.",
                           narrow(share));
  const uint32_t status = net_use_api()->del(share);
  if (status != 0) {
    throw exc::win_sys_exc_t("Failed to delete connection to share '%1'", narrow(share), status);
  }
  step.ok();
}

void split_net_user(const std::u16string& user, std::u16string& domain, std::u16string& name) {
  // split_at does not look at the last position, so "name\" keeps its backslash and counts as
  // a local user.
  if (util::split_at(user, u"\\", domain, name)) return;
  // One character put in as a count and a value: assigning the one-character literal here
  // makes GCC 12 warn of an overlapping copy that cannot happen (-Wrestrict, a known false
  // positive of its string inlining).
  domain.assign(1, u'.');
  name = user;
}

}  // namespace win
