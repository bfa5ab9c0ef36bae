// The simulated server behind the OCI handles: attach to a local instance chosen by SID and
// home, logon, statements, start-up and shut-down, each against the machine as it stands in
// the scenario and state file at the moment of the call. Errors are raised as ora_error_t.
// Injected hangs sleep on the calling thread with no lock held, so a caller can be cut off
// and the machine still serves everyone else. Any thread; one session per thread at a time.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "errors.h"
#include "sql_select.h"
#include "value.h"

namespace ocisim {

// What the server knows of a session it has let in.
struct session_info_t {
  std::string sid;
  std::string home;
  std::string user;  // upper-case; SYS for an administrative logon
  bool sysdba = false;
  bool sysoper = false;
  bool prelim = false;
  bool dba = false;                // may alter the database and system
  bool idle = false;               // logged on while the instance was down
  std::int64_t incarnation = 0;    // the instance's start-up count at logon
  bool shutdown_started = false;   // the first OCIDBShutdown call was made
  std::shared_ptr<ora_error_t> warning;  // a logon let in with information (ORA-28002)
};

struct credentials_t {
  bool external = true;  // OCI_CRED_EXT
  std::string user;
  std::string password;
};

// A fault that fires on a fetch: after `after_rows` rows the next fetch fails with `error`.
struct fetch_fault_t {
  std::int64_t after_rows = -1;
  std::shared_ptr<ora_error_t> error;
};

struct execution_t {
  bool query = false;
  table_t rows;
  fetch_fault_t fetch_fault;
  std::map<std::string, value_t> outputs;  // PL/SQL out-binds by upper-case name
};

// Attaches to the instance of ORACLE_SID and ORACLE_HOME: ORA-12560 when there is none or
// its service is stopped; attach faults fire here.
void server_attach(const std::string& sid, const std::string& home);

// Authenticates and logs on. On return the session is begun; `session.idle` set means the
// instance is down and the caller must report ORA-01034 for a logon that is not preliminary.
void server_logon(session_info_t& session, const credentials_t& credentials, std::uint32_t mode);

void server_logoff(const session_info_t& session);
void server_detach(const std::string& sid, const std::string& home);

execution_t server_execute(session_info_t& session, const std::string& sql,
                           const std::map<std::string, value_t>& binds);

void server_startup(session_info_t& session, std::uint32_t mode, std::uint32_t flags);
void server_shutdown(session_info_t& session, std::uint32_t mode);

}  // namespace ocisim
