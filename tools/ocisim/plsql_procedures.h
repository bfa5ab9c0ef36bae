// The PL/SQL procedures the simulated server knows, by their upper-case qualified names.
// A handler reads its arguments (literals or binds) and writes OUT arguments to `outputs`
// under the bind's name; it raises Oracle's error for a failure. Called under the machine
// lock; a handler may change the instance and touch files on disk.
#pragma once
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "machine.h"
#include "server.h"
#include "sql_ast.h"

namespace ocisim {

struct plsql_argument_t {
  expr_p expr;
  std::string bind;  // the bind variable's name when the argument is one, else empty
};

struct plsql_call_t {
  machine_t& machine;
  node_t& instance;
  session_info_t& session;
  const std::map<std::string, value_t>& binds;
  std::map<std::string, value_t>& outputs;
  const std::vector<plsql_argument_t>& arguments;
  std::size_t line;  // the line of the call in its block, for ORA-06512

  // Raises `lines` with the ORA-06512 lines Oracle adds: inside `unit`, then at this call.
  [[noreturn]] void fail(std::vector<ora_line_t> lines, const std::string& unit) const;

  // The value of argument `index` (0-based); raises PLS-00306 when there are fewer.
  value_t in(size_t index) const;
  // Sets OUT argument `index`, which must be a bind.
  void out(size_t index, const value_t& value) const;
};

using plsql_procedure_t = std::function<void(const plsql_call_t&)>;

// The handler of a qualified name, or null.
const plsql_procedure_t* find_plsql_procedure(const std::string& name);

// The procedures the server knows (packages.cpp).
void dbms_diskgroup_getfileattr(const plsql_call_t& call);
void utl_file_fremove(const plsql_call_t& call);
void dbms_file_transfer_copy_file(const plsql_call_t& call);
void dbms_backup_restore_deletearchivedlog(const plsql_call_t& call);

}  // namespace ocisim
