// COracleSessionHolder: one Oracle session for the span of one operation. The constructor
// makes the session on a worker thread of its own, under the process-wide session lock, and
// waits for it no longer than the configured connection time-out (OracleConnectionTimeout);
// a worker that does not finish in time is cut off (see session_worker.h). A constructed
// holder always has an initialised session; its destruction ends the session. Made and used
// by the operation's thread; sessions are neither cached nor shared.
#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "common/exc/exc_base.h"
#include "oracle/client/conn.h"

namespace specific::oracle {

class COracleSession;
class COracleQuery;

class COracleSessionHolder {
 public:
  // Throws on any failure, each with the trace line
  // "Failed to create oracle session holder. SID: <sid>." on top:
  //   COracleInitTimeoutExc "Failed to wait oracle session initialization" on time-out;
  //   COracleExc when Oracle refused the attach or the logon;
  //   COracleSessionCreateExc "Failed to create oracle session holder. Session is invalid."
  //     when the client library is missing or the worker met a system exception;
  //   win_sys_exc_t "Failed to start oracle session init thread" when no thread could be made.
  // A worker given up on is never killed from outside; it ends itself at its next call to the
  // client (session_worker.h says why).
  // `prelimAuth` only for the session that starts an instance up.
  COracleSessionHolder(const std::u16string& sid, const std::u16string& home, const conn_t& conn,
                       bool prelimAuth);
  ~COracleSessionHolder();
  COracleSessionHolder(const COracleSessionHolder&) = delete;
  COracleSessionHolder& operator=(const COracleSessionHolder&) = delete;

  // The soft way in, never throwing: a holder without prelim authentication, or an empty
  // pointer after "Failed to create session holder for SID: %1" and the failure at error
  // level. Callers test the pointer.
  static std::shared_ptr<COracleSessionHolder> create(const std::u16string& sid,
                                                      const std::u16string& home,
                                                      const conn_t& conn) noexcept;
  // The same from an instance record of discovery (any type with `sid` and `home`).
  template <typename SidRecord>
  static std::shared_ptr<COracleSessionHolder> create(const SidRecord& record,
                                                      const conn_t& conn) noexcept {
    return create(record.sid, record.home, conn);
  }

  std::shared_ptr<COracleSession> get_session() const { return session_; }
  std::u16string get_home() const { return home_; }
  std::u16string get_sid() const { return sid_; }
  std::shared_ptr<COracleQuery> make_query() const;

  const conn_t& conn() const { return conn_; }
  bool prelim_auth() const { return prelimAuth_; }

 private:
  std::shared_ptr<COracleSession> session_;
  std::u16string home_;
  std::u16string sid_;
  conn_t conn_;
  bool prelimAuth_ = false;
  exc::exc_ptr_t threadFailure_;
};

}  // namespace specific::oracle
