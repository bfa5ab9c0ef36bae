// CWinOraInterface: the one gate through which the library reaches the Oracle client. It binds
// the client's entry points at first use (oci_loader) into one table, resolved once. A session
// holder binds on its own thread, under its process-wide lock, before it starts its worker
// (bind()), so that the loader's work is not done on a thread that may be given up on. A client that
// cannot be bound makes the calling thread raise the system exception a failed delay-load
// raises (0xC06D007E/0xC06D007F), after one information line that names what was missing; the
// session worker's frame turns that into "Failed to load OCI library".
//
// Callers copy the shared pointer of instance() before a call and drop the copy after it. The
// gate holds no data of its own beyond the table. Any thread; a handle is used by one thread
// at a time.
//
// A session worker that was cut off by its holder (see session_cut_off_scope_t) never gets
// through the gate again: at its next gate, before or after a call, the thread parks for good
// (session_worker.h, end_cut_off_worker) instead of reaching the client, so no call reaches the
// handles it leaves behind.
#pragma once
#include <atomic>
#include <memory>
#include <string>

#include "oracle/client/oci_api.h"
#include "oracle/client/oci_table.h"

namespace specific::oracle {

class CWinOraInterface {
 public:
  // The process-wide gate, made at first use (without a lock: the first use is under the
  // session lock) and kept to process end.
  static std::shared_ptr<CWinOraInterface> instance();

  // Binds the client now unless it is bound; true when a table is in place afterwards. A
  // failure is not kept (the next use tries again and raises as above) and writes nothing.
  static bool bind() noexcept;

  // Wrappers with the arguments this library always passes fixed here.
  // OCIHandleAlloc with no extra memory and no user memory.
  sword handle_alloc(const void* parent, void** handle, ub4 type);
  sword handle_free(void* handle, ub4 type);
  sword attr_set(void* target, ub4 targetType, void* value, ub4 size, ub4 attribute,
                 OCIError* error);
  // OCIStmtPrepare in native syntax, default mode.
  sword stmt_prepare(OCIStmt* statement, OCIError* error, const std::string& text);
  // OCIStmtExecute from row 0, without snapshots, default mode.
  sword stmt_execute(OCISvcCtx* service, OCIStmt* statement, OCIError* error, ub4 iterations);
  // OCIBindByName with a NUL-terminated placeholder (length -1) and nothing but the value:
  // no indicator, length or code arrays, no iteration fields, default mode.
  sword bind_by_name(OCIStmt* statement, OCIBind** bind, OCIError* error,
                     const std::string& placeholder, void* value, sb4 size, ub2 type);
  sword session_begin(OCISvcCtx* service, OCIError* error, OCISession* session, ub4 credentials,
                      ub4 mode);

  // The remaining entry points, passed straight through.
  sword env_create(OCIEnv** env, ub4 mode);  // no context, no memory callbacks, no extra memory
  sword error_get(void* handle, ub4 record, sb4* code, OraText* buffer, ub4 size, ub4 type);
  sword server_attach(OCIServer* server, OCIError* error, const OraText* link, sb4 linkLength,
                      ub4 mode);
  sword server_detach(OCIServer* server, OCIError* error, ub4 mode);
  sword session_end(OCISvcCtx* service, OCIError* error, OCISession* session, ub4 mode);
  sword define_by_pos(OCIStmt* statement, OCIDefine** define, OCIError* error, ub4 position,
                      void* value, sb4 size, ub2 type, void* indicator, ub2* length,
                      ub2* code, ub4 mode);
  sword stmt_fetch(OCIStmt* statement, OCIError* error, ub4 rows, ub2 orientation,
                   sb4 offset, ub4 mode);
  sword db_startup(OCISvcCtx* service, OCIError* error, OCIAdmin* admin, ub4 mode, ub4 flags);
  sword db_shutdown(OCISvcCtx* service, OCIError* error, OCIAdmin* admin, ub4 mode);

  // Test seam. A non-null `table` is used for every later call instead of the client library,
  // which is then not loaded; it must outlive its use. Null forgets any table, installed or
  // bound, so that the next call binds the client library again (with the DSL_OCI_LIBRARY of
  // that moment). The product never calls this.
  static void replace_table_for_tests(const oci_table_t* table);

 private:
  // The bound table; binds it first when needed (see the header comment for a failure).
  const oci_table_t& table();
  // Before and after every call: a cut-off worker stops here.
  static void pass_gate();
  // One entry of the table called between the two gates.
  template <typename entry_t, typename... args_t>
  sword gated(entry_t oci_table_t::*entry, args_t... args) {
    pass_gate();
    const sword rc = (table().*entry)(args...);
    pass_gate();
    return rc;
  }
};

// Marks the calling thread as a session worker for its lifetime: once `cutOff` becomes true,
// the thread never passes the gate again. Set by the worker itself, read by the gate.
class session_cut_off_scope_t {
 public:
  explicit session_cut_off_scope_t(std::shared_ptr<const std::atomic<bool>> cutOff);
  ~session_cut_off_scope_t();
  session_cut_off_scope_t(const session_cut_off_scope_t&) = delete;
  session_cut_off_scope_t& operator=(const session_cut_off_scope_t&) = delete;

 private:
  std::shared_ptr<const std::atomic<bool>> previous_;
};

}  // namespace specific::oracle
