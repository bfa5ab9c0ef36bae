// Asking the service control manager about one service: win_scm_t is a connection to the local
// manager, win_svc_t one opened service of it. Unlike the registry readers these report a
// service that cannot be opened as a win_sys_exc_t; the caller decides from its code
// (ERROR_SERVICE_DOES_NOT_EXIST, 1060, for a missing one) what that means.
// The objects belong to one thread at a time.
#pragma once
#include <cstdint>
#include <memory>
#include <string>

#include "common/win/svc_api.h"

namespace win {

class win_scm_t {
 public:
  // Connects to the local manager (OpenSCManagerW, SC_MANAGER_ALL_ACCESS). Failure: win_sys_exc_t
  // "Cannot connect to service control manager. Host: '<host>'.".
  win_scm_t();
  ~win_scm_t();
  win_scm_t(const win_scm_t&) = delete;
  win_scm_t& operator=(const win_scm_t&) = delete;

  // Empty for the local manager; otherwise "Host: '<host>'.". The failure texts of services end
  // with it, so for the local manager they end with a blank.
  std::string host_text() const;

  svc_handle_t handle() const noexcept { return handle_; }
  const std::u16string& host() const noexcept { return host_; }
  bool is_local() const noexcept { return is_local_; }

 private:
  svc_handle_t handle_ = nullptr;
  std::u16string host_ = u"localhost";
  bool is_local_ = true;
};

class win_svc_t {
 public:
  // The manager is shared so that it outlives the service. A null manager fails with
  // runtime_exc_t "Service control manager object is not initialized.".
  explicit win_svc_t(std::shared_ptr<win_scm_t> scm);
  ~win_svc_t();
  win_svc_t(const win_svc_t&) = delete;
  win_svc_t& operator=(const win_svc_t&) = delete;

  // Opens the service with GENERIC_ALL and keeps its name. A null name throws the plain text
  // "Bad argument: pszServiceName" (a const char*, outside the exc family). Failure:
  // win_sys_exc_t "Failed to open service '<name>'. <host text>". A service already open here is
  // closed once the new one is open.
  void open(const char16_t* name);
  void open(const std::u16string& name) { open(name.c_str()); }

  // dwCurrentState (kServiceStopped ... kServicePaused). Without an open service it throws the
  // plain text "Bad state: service not opened or created"; failure: win_sys_exc_t "Failed to
  // query state of the service '<name>'. <host text>".
  uint32_t state() const;

  svc_handle_t handle() const noexcept { return handle_; }
  const std::shared_ptr<win_scm_t>& scm() const noexcept { return scm_; }
  const std::u16string& name() const noexcept { return name_; }

 private:
  svc_handle_t handle_ = nullptr;
  std::shared_ptr<win_scm_t> scm_;
  std::u16string name_;
};

}  // namespace win
