// Entry points that reach the server for a connection: attach, logon, logoff, detach,
// start-up and shut-down.
#include "call.h"
#include "platform.h"

using namespace ocisim;

namespace {

std::string mode_text(ub4 mode) { return std::to_string(mode); }

// The service context's session, when it is a live session that has begun.
std::shared_ptr<session_handle_t> begun_session(const svcctx_handle_t& svc) {
  auto session = find<session_handle_t>(svc.session, OCI_HTYPE_SESSION);
  if (!session || !session->begun) return nullptr;
  return session;
}

}  // namespace

extern "C" sword OCIServerAttach(OCIServer* srvhp, OCIError* errhp, const OraText* dblink,
                                 sb4 dblink_len, ub4 mode) {
  call_t call("OCIServerAttach");
  call.handle("srv", srvhp);
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto server = find<server_handle_t>(srvhp, OCI_HTYPE_SERVER);
    if (!server) return call.invalid_handle();
    // A local connection: the instance is the one ORACLE_SID names, read now, as the client
    // reads it at attach time.
    const std::string sid = env_value("ORACLE_SID");
    const std::string home = env_value("ORACLE_HOME");
    call.arg("sid", sid).arg("home", home);
    const std::string link = dblink == nullptr || dblink_len <= 0
                                 ? std::string()
                                 : std::string(reinterpret_cast<const char*>(dblink),
                                               static_cast<std::size_t>(dblink_len));
    if (!link.empty()) {
      call.arg("dblink", link);
      return call.error(ora(12154));
    }
    if (server->attached) return call.error(ora(24309));
    server_attach(sid, home);
    server->attached = true;
    server->sid = sid;
    server->home = home;
    return call.ok();
  });
}

extern "C" sword OCIServerDetach(OCIServer* srvhp, OCIError* errhp, ub4 mode) {
  call_t call("OCIServerDetach");
  call.handle("srv", srvhp);
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto server = find<server_handle_t>(srvhp, OCI_HTYPE_SERVER);
    if (!server) return call.invalid_handle();
    if (!server->attached) return call.error(ora(3114));
    server->attached = false;
    server_detach(server->sid, server->home);
    return call.ok();
  });
}

extern "C" sword OCISessionBegin(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4 credt,
                                 ub4 mode) {
  call_t call("OCISessionBegin");
  call.handle("svc", svchp).handle("ses", usrhp);
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto svc = find<svcctx_handle_t>(svchp, OCI_HTYPE_SVCCTX);
    auto session = find<session_handle_t>(usrhp, OCI_HTYPE_SESSION);
    if (!svc || !session) return call.invalid_handle();
    const bool external = credt == OCI_CRED_EXT;
    call.arg("cred", external ? "EXT" : credt == OCI_CRED_RDBMS ? "RDBMS" : std::to_string(credt));
    if (!external) call.arg("user", session->user);
    call.arg("mode", mode_text(mode));
    auto server = find<server_handle_t>(svc->server, OCI_HTYPE_SERVER);
    if (!server || !server->attached) return call.error(ora(3114));
    if (credt != OCI_CRED_EXT && credt != OCI_CRED_RDBMS) return call.error(ora(24300));
    if (session->begun) return call.error(ora(24313));

    session_info_t info;
    info.sid = server->sid;
    info.home = server->home;
    credentials_t credentials;
    credentials.external = external;
    credentials.user = session->user;
    credentials.password = session->password;
    server_logon(info, credentials, mode);
    session->info = info;
    session->begun = true;
    if (info.idle && !info.prelim) {
      // The instance is down: the administrator is connected, to an idle instance.
      return call.error(ora(1034));
    }
    if (info.warning) return call.with_info(*info.warning);
    return call.ok();
  });
}

extern "C" sword OCISessionEnd(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4 mode) {
  call_t call("OCISessionEnd");
  call.handle("svc", svchp).handle("ses", usrhp);
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto svc = find<svcctx_handle_t>(svchp, OCI_HTYPE_SVCCTX);
    if (!svc) return call.invalid_handle();
    auto session = find<session_handle_t>(usrhp != nullptr ? static_cast<void*>(usrhp) : svc->session,
                                          OCI_HTYPE_SESSION);
    if (!session) return call.invalid_handle();
    if (!session->begun) return call.error(ora(1012));
    session->begun = false;
    server_logoff(session->info);
    return call.ok();
  });
}

extern "C" sword OCIDBStartup(OCISvcCtx* svchp, OCIError* errhp, OCIAdmin* admhp, ub4 mode,
                              ub4 flags) {
  call_t call("OCIDBStartup");
  call.handle("svc", svchp).arg("mode", mode_text(mode)).arg("flags", std::to_string(flags));
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto svc = find<svcctx_handle_t>(svchp, OCI_HTYPE_SVCCTX);
    if (!svc) return call.invalid_handle();
    if (admhp != nullptr && !find_handle(admhp, OCI_HTYPE_ADMIN)) return call.invalid_handle();
    auto session = begun_session(*svc);
    if (!session) return call.error(ora(1012));
    server_startup(session->info, mode, flags);
    return call.ok();
  });
}

extern "C" sword OCIDBShutdown(OCISvcCtx* svchp, OCIError* errhp, OCIAdmin* admhp, ub4 mode) {
  call_t call("OCIDBShutdown");
  call.handle("svc", svchp).arg("mode", mode_text(mode));
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto svc = find<svcctx_handle_t>(svchp, OCI_HTYPE_SVCCTX);
    if (!svc) return call.invalid_handle();
    if (admhp != nullptr && !find_handle(admhp, OCI_HTYPE_ADMIN)) return call.invalid_handle();
    auto session = begun_session(*svc);
    if (!session) return call.error(ora(1012));
    server_shutdown(session->info, mode);
    return call.ok();
  });
}
