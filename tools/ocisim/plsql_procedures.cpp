#include "plsql_procedures.h"

#include "sql_select.h"

namespace ocisim {

namespace {

// Evaluates an argument with the call's binds and nothing else in scope.
class argument_context_t : public sql_context_t {
 public:
  explicit argument_context_t(const std::map<std::string, value_t>& binds) : binds_(binds) {}
  table_t table(const std::string&) override { throw ora(942); }
  value_t sys_context(const std::string&, const std::string&) override { return value_t::null(); }
  value_t pseudo_column(const std::string&, bool& known) override {
    known = false;
    return value_t::null();
  }
  int time_zone_minutes() override { return 0; }
  value_t bind_value(const std::string& name) override {
    const auto found = binds_.find(name);
    if (found == binds_.end()) throw ora(1008);
    return found->second;
  }

 private:
  const std::map<std::string, value_t>& binds_;
};

const std::map<std::string, plsql_procedure_t>& procedures() {
  static const std::map<std::string, plsql_procedure_t> table = {
      {"DBMS_DISKGROUP.GETFILEATTR", dbms_diskgroup_getfileattr},
      {"UTL_FILE.FREMOVE", utl_file_fremove},
      {"DBMS_FILE_TRANSFER.COPY_FILE", dbms_file_transfer_copy_file},
      {"DBMS_BACKUP_RESTORE.DELETEARCHIVEDLOG", dbms_backup_restore_deletearchivedlog},
  };
  return table;
}

}  // namespace

value_t plsql_call_t::in(size_t index) const {
  if (index >= arguments.size()) {
    throw ora_error_t(6550, "ORA-06550: line 1, column 1:\nPLS-00306: wrong number or types of "
                            "arguments in call\nORA-06550: line 1, column 1:\nPL/SQL: Statement ignored");
  }
  argument_context_t context(binds);
  return evaluate_constant(*arguments[index].expr, context);
}

void plsql_call_t::out(size_t index, const value_t& value) const {
  if (index >= arguments.size() || arguments[index].bind.empty()) {
    throw ora_error_t(6550, "ORA-06550: line 1, column 1:\nPLS-00363: expression cannot be used "
                            "as an assignment target\nORA-06550: line 1, column 1:\nPL/SQL: "
                            "Statement ignored");
  }
  outputs[arguments[index].bind] = value;
}

void plsql_call_t::fail(std::vector<ora_line_t> lines, const std::string& unit) const {
  lines.push_back(ora_line_t{6512, {unit, "1"}});
  std::string message;
  for (const ora_line_t& l : lines) message += ora_line_text(l);
  message += "ORA-06512: at line " + std::to_string(line) + "\n";
  throw ora_error_t(lines.front().code, message);
}

const plsql_procedure_t* find_plsql_procedure(const std::string& name) {
  const auto found = procedures().find(name);
  return found == procedures().end() ? nullptr : &found->second;
}

}  // namespace ocisim
