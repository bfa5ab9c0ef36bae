// A scripted stand-in for the Oracle client, for the unit tests of the client layer. While a
// fake_oci_t lives, the gate (CWinOraInterface) calls its table instead of loading a client:
// CWinOraInterface::replace_table_for_tests is the seam. The fake hands out real, distinct
// handles with readable labels ("env#1", "error#2", ...), records every call with its
// arguments and thread, answers queries from rows set per statement text, and fails or hangs
// where a test asks it to. Any thread; one fake at a time.
#pragma once
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "oracle/client/oci_table.h"

namespace dsl_test {

struct fake_cell_t {
  std::string bytes;
  bool null = false;
};

struct fake_row_t {
  std::vector<fake_cell_t> cells;
  sword fetchResult = OCI_SUCCESS;  // what OCIStmtFetch2 answers for this row
};

// Rows from plain texts: each text one cell.
fake_row_t row_of(const std::vector<std::string>& cells);
fake_cell_t null_cell();

struct fake_call_t {
  std::string function;
  std::string args;  // "name=value" separated by blanks
  uint32_t thread = 0;
  std::string line() const { return args.empty() ? function : function + " " + args; }
};

class fake_oci_t {
 public:
  fake_oci_t();
  ~fake_oci_t();
  fake_oci_t(const fake_oci_t&) = delete;
  fake_oci_t& operator=(const fake_oci_t&) = delete;

  static fake_oci_t* current();

  // The next `times` calls of `function` (an OCI name such as "OCISessionBegin") do nothing
  // but return `rc`; with OCI_ERROR the error handle of the call gets `oraCode` and `message`.
  void fail(const std::string& function, sword rc, sb4 oraCode = 0,
            const std::string& message = std::string(), int times = 1);
  // Runs `hook` at the start of every call of `function`, after the call is recorded and
  // outside the fake's lock. A null hook removes it.
  void on_call(const std::string& function, std::function<void()> hook);
  // The rows a query with exactly this text returns. A SELECT without rows set returns none.
  void set_rows(const std::string& sql, std::vector<fake_row_t> rows);
  // After `rows` rows, the fetch of this statement fails with OCI_ERROR and `oraCode`.
  void fail_fetch_after(const std::string& sql, size_t rows, sb4 oraCode,
                        const std::string& message);

  std::vector<fake_call_t> calls() const;
  std::vector<std::string> lines() const;                        // every call's line
  std::vector<std::string> lines_of(const std::string& function) const;
  size_t count(const std::string& function) const;
  void clear_calls();

  // Handles still allocated, by label.
  std::vector<std::string> live_handles() const;
  std::string label(const void* handle) const;

  // Entry points of the table; public for the C-style functions that forward here.
  sword env_create(OCIEnv** env, ub4 mode, void* ctx, bool callbacks, size_t extra, void** user);
  sword error_get(void* handle, ub4 record, OraText* state, sb4* code, OraText* buffer,
                  ub4 size, ub4 type);
  sword handle_alloc(const void* parent, void** handle, ub4 type, size_t extra, void** user);
  sword handle_free(void* handle, ub4 type);
  sword attr_set(void* target, ub4 targetType, void* value, ub4 size, ub4 attribute,
                 OCIError* error);
  sword server_attach(OCIServer* server, OCIError* error, const OraText* link, sb4 length,
                      ub4 mode);
  sword server_detach(OCIServer* server, OCIError* error, ub4 mode);
  sword session_begin(OCISvcCtx* svc, OCIError* error, OCISession* session, ub4 credentials,
                      ub4 mode);
  sword session_end(OCISvcCtx* svc, OCIError* error, OCISession* session, ub4 mode);
  sword stmt_prepare(OCIStmt* stmt, OCIError* error, const OraText* text, ub4 length,
                     ub4 language, ub4 mode);
  sword define_by_pos(OCIStmt* stmt, OCIDefine** define, OCIError* error, ub4 position,
                      void* value, sb4 size, ub2 type, void* indicator, ub2* length, ub2* code,
                      ub4 mode);
  sword bind_by_name(OCIStmt* stmt, OCIBind** bind, OCIError* error, const OraText* name,
                     sb4 nameLength, void* value, sb4 size, ub2 type, void* indicator,
                     ub2* length, ub2* code, ub4 maxArray, ub4* current, ub4 mode);
  sword stmt_execute(OCISvcCtx* svc, OCIStmt* stmt, OCIError* error, ub4 iterations,
                     ub4 offset, const OCISnapshot* in, OCISnapshot* out, ub4 mode);
  sword stmt_fetch(OCIStmt* stmt, OCIError* error, ub4 rows, ub2 orientation, sb4 offset,
                   ub4 mode);
  sword db_startup(OCISvcCtx* svc, OCIError* error, OCIAdmin* admin, ub4 mode, ub4 flags);
  sword db_shutdown(OCISvcCtx* svc, OCIError* error, OCIAdmin* admin, ub4 mode);

 private:
  struct handle_t;
  struct failure_t {
    sword rc;
    sb4 oraCode;
    std::string message;
  };
  struct fetch_fault_t {
    size_t afterRows;
    sb4 oraCode;
    std::string message;
  };

  // Records the call, runs the hook and takes a scripted failure if one is due.
  bool enter(const std::string& function, const std::string& args, sword& rc, void* error);
  void set_error(void* error, sb4 code, const std::string& message);
  void* new_handle(ub4 type, const void* parent);
  handle_t* find(const void* handle) const;
  std::string label_locked(const void* handle) const;

  mutable std::recursive_mutex lock_;
  specific::oracle::oci_table_t table_;
  std::vector<fake_call_t> calls_;
  std::map<std::string, std::vector<failure_t>> failures_;
  std::map<std::string, std::function<void()>> hooks_;
  std::map<std::string, std::vector<fake_row_t>> rows_;
  std::map<std::string, fetch_fault_t> fetchFaults_;
  std::map<const void*, std::unique_ptr<handle_t>> handles_;
  std::map<const void*, std::pair<sb4, std::string>> errors_;
  int nextId_ = 1;
};

}  // namespace dsl_test
