#include "oracle/client/ora_interface.h"

#include <mutex>
#include <vector>

#include "common/logging/log_channel.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/session_worker.h"
#include "oracle/client/system_exception.h"

namespace specific::oracle {

namespace {

// The table in use: null until bound. Written under binding_lock(), read without a lock.
std::atomic<const oci_table_t*> g_table{nullptr};

// Guards only the binding itself. The holder's session lock is owned by the waiting thread,
// not by the worker that binds, so the worker cannot take that one.
std::mutex& binding_lock() {
  static auto* lock = new std::mutex;  // never destroyed: exit-time callers may still bind
  return *lock;
}

// The cut-off flag of the session worker running on this thread, if it is one.
thread_local std::shared_ptr<const std::atomic<bool>> t_cut_off;

}  // namespace

std::shared_ptr<CWinOraInterface> CWinOraInterface::instance() {
  // Never destroyed: sessions released during process exit still go through the gate.
  static auto* gate = new std::shared_ptr<CWinOraInterface>(new CWinOraInterface);
  return *gate;
}

void CWinOraInterface::replace_table_for_tests(const oci_table_t* table) {
  std::lock_guard<std::mutex> guard(binding_lock());
  g_table.store(table, std::memory_order_release);
}

namespace {

// Binds the client unless a table is in place; the outcome of the attempt (ok when bound).
oci_load_result_t bind_table() {
  oci_load_result_t result;
  std::lock_guard<std::mutex> guard(binding_lock());
  if (g_table.load(std::memory_order_acquire)) {
    result.ok = true;
    return result;
  }
  oci_table_t fresh;
  result = load_oci_table(fresh);
  if (result.ok) {
    // Kept for the life of the process: a table forgotten by a test may still be in use
    // by a thread that read it before.
    static auto* bound = new std::vector<std::unique_ptr<const oci_table_t>>;
    bound->push_back(std::make_unique<const oci_table_t>(fresh));
    g_table.store(bound->back().get(), std::memory_order_release);
  }
  return result;
}

}  // namespace

bool CWinOraInterface::bind() noexcept {
  try {
    return bind_table().ok;
  } catch (...) {
    return false;  // the next use tries again and reports
  }
}

const oci_table_t& CWinOraInterface::table() {
  for (;;) {
    if (const oci_table_t* bound = g_table.load(std::memory_order_acquire)) return *bound;
    const oci_load_result_t result = bind_table();
    if (result.ok) continue;
    // Nothing is cached on failure: a client installed later is found at the next use, as
    // the delay-load helper would find it.
    logging::oralib().info(result.detail);
    raise_system_exception(result.code);
  }
}

void CWinOraInterface::pass_gate() {
  // A cut-off worker behaves as a terminated thread: it never runs another line of ours. It
  // holds no lock of ours here, between two calls.
  if (t_cut_off && t_cut_off->load(std::memory_order_acquire)) end_cut_off_worker();
}

sword CWinOraInterface::handle_alloc(const void* parent, void** handle, ub4 type) {
  return gated(&oci_table_t::OCIHandleAlloc, parent, handle, type, /*xtramem_sz=*/0,
               /*usrmempp=*/nullptr);
}

sword CWinOraInterface::handle_free(void* handle, ub4 type) {
  return gated(&oci_table_t::OCIHandleFree, handle, type);
}

sword CWinOraInterface::attr_set(void* target, ub4 targetType, void* value, ub4 size, ub4 attribute,
                                 OCIError* error) {
  return gated(&oci_table_t::OCIAttrSet, target, targetType, value, size, attribute, error);
}

sword CWinOraInterface::stmt_prepare(OCIStmt* statement, OCIError* error, const std::string& text) {
  return gated(&oci_table_t::OCIStmtPrepare, statement, error,
               reinterpret_cast<const OraText*>(text.c_str()), static_cast<ub4>(text.size()),
               OCI_NTV_SYNTAX, OCI_DEFAULT);
}

sword CWinOraInterface::stmt_execute(OCISvcCtx* service, OCIStmt* statement, OCIError* error,
                                     ub4 iterations) {
  return gated(&oci_table_t::OCIStmtExecute, service, statement, error, iterations, /*rowoff=*/0,
               /*snap_in=*/nullptr, /*snap_out=*/nullptr, OCI_DEFAULT);
}

sword CWinOraInterface::bind_by_name(OCIStmt* statement, OCIBind** bind, OCIError* error,
                                     const std::string& placeholder, void* value, sb4 size,
                                     ub2 type) {
  return gated(&oci_table_t::OCIBindByName, statement, bind, error,
               reinterpret_cast<const OraText*>(placeholder.c_str()), /*placeh_len=*/-1, value,
               size, type, /*indp=*/nullptr, /*alenp=*/nullptr, /*rcodep=*/nullptr,
               /*maxarr_len=*/0, /*curelep=*/nullptr, OCI_DEFAULT);
}

sword CWinOraInterface::session_begin(OCISvcCtx* service, OCIError* error, OCISession* session,
                                      ub4 credentials, ub4 mode) {
  return gated(&oci_table_t::OCISessionBegin, service, error, session, credentials, mode);
}

sword CWinOraInterface::env_create(OCIEnv** env, ub4 mode) {
  return gated(&oci_table_t::OCIEnvCreate, env, mode, /*ctxp=*/nullptr, /*malocfp=*/nullptr,
               /*ralocfp=*/nullptr, /*mfreefp=*/nullptr, /*xtramem_sz=*/0, /*usrmempp=*/nullptr);
}

sword CWinOraInterface::error_get(void* handle, ub4 record, sb4* code, OraText* buffer, ub4 size,
                                  ub4 type) {
  return gated(&oci_table_t::OCIErrorGet, handle, record, /*sqlstate=*/nullptr, code, buffer, size,
               type);
}

sword CWinOraInterface::server_attach(OCIServer* server, OCIError* error, const OraText* link,
                                      sb4 linkLength, ub4 mode) {
  return gated(&oci_table_t::OCIServerAttach, server, error, link, linkLength, mode);
}

sword CWinOraInterface::server_detach(OCIServer* server, OCIError* error, ub4 mode) {
  return gated(&oci_table_t::OCIServerDetach, server, error, mode);
}

sword CWinOraInterface::session_end(OCISvcCtx* service, OCIError* error, OCISession* session,
                                    ub4 mode) {
  return gated(&oci_table_t::OCISessionEnd, service, error, session, mode);
}

sword CWinOraInterface::define_by_pos(OCIStmt* statement, OCIDefine** define, OCIError* error,
                                      ub4 position, void* value, sb4 size, ub2 type,
                                      void* indicator, ub2* length, ub2* code, ub4 mode) {
  return gated(&oci_table_t::OCIDefineByPos, statement, define, error, position, value, size, type,
               indicator, length, code, mode);
}

sword CWinOraInterface::stmt_fetch(OCIStmt* statement, OCIError* error, ub4 rows, ub2 orientation,
                                   sb4 offset, ub4 mode) {
  return gated(&oci_table_t::OCIStmtFetch2, statement, error, rows, orientation, offset, mode);
}

sword CWinOraInterface::db_startup(OCISvcCtx* service, OCIError* error, OCIAdmin* admin, ub4 mode,
                                   ub4 flags) {
  return gated(&oci_table_t::OCIDBStartup, service, error, admin, mode, flags);
}

sword CWinOraInterface::db_shutdown(OCISvcCtx* service, OCIError* error, OCIAdmin* admin,
                                    ub4 mode) {
  return gated(&oci_table_t::OCIDBShutdown, service, error, admin, mode);
}

session_cut_off_scope_t::session_cut_off_scope_t(std::shared_ptr<const std::atomic<bool>> cutOff)
    : previous_(std::move(t_cut_off)) {
  t_cut_off = std::move(cutOff);
}

session_cut_off_scope_t::~session_cut_off_scope_t() { t_cut_off = std::move(previous_); }

}  // namespace specific::oracle
