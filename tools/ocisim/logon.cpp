// Attach and logon of the simulated server: which instance a local connection reaches, and
// who may log on to it (operating-system authentication, SYSDBA, ordinary accounts).
#include "faults.h"
#include "machine.h"
#include "oracle/client/oci_api.h"
#include "server.h"
#include "server_state.h"
#include "views.h"

namespace ocisim {

namespace {

const node_t* find_account(const node_t& instance, const std::string& user) {
  for (const node_t* account : instance.all("account")) {
    if (upper(account->get("user")) == user) return account;
  }
  return nullptr;
}

bool yes(const node_t& node, const char* attribute) {
  const std::string value = lower(node.get(attribute));
  return value == "yes" || value == "true" || value == "1";
}

// Who the logon is, or the error Oracle gives for it.
void authenticate(const node_t& instance, session_info_t& session, const credentials_t& credentials) {
  const bool administrative = session.sysdba || session.sysoper;
  // os_logon: "sysdba" (the default: the OS user is in the DBA group), "all" (also an
  // externally identified ordinary account), "none".
  const std::string os_logon = lower(instance.get("os_logon", "sysdba"));
  const bool os_dba = os_logon == "sysdba" || os_logon == "all";
  if (credentials.external) {
    if (administrative) {
      if (!os_dba) throw ora(1031);
      session.user = "SYS";
      session.dba = true;
      return;
    }
    if (os_logon != "all") throw ora(1017);
    session.user = upper(instance.get("os_user", "OPS$ORACLE"));
    return;
  }
  const std::string user = upper(credentials.user);
  if (user.empty()) throw ora(1017);
  if (credentials.password.empty()) throw ora(1005);
  const node_t* account = find_account(instance, user);
  const bool password_ok = account != nullptr && account->get("password") == credentials.password;
  if (administrative) {
    // A local administrative logon by a member of the DBA group is let in on the group
    // alone, whatever name and password it gives, as with Windows native authentication.
    if (!os_dba) {
      if (!password_ok) throw ora(1017);
      if (!(session.sysdba ? yes(*account, "sysdba") : yes(*account, "sysoper") || yes(*account, "sysdba"))) {
        throw ora(1031);
      }
    }
    session.user = "SYS";
    session.dba = true;
    return;
  }
  if (!password_ok) throw ora(1017);
  if (yes(*account, "locked")) throw ora(28000);
  if (user == "SYS") throw ora(28009);
  session.user = user;
  session.dba = yes(*account, "dba");
  // A password in its grace period lets the logon in with a warning.
  const std::string expires = account->get("password_expires_in");
  if (!expires.empty()) session.warning = std::make_shared<ora_error_t>(ora(28002, {expires}));
}

}  // namespace

void server_attach(const std::string& sid, const std::string& home) {
  {
    // A SID that names no instance, or the instance of a stopped service, leaves the local
    // adapter nothing to talk to.
    machine_t machine;
    const node_t* instance = machine.find_instance(sid, home);
    if (instance == nullptr || lower(instance->get("service", "running")) != "running") {
      throw ora(12560);
    }
  }
  carry_out(take_fault(sid, home, "attach"), "OCIServerAttach");
}

void server_logon(session_info_t& session, const credentials_t& credentials, std::uint32_t mode) {
  carry_out(take_fault(session.sid, session.home, "logon"), "OCISessionBegin");
  machine_t machine;
  const node_t& instance = session_instance(machine, session);
  if ((mode & ~(OCI_SYSDBA | OCI_SYSOPER | OCI_PRELIM_AUTH)) != 0) throw ora(24300);
  session.sysdba = (mode & OCI_SYSDBA) != 0;
  session.sysoper = (mode & OCI_SYSOPER) != 0;
  session.prelim = (mode & OCI_PRELIM_AUTH) != 0;
  // A preliminary connection exists only to start or stop an instance.
  if (session.prelim && !session.sysdba && !session.sysoper) throw ora(1031);
  // A started or mounted database has no open dictionary to check an ordinary account
  // against: only an administrator gets in, whatever name and password the others give.
  const level_t level = instance_level(instance);
  if (!session.sysdba && !session.sysoper && !is_asm(instance) &&
      (level == level_t::started || level == level_t::mounted)) {
    throw ora(1033);
  }
  authenticate(instance, session, credentials);
  if (instance_level(instance) == level_t::down) {
    // Only an administrator reaches a stopped instance; the session stands, but it is idle.
    if (!session.sysdba && !session.sysoper) throw ora(1034);
    session.idle = true;
    session.incarnation = startup_count(instance);
    return;
  }
  session.idle = false;
  session.incarnation = startup_count(instance);
}

void server_logoff(const session_info_t& session) {
  carry_out(take_fault(session.sid, session.home, "logoff"), "OCISessionEnd");
}

void server_detach(const std::string& sid, const std::string& home) {
  carry_out(take_fault(sid, home, "detach"), "OCIServerDetach");
}

}  // namespace ocisim
