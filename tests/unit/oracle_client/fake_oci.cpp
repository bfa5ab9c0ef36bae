#include "fake_oci.h"

#include <algorithm>
#include <cstring>

#include "common/win/thread_id.h"
#include "oracle/client/ora_interface.h"

namespace dsl_test {

namespace {

fake_oci_t* g_current = nullptr;

const char* type_name(ub4 type) {
  switch (type) {
    case OCI_HTYPE_ENV: return "env";
    case OCI_HTYPE_ERROR: return "error";
    case OCI_HTYPE_SVCCTX: return "svcctx";
    case OCI_HTYPE_STMT: return "stmt";
    case OCI_HTYPE_BIND: return "bind";
    case OCI_HTYPE_DEFINE: return "define";
    case OCI_HTYPE_SERVER: return "server";
    case OCI_HTYPE_SESSION: return "session";
    default: return "handle";
  }
}

std::string num(long long v) { return std::to_string(v); }

// The C-style entry points of the table: each forwards to the current fake.
sword f_env_create(OCIEnv** env, ub4 mode, void* ctx, void* (*m)(void*, size_t),
                   void* (*r)(void*, void*, size_t), void (*f)(void*, void*), size_t extra,
                   void** user) {
  return g_current->env_create(env, mode, ctx, m || r || f, extra, user);
}
sword f_error_get(void* h, ub4 rec, OraText* st, sb4* code, OraText* buf, ub4 size, ub4 type) {
  return g_current->error_get(h, rec, st, code, buf, size, type);
}
sword f_handle_alloc(const void* parent, void** h, const ub4 type, const size_t extra,
                     void** user) {
  return g_current->handle_alloc(parent, h, type, extra, user);
}
sword f_handle_free(void* h, const ub4 type) { return g_current->handle_free(h, type); }
sword f_attr_set(void* t, ub4 tt, void* v, ub4 s, ub4 a, OCIError* e) {
  return g_current->attr_set(t, tt, v, s, a, e);
}
sword f_server_attach(OCIServer* s, OCIError* e, const OraText* l, sb4 n, ub4 m) {
  return g_current->server_attach(s, e, l, n, m);
}
sword f_server_detach(OCIServer* s, OCIError* e, ub4 m) {
  return g_current->server_detach(s, e, m);
}
sword f_session_begin(OCISvcCtx* s, OCIError* e, OCISession* u, ub4 c, ub4 m) {
  return g_current->session_begin(s, e, u, c, m);
}
sword f_session_end(OCISvcCtx* s, OCIError* e, OCISession* u, ub4 m) {
  return g_current->session_end(s, e, u, m);
}
sword f_stmt_prepare(OCIStmt* s, OCIError* e, const OraText* t, ub4 l, ub4 lang, ub4 m) {
  return g_current->stmt_prepare(s, e, t, l, lang, m);
}
sword f_define_by_pos(OCIStmt* s, OCIDefine** d, OCIError* e, ub4 p, void* v, sb4 z, ub2 t,
                      void* i, ub2* l, ub2* c, ub4 m) {
  return g_current->define_by_pos(s, d, e, p, v, z, t, i, l, c, m);
}
sword f_bind_by_name(OCIStmt* s, OCIBind** b, OCIError* e, const OraText* n, sb4 nl, void* v,
                     sb4 z, ub2 t, void* i, ub2* l, ub2* c, ub4 ma, ub4* cu, ub4 m) {
  return g_current->bind_by_name(s, b, e, n, nl, v, z, t, i, l, c, ma, cu, m);
}
sword f_stmt_execute(OCISvcCtx* s, OCIStmt* st, OCIError* e, ub4 it, ub4 off,
                     const OCISnapshot* in, OCISnapshot* out, ub4 m) {
  return g_current->stmt_execute(s, st, e, it, off, in, out, m);
}
sword f_stmt_fetch(OCIStmt* s, OCIError* e, ub4 n, ub2 o, sb4 off, ub4 m) {
  return g_current->stmt_fetch(s, e, n, o, off, m);
}
sword f_db_startup(OCISvcCtx* s, OCIError* e, OCIAdmin* a, ub4 m, ub4 f) {
  return g_current->db_startup(s, e, a, m, f);
}
sword f_db_shutdown(OCISvcCtx* s, OCIError* e, OCIAdmin* a, ub4 m) {
  return g_current->db_shutdown(s, e, a, m);
}

}  // namespace

fake_row_t row_of(const std::vector<std::string>& cells) {
  fake_row_t row;
  for (const auto& c : cells) row.cells.push_back({c, false});
  return row;
}

fake_cell_t null_cell() { return {std::string(), true}; }

struct fake_oci_t::handle_t {
  ub4 type = 0;
  std::string label;
  const void* parent = nullptr;
  // Statements.
  std::string sql;
  bool executed = false;
  size_t next = 0;
  struct define_t {
    void* value = nullptr;
    sb4 size = 0;
    sb2* indicator = nullptr;
  };
  std::map<ub4, define_t> defines;
  struct bind_t {
    void* value = nullptr;
    sb4 size = 0;
    ub2 type = 0;
  };
  std::vector<bind_t> binds;
};

fake_oci_t::fake_oci_t() {
  g_current = this;
  table_.OCIEnvCreate = f_env_create;
  table_.OCIErrorGet = f_error_get;
  table_.OCIHandleAlloc = f_handle_alloc;
  table_.OCIHandleFree = f_handle_free;
  table_.OCIAttrSet = f_attr_set;
  table_.OCIServerAttach = f_server_attach;
  table_.OCIServerDetach = f_server_detach;
  table_.OCISessionBegin = f_session_begin;
  table_.OCISessionEnd = f_session_end;
  table_.OCIStmtPrepare = f_stmt_prepare;
  table_.OCIDefineByPos = f_define_by_pos;
  table_.OCIBindByName = f_bind_by_name;
  table_.OCIStmtExecute = f_stmt_execute;
  table_.OCIStmtFetch2 = f_stmt_fetch;
  table_.OCIDBStartup = f_db_startup;
  table_.OCIDBShutdown = f_db_shutdown;
  specific::oracle::CWinOraInterface::replace_table_for_tests(&table_);
}

fake_oci_t::~fake_oci_t() {
  specific::oracle::CWinOraInterface::replace_table_for_tests(nullptr);
  g_current = nullptr;
}

fake_oci_t* fake_oci_t::current() { return g_current; }

void fake_oci_t::fail(const std::string& function, sword rc, sb4 oraCode,
                      const std::string& message, int times) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  for (int i = 0; i < times; ++i) failures_[function].push_back({rc, oraCode, message});
}

void fake_oci_t::on_call(const std::string& function, std::function<void()> hook) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  hooks_[function] = std::move(hook);
}

void fake_oci_t::set_rows(const std::string& sql, std::vector<fake_row_t> rows) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  rows_[sql] = std::move(rows);
}

void fake_oci_t::fail_fetch_after(const std::string& sql, size_t rows, sb4 oraCode,
                                  const std::string& message) {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  fetchFaults_[sql] = {rows, oraCode, message};
}

std::vector<fake_call_t> fake_oci_t::calls() const {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  return calls_;
}

std::vector<std::string> fake_oci_t::lines() const {
  std::vector<std::string> result;
  for (const auto& c : calls()) result.push_back(c.line());
  return result;
}

std::vector<std::string> fake_oci_t::lines_of(const std::string& function) const {
  std::vector<std::string> result;
  for (const auto& c : calls()) {
    if (c.function == function) result.push_back(c.line());
  }
  return result;
}

size_t fake_oci_t::count(const std::string& function) const {
  return lines_of(function).size();
}

void fake_oci_t::clear_calls() {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  calls_.clear();
}

std::vector<std::string> fake_oci_t::live_handles() const {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  std::vector<std::string> result;
  for (const auto& [p, h] : handles_) result.push_back(h->label);
  std::sort(result.begin(), result.end());
  return result;
}

std::string fake_oci_t::label(const void* handle) const {
  std::lock_guard<std::recursive_mutex> guard(lock_);
  return label_locked(handle);
}

std::string fake_oci_t::label_locked(const void* handle) const {
  if (!handle) return "null";
  auto it = handles_.find(handle);
  return it == handles_.end() ? "unknown" : it->second->label;
}

fake_oci_t::handle_t* fake_oci_t::find(const void* handle) const {
  auto it = handles_.find(handle);
  return it == handles_.end() ? nullptr : it->second.get();
}

void* fake_oci_t::new_handle(ub4 type, const void* parent) {
  auto h = std::make_unique<handle_t>();
  h->type = type;
  h->parent = parent;
  h->label = std::string(type_name(type)) + "#" + num(nextId_++);
  void* key = h.get();
  handles_[key] = std::move(h);
  return key;
}

void fake_oci_t::set_error(void* error, sb4 code, const std::string& message) {
  if (error) errors_[error] = {code, message};
}

bool fake_oci_t::enter(const std::string& function, const std::string& args, sword& rc,
                       void* error) {
  std::function<void()> hook;
  {
    // Recorded before the hook runs, so a call that hangs is on record, as a client's
    // journal would have it.
    std::lock_guard<std::recursive_mutex> guard(lock_);
    calls_.push_back({function, args, win::current_thread_id()});
    auto it = hooks_.find(function);
    if (it != hooks_.end()) hook = it->second;
  }
  if (hook) hook();
  std::lock_guard<std::recursive_mutex> guard(lock_);
  auto it = failures_.find(function);
  if (it == failures_.end() || it->second.empty()) return false;
  const failure_t f = it->second.front();
  it->second.erase(it->second.begin());
  if (f.rc == OCI_ERROR) set_error(error, f.oraCode, f.message);
  rc = f.rc;
  return true;
}

sword fake_oci_t::env_create(OCIEnv** env, ub4 mode, void* ctx, bool callbacks, size_t extra,
                             void** user) {
  sword rc = 0;
  const std::string args = "mode=" + num(mode) + " ctx=" + (ctx ? "set" : "null") +
                           " callbacks=" + (callbacks ? "set" : "null") +
                           " extra=" + num(static_cast<long long>(extra)) +
                           " user=" + (user ? "set" : "null");
  if (enter("OCIEnvCreate", args, rc, nullptr)) return rc;
  std::lock_guard<std::recursive_mutex> guard(lock_);
  *env = static_cast<OCIEnv*>(new_handle(OCI_HTYPE_ENV, nullptr));
  return OCI_SUCCESS;
}

sword fake_oci_t::error_get(void* handle, ub4 record, OraText* state, sb4* code, OraText* buffer,
                            ub4 size, ub4 type) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = "handle=" + label_locked(handle) + " record=" + num(record) +
           " state=" + (state ? "set" : "null") + " size=" + num(size) + " type=" + num(type);
  }
  if (enter("OCIErrorGet", args, rc, nullptr)) return rc;
  std::lock_guard<std::recursive_mutex> guard(lock_);
  auto it = errors_.find(handle);
  if (it == errors_.end()) return OCI_NO_DATA;
  *code = it->second.first;
  // As OCI does: the message is cut at the buffer's size, NUL included.
  const std::string& message = it->second.second;
  const size_t n = size == 0 ? 0 : std::min<size_t>(message.size(), size - 1);
  std::memcpy(buffer, message.data(), n);
  if (size != 0) buffer[n] = 0;
  return OCI_SUCCESS;
}

sword fake_oci_t::handle_alloc(const void* parent, void** handle, ub4 type, size_t extra,
                               void** user) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = "parent=" + label_locked(parent) + " type=" + num(type) +
           " extra=" + num(static_cast<long long>(extra)) + " user=" + (user ? "set" : "null");
  }
  if (enter("OCIHandleAlloc", args, rc, nullptr)) return rc;
  std::lock_guard<std::recursive_mutex> guard(lock_);
  if (!find(parent)) return OCI_INVALID_HANDLE;
  *handle = new_handle(type, parent);
  return OCI_SUCCESS;
}

sword fake_oci_t::handle_free(void* handle, ub4 type) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(handle) + " type=" + num(type);
  }
  if (enter("OCIHandleFree", args, rc, nullptr)) return rc;
  std::lock_guard<std::recursive_mutex> guard(lock_);
  handle_t* h = find(handle);
  if (!h || h->type != type) return OCI_INVALID_HANDLE;
  // Freeing a statement frees its defines, as OCI does.
  for (auto it = handles_.begin(); it != handles_.end();) {
    if (it->second->parent == handle && it->second->type == OCI_HTYPE_DEFINE) {
      it = handles_.erase(it);
    } else {
      ++it;
    }
  }
  errors_.erase(handle);
  handles_.erase(handle);
  return OCI_SUCCESS;
}

sword fake_oci_t::attr_set(void* target, ub4 targetType, void* value, ub4 size, ub4 attribute,
                           OCIError* error) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    const std::string shown =
        (attribute == OCI_ATTR_USERNAME || attribute == OCI_ATTR_PASSWORD)
            ? "\"" + std::string(static_cast<const char*>(value), size) + "\""
            : label_locked(value);
    args = label_locked(target) + " type=" + num(targetType) + " attr=" + num(attribute) +
           " value=" + shown + " size=" + num(size) + " err=" + label_locked(error);
  }
  if (enter("OCIAttrSet", args, rc, error)) return rc;
  return OCI_SUCCESS;
}

sword fake_oci_t::server_attach(OCIServer* server, OCIError* error, const OraText* link,
                                sb4 length, ub4 mode) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(server) + " err=" + label_locked(error) +
           " link=" + (link ? "set" : "null") + " length=" + num(length) + " mode=" + num(mode);
  }
  if (enter("OCIServerAttach", args, rc, error)) return rc;
  return OCI_SUCCESS;
}

sword fake_oci_t::server_detach(OCIServer* server, OCIError* error, ub4 mode) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(server) + " err=" + label_locked(error) + " mode=" + num(mode);
  }
  if (enter("OCIServerDetach", args, rc, error)) return rc;
  return OCI_SUCCESS;
}

sword fake_oci_t::session_begin(OCISvcCtx* svc, OCIError* error, OCISession* session,
                                ub4 credentials, ub4 mode) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(svc) + " err=" + label_locked(error) + " session=" +
           label_locked(session) + " cred=" + num(credentials) + " mode=" + num(mode);
  }
  if (enter("OCISessionBegin", args, rc, error)) return rc;
  return OCI_SUCCESS;
}

sword fake_oci_t::session_end(OCISvcCtx* svc, OCIError* error, OCISession* session, ub4 mode) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(svc) + " err=" + label_locked(error) + " session=" +
           label_locked(session) + " mode=" + num(mode);
  }
  if (enter("OCISessionEnd", args, rc, error)) return rc;
  return OCI_SUCCESS;
}

sword fake_oci_t::stmt_prepare(OCIStmt* stmt, OCIError* error, const OraText* text, ub4 length,
                               ub4 language, ub4 mode) {
  sword rc = 0;
  const std::string sql(reinterpret_cast<const char*>(text), length);
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(stmt) + " err=" + label_locked(error) + " sql=\"" + sql + "\" length=" +
           num(length) + " language=" + num(language) + " mode=" + num(mode);
  }
  if (enter("OCIStmtPrepare", args, rc, error)) return rc;
  std::lock_guard<std::recursive_mutex> guard(lock_);
  handle_t* h = find(stmt);
  if (!h) return OCI_INVALID_HANDLE;
  h->sql = sql;
  return OCI_SUCCESS;
}

sword fake_oci_t::define_by_pos(OCIStmt* stmt, OCIDefine** define, OCIError* error,
                                ub4 position, void* value, sb4 size, ub2 type, void* indicator,
                                ub2* length, ub2* code, ub4 mode) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(stmt) + " err=" + label_locked(error) + " position=" + num(position) +
           " size=" + num(size) + " type=" + num(type) +
           " indicator=" + (indicator ? "set" : "null") + " length=" + (length ? "set" : "null") +
           " code=" + (code ? "set" : "null") + " mode=" + num(mode);
  }
  if (enter("OCIDefineByPos", args, rc, error)) return rc;
  std::lock_guard<std::recursive_mutex> guard(lock_);
  handle_t* h = find(stmt);
  if (!h) return OCI_INVALID_HANDLE;
  h->defines[position] = {value, size, static_cast<sb2*>(indicator)};
  *define = static_cast<OCIDefine*>(new_handle(OCI_HTYPE_DEFINE, stmt));
  return OCI_SUCCESS;
}

sword fake_oci_t::bind_by_name(OCIStmt* stmt, OCIBind** bind, OCIError* error,
                               const OraText* name, sb4 nameLength, void* value, sb4 size,
                               ub2 type, void* indicator, ub2* length, ub2* code, ub4 maxArray,
                               ub4* current, ub4 mode) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(stmt) + " err=" + label_locked(error) +
           " name=" + reinterpret_cast<const char*>(name) + " nameLength=" + num(nameLength) +
           " size=" + num(size) + " type=" + num(type) +
           " indicator=" + (indicator ? "set" : "null") + " length=" + (length ? "set" : "null") +
           " code=" + (code ? "set" : "null") + " maxArray=" + num(maxArray) +
           " current=" + (current ? "set" : "null") + " mode=" + num(mode);
  }
  if (enter("OCIBindByName", args, rc, error)) return rc;
  std::lock_guard<std::recursive_mutex> guard(lock_);
  handle_t* h = find(stmt);
  if (!h) return OCI_INVALID_HANDLE;
  h->binds.push_back({value, size, type});
  *bind = static_cast<OCIBind*>(new_handle(OCI_HTYPE_BIND, stmt));
  return OCI_SUCCESS;
}

sword fake_oci_t::stmt_execute(OCISvcCtx* svc, OCIStmt* stmt, OCIError* error, ub4 iterations,
                               ub4 offset, const OCISnapshot* in, OCISnapshot* out, ub4 mode) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(svc) + " " + label_locked(stmt) + " err=" + label_locked(error) +
           " iters=" + num(iterations) + " offset=" + num(offset) +
           " in=" + (in ? "set" : "null") + " out=" + (out ? "set" : "null") + " mode=" +
           num(mode);
  }
  if (enter("OCIStmtExecute", args, rc, error)) return rc;
  std::lock_guard<std::recursive_mutex> guard(lock_);
  handle_t* h = find(stmt);
  if (!h) return OCI_INVALID_HANDLE;
  h->executed = true;
  h->next = 0;
  // A bound number comes back doubled, so tests can see an out-parameter arrive.
  for (const auto& b : h->binds) {
    if (b.type == SQLT_INT && b.size == 4) *static_cast<int32_t*>(b.value) *= 2;
  }
  return OCI_SUCCESS;
}

sword fake_oci_t::stmt_fetch(OCIStmt* stmt, OCIError* error, ub4 rows, ub2 orientation,
                             sb4 offset, ub4 mode) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(stmt) + " err=" + label_locked(error) + " rows=" + num(rows) +
           " orientation=" + num(orientation) + " offset=" + num(offset) + " mode=" + num(mode);
  }
  if (enter("OCIStmtFetch2", args, rc, error)) return rc;
  std::lock_guard<std::recursive_mutex> guard(lock_);
  handle_t* h = find(stmt);
  if (!h) return OCI_INVALID_HANDLE;
  const bool query = h->sql.rfind("SELECT", 0) == 0;
  if (!query || !h->executed) {
    set_error(error, 24374, "ORA-24374: define not done before fetch or execute and fetch\n");
    return OCI_ERROR;
  }
  auto fault = fetchFaults_.find(h->sql);
  if (fault != fetchFaults_.end() && h->next >= fault->second.afterRows) {
    set_error(error, fault->second.oraCode, fault->second.message);
    return OCI_ERROR;
  }
  auto it = rows_.find(h->sql);
  if (it == rows_.end() || h->next >= it->second.size()) return OCI_NO_DATA;
  const fake_row_t& row = it->second[h->next++];
  for (auto& [position, define] : h->defines) {
    if (position == 0 || position > row.cells.size()) continue;
    const fake_cell_t& cell = row.cells[position - 1];
    if (cell.null) {
      *define.indicator = -1;  // the buffer is left as it was
      continue;
    }
    const size_t room = define.size > 0 ? static_cast<size_t>(define.size) - 1 : 0;
    const size_t n = std::min(room, cell.bytes.size());
    std::memcpy(define.value, cell.bytes.data(), n);
    static_cast<char*>(define.value)[n] = '\0';
    *define.indicator = cell.bytes.size() > room ? static_cast<sb2>(cell.bytes.size()) : 0;
  }
  return row.fetchResult;
}

sword fake_oci_t::db_startup(OCISvcCtx* svc, OCIError* error, OCIAdmin* admin, ub4 mode,
                             ub4 flags) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(svc) + " err=" + label_locked(error) +
           " admin=" + (admin ? "set" : "null") + " mode=" + num(mode) + " flags=" + num(flags);
  }
  if (enter("OCIDBStartup", args, rc, error)) return rc;
  return OCI_SUCCESS;
}

sword fake_oci_t::db_shutdown(OCISvcCtx* svc, OCIError* error, OCIAdmin* admin, ub4 mode) {
  sword rc = 0;
  std::string args;
  {
    std::lock_guard<std::recursive_mutex> guard(lock_);
    args = label_locked(svc) + " err=" + label_locked(error) +
           " admin=" + (admin ? "set" : "null") + " mode=" + num(mode);
  }
  if (enter("OCIDBShutdown", args, rc, error)) return rc;
  return OCI_SUCCESS;
}

}  // namespace dsl_test
