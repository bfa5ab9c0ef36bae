// COracleSession: one logon to the local instance that ORACLE_SID and ORACLE_HOME name. It is
// made and logged on by the holder's worker thread (init), then used by the operation's thread
// alone: queries and commands (oracle_query.h, oracle_cmd_exec.h) and the state operations
// (oracle_session_state.cpp). Sessions are not shared between operations and not cached.
#pragma once
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "oracle/client/conn.h"
#include "oracle/client/oci_api.h"
#include "oracle/client/oracle_handle.h"

namespace specific::oracle {

class COracleQuery;
class COracleCmdExec;

// Logon modes of init: OCI_SYSDBA, with OCI_PRELIM_AUTH for the session that starts an
// instance up, and the ordinary logon the holder falls back to.
constexpr ub4 kLogonSysdba = OCI_SYSDBA;                            // 2
constexpr ub4 kLogonSysdbaPrelim = OCI_SYSDBA | OCI_PRELIM_AUTH;    // 10
constexpr ub4 kLogonDefault = OCI_DEFAULT;                          // 0
constexpr ub4 kLogonDefaultPrelim = OCI_PRELIM_AUTH;                // 8

// ORA-01034 "ORACLE not available": at logon, the instance is shut down.
constexpr sb4 kOraNotAvailable = 1034;

class COracleSession {
 public:
  explicit COracleSession(const conn_t& conn);
  // Ends the session and detaches the server (failures are logged and swallowed), then frees
  // session, server, service context and environment in this order. After a cut-off nothing
  // is called and nothing is logged: every handle is abandoned.
  ~COracleSession();
  COracleSession(const COracleSession&) = delete;
  COracleSession& operator=(const COracleSession&) = delete;

  // Makes the environment and handles, attaches to the local instance and logs on with
  // `mode`; credentials are the database's when conn names a user, the operating system's
  // otherwise. ORA-01034 at logon is no failure: it sets instance_down(). Throws on any other
  // failure, with the trace line "Failed to create oracle session.", and stays uninitialised.
  void init(ub4 mode);

  // Queries and commands on this session, for the operation's thread.
  std::shared_ptr<COracleQuery> make_query() const;
  std::shared_ptr<COracleCmdExec> make_command(const std::string& sql) const;

  // State of the instance and its database; see oracle_session_state.cpp.
  bool is_instance_open(bool assumeOpen);
  bool is_database_active();
  void get_database_options(bool& readOnly, bool& archiveLog);
  std::u16string get_database_name();
  bool is_control_file_on_asm();
  void read_version();
  void startup();
  void mount_and_open();
  void shutdown();

  // Filled by read_version(); empty until it has run. Callers test the pointer and run it when
  // it is empty.
  const std::shared_ptr<bool>& is_version_12_or_higher() const { return isVersion12OrHigher_; }
  const std::shared_ptr<bool>& is_version_below_11() const { return isVersionBelow11_; }

  bool initialised() const { return initialised_; }
  bool server_attached() const { return serverAttached_; }
  bool instance_down() const { return instanceDown_; }
  bool terminated() const { return terminated_.load(); }
  // Set by the holder's waiting thread when it cuts the worker off, possibly while the worker
  // still runs; from then on no OCI call may be made for this session.
  void set_terminated() { terminated_.store(true); }

  const conn_t& conn() const { return conn_; }
  const std::shared_ptr<COracleEnv>& env() const { return env_; }
  const std::shared_ptr<COracleHandle>& svc_ctx() const { return svcCtx_; }
  const std::shared_ptr<COracleHandle>& server() const { return server_; }
  const std::shared_ptr<COracleHandle>& user_session() const { return userSession_; }

 private:
  void init_server();
  void init_session_handle();
  sword logon(ub4 mode);
  void destroy();
  void abandon_all();

  std::shared_ptr<COracleEnv> env_;
  std::shared_ptr<COracleHandle> svcCtx_;
  std::shared_ptr<COracleHandle> server_;
  std::shared_ptr<COracleHandle> userSession_;
  bool initialised_ = false;
  bool serverAttached_ = false;
  std::atomic<bool> terminated_{false};
  bool instanceDown_ = false;
  std::shared_ptr<bool> isVersion12OrHigher_;
  std::shared_ptr<bool> isVersionBelow11_;
  conn_t conn_;
  std::u16string databaseName_;
};

}  // namespace specific::oracle
