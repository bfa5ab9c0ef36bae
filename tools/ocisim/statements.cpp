// Statement execution of the simulated server: the checks every statement passes, queries
// against the instance's views, and the choice of the statement kind.
#include <cstdio>

#include "faults.h"
#include "server.h"
#include "server_state.h"
#include "sql_parser.h"
#include "statement_kinds.h"
#include "views.h"

namespace ocisim {

namespace {

class instance_context_t : public sql_context_t {
 public:
  instance_context_t(const node_t& machine, const node_t& instance, const session_info_t& session,
                     const std::map<std::string, value_t>& binds)
      : machine_(machine), instance_(instance), session_(session), binds_(binds) {}

  table_t table(const std::string& name) override { return build_view(name, machine_, instance_); }

  value_t sys_context(const std::string& space, const std::string& parameter) override {
    if (space != "USERENV") return value_t::null();
    const node_t* database = instance_.first("database");
    static const node_t kNone;
    if (database == nullptr) database = &kNone;
    const std::string name = database->get("name");
    if (parameter == "DB_NAME") return value_t::of_text(name);
    if (parameter == "DB_UNIQUE_NAME") return value_t::of_text(database->get("unique_name", name));
    if (parameter == "DB_DOMAIN") return value_t::of_text(database->get("domain"));
    if (parameter == "INSTANCE_NAME") {
      std::string text = instance_.get("instance_name", instance_.get("sid"));
      return value_t::of_text(text);
    }
    if (parameter == "SERVER_HOST") return value_t::of_text(machine_.get("host", "localhost"));
    if (parameter == "SESSION_USER" || parameter == "CURRENT_USER" ||
        parameter == "CURRENT_SCHEMA") {
      return value_t::of_text(session_.user);
    }
    if (parameter == "ISDBA") return value_t::of_text(session_.sysdba ? "TRUE" : "FALSE");
    if (parameter == "CON_ID") return value_t::of_integer(database->get("cdb") == "YES" ? 1 : 0);
    if (parameter == "CON_NAME") {
      return value_t::of_text(database->get("cdb") == "YES" ? std::string("CDB$ROOT") : name);
    }
    throw ora(2003);
  }

  value_t pseudo_column(const std::string& name, bool& known) override {
    known = true;
    if (name == "USER") return value_t::of_text(session_.user);
    if (name == "UID") return value_t::of_integer(session_.user == "SYS" ? 0 : 100);
    if (name == "SYSDATE") return value_t::of_date(machine_now(machine_));
    if (name == "SYSTIMESTAMP") return value_t::of_date(machine_now(machine_), true);
    known = false;
    return value_t::null();
  }

  int time_zone_minutes() override { return machine_time_zone_minutes(machine_); }

  value_t bind_value(const std::string& name) override {
    const auto found = binds_.find(name);
    if (found == binds_.end()) throw ora(1008);
    return found->second;
  }

 private:
  const node_t& machine_;
  const node_t& instance_;
  const session_info_t& session_;
  const std::map<std::string, value_t>& binds_;
};

}  // namespace

void expect_end(token_reader_t& reader) {
  if (reader.is_symbol(";")) throw ora(911);
  if (!reader.at_end()) throw ora(933);
}

execution_t server_execute(session_info_t& session, const std::string& sql,
                           const std::map<std::string, value_t>& binds) {
  carry_out(take_fault(session.sid, session.home, "execute", sql), "OCIStmtExecute");
  const fault_t fetch_fault = take_fault(session.sid, session.home, "fetch", sql);

  machine_t machine;
  require_connected(session_instance(machine, session), session);

  execution_t result;
  token_reader_t reader(tokenize(sql));
  if (reader.is_word("SELECT")) {
    const select_t query = parse_query(reader);
    expect_end(reader);
    instance_context_t context(machine.root(), session_instance(machine, session), session, binds);
    result.query = true;
    result.rows = run_select(query, context);
    if (fetch_fault.found) {
      result.fetch_fault.after_rows = fetch_fault.after_rows < 0 ? 0 : fetch_fault.after_rows;
      result.fetch_fault.error = fetch_fault.error;
    }
    return result;
  }
  node_t& instance = edit_session_instance(machine, session);
  if (reader.is_word("BEGIN") || reader.is_word("DECLARE")) {
    run_block(machine, instance, session, sql, binds, result.outputs);
    machine.save();
    return result;
  }
  if (reader.accept_word("ALTER")) {
    if (reader.accept_word("DATABASE")) {
      alter_database(machine, instance, session, reader);
      machine.save();
      return result;
    }
    if (reader.accept_word("PLUGGABLE")) {
      if (!reader.accept_word("DATABASE")) throw ora(900);
      alter_pluggable_database(instance, session, reader);
      machine.save();
      return result;
    }
    if (reader.accept_word("SYSTEM")) {
      alter_system(machine, instance, session, reader);
      machine.save();
      return result;
    }
  } else if (reader.accept_word("CREATE")) {
    bool replace = false;
    if (reader.accept_word("OR")) {
      if (!reader.accept_word("REPLACE")) throw ora(922);
      replace = true;
    }
    if (reader.accept_word("DIRECTORY")) {
      create_directory(instance, session, reader, replace);
      machine.save();
      return result;
    }
    if (!replace && reader.accept_word("PFILE")) {
      create_pfile(machine, instance, session, reader);
      return result;
    }
  } else if (reader.accept_word("DROP")) {
    if (reader.accept_word("DIRECTORY")) {
      drop_directory(instance, session, reader);
      machine.save();
      return result;
    }
  }
  throw ora(900);
}

}  // namespace ocisim
