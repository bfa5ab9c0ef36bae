#include "common/win/svc_manager.h"

#include <utility>

#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"

namespace win {

namespace {

constexpr char kCannotConnect[] = "Cannot connect to service control manager. Host: '%1'.";
constexpr char kHostText[] = "Host: '%1'.";
constexpr char kFailedToOpen[] = "Failed to open service '%1'. %2";
constexpr char kFailedToQuery[] = "Failed to query state of the service '%1'. %2";
constexpr char kNoManager[] = "Service control manager object is not initialized.";

// These two are thrown as bare text, not as members of the exc family; callers catch them as
// const char*.
constexpr const char* kBadArgumentName = "Bad argument: pszServiceName";
constexpr const char* kBadStateNotOpen = "Bad state: service not opened or created";

}  // namespace

win_scm_t::win_scm_t() {
  uint32_t status = 0;
  try {
    status = svc_api::open_manager(kScManagerAllAccess, handle_);
  } catch (const std::exception& e) {
    exc::rethrow_with_context(util::fmt_t::format(kCannotConnect, util::to_multibyte_safe(host_)),
                              e);
  }
  if (status != 0) {
    throw exc::win_sys_exc_t(kCannotConnect, util::to_multibyte_safe(host_), status);
  }
}

win_scm_t::~win_scm_t() {
  if (handle_ != nullptr) svc_api::close_handle(handle_);
}

std::string win_scm_t::host_text() const {
  if (is_local_) return std::string();
  return util::fmt_t::format(kHostText, util::to_multibyte_safe(host_));
}

win_svc_t::win_svc_t(std::shared_ptr<win_scm_t> scm) : scm_(std::move(scm)) {
  if (!scm_) throw exc::runtime_exc_t(kNoManager);
}

win_svc_t::~win_svc_t() {
  if (handle_ != nullptr) svc_api::close_handle(handle_);
}

void win_svc_t::open(const char16_t* name) {
  if (name == nullptr) throw kBadArgumentName;
  const std::u16string wanted(name);
  svc_handle_t opened = nullptr;
  const uint32_t status = svc_api::open_service(scm_->handle(), wanted, kGenericAll, opened);
  if (status != 0) {
    throw exc::win_sys_exc_t(kFailedToOpen, util::to_multibyte_safe(wanted), scm_->host_text(),
                             status);
  }
  if (handle_ != nullptr) svc_api::close_handle(handle_);
  handle_ = opened;
  name_ = wanted;
}

uint32_t win_svc_t::state() const {
  if (handle_ == nullptr) throw kBadStateNotOpen;
  uint32_t current = 0;
  const uint32_t status = svc_api::query_state(handle_, current);
  if (status != 0) {
    throw exc::win_sys_exc_t(kFailedToQuery, util::to_multibyte_safe(name_), scm_->host_text(),
                             status);
  }
  return current;
}

}  // namespace win
