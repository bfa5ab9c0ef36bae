// Anonymous PL/SQL blocks and directory objects of the simulated server. A block is a list of
// procedure calls with literal or bound arguments and of assignments to bind variables; each procedure the server knows is a
// handler in a table, and any other name is refused as PL/SQL refuses an undeclared one.
#include <functional>

#include "plsql_procedures.h"
#include "server_state.h"
#include "statement_kinds.h"
#include "views.h"

namespace ocisim {

namespace {

std::string position_line(const std::string& sql, size_t offset) {
  size_t line = 1;
  size_t line_start = 0;
  for (size_t i = 0; i < offset && i < sql.size(); ++i) {
    if (sql[i] == '\n') {
      ++line;
      line_start = i + 1;
    }
  }
  return "ORA-06550: line " + std::to_string(line) + ", column " +
         std::to_string(offset - line_start + 1) + ":\n";
}

ora_error_t undeclared(const std::string& sql, size_t offset, const std::string& name) {
  const std::string where = position_line(sql, offset);
  return ora_error_t(6550, where + "PLS-00201: identifier '" + name + "' must be declared\n" +
                               where + "PL/SQL: Statement ignored");
}

}  // namespace

void run_block(machine_t& machine, node_t& instance, session_info_t& session,
               const std::string& sql, const std::map<std::string, value_t>& binds,
               std::map<std::string, value_t>& outputs) {
  // An ASM instance runs its packages without a database; a database instance needs it open.
  if (instance_level(instance) < (is_asm(instance) ? level_t::started : level_t::open)) throw ora(1109);
  token_reader_t reader(tokenize(sql));
  if (!reader.accept_word("BEGIN")) throw ora(900);
  struct call_t {
    std::string name;
    size_t offset;
    std::vector<plsql_argument_t> arguments;
  };
  std::vector<call_t> calls;
  while (!reader.is_word("END")) {
    if (reader.at_end()) throw ora_error_t(6550, position_line(sql, sql.size()) +
                                             "PLS-00103: Encountered the symbol \"end-of-file\"");
    if (reader.accept_word("NULL")) {
      if (!reader.accept_symbol(";")) throw ora_error_t(6550, position_line(sql, reader.peek().offset) +
                                                          "PLS-00103: Encountered a symbol");
      continue;
    }
    call_t call;
    call.offset = reader.peek().offset;
    if (reader.peek().kind == token_kind_t::bind && reader.is_symbol(":=", 1)) {
      // An assignment to a bind variable: ":name := expression;".
      plsql_argument_t target;
      target.bind = reader.next().text;
      reader.next();
      plsql_argument_t value;
      value.expr = parse_expression(reader);
      call.arguments = {target, value};
      if (!reader.accept_symbol(";")) throw ora_error_t(6550, position_line(sql, reader.peek().offset) +
                                                          "PLS-00103: Encountered a symbol");
      calls.push_back(call);  // no name: an assignment
      continue;
    }
    call.name = reader.next().text;
    while (reader.accept_symbol(".")) call.name += "." + reader.next().text;
    if (reader.accept_symbol("(")) {
      if (!reader.is_symbol(")")) {
        do {
          plsql_argument_t argument;
          if (reader.peek().kind == token_kind_t::bind) argument.bind = reader.peek().text;
          argument.expr = parse_expression(reader);
          call.arguments.push_back(argument);
        } while (reader.accept_symbol(","));
      }
      if (!reader.accept_symbol(")")) throw ora_error_t(6550, position_line(sql, reader.peek().offset) +
                                                          "PLS-00103: Encountered a symbol");
    }
    if (!reader.accept_symbol(";")) throw ora_error_t(6550, position_line(sql, reader.peek().offset) +
                                                        "PLS-00103: Encountered a symbol");
    calls.push_back(call);
  }
  reader.next();
  reader.accept_symbol(";");
  if (!reader.at_end()) throw ora_error_t(6550, position_line(sql, reader.peek().offset) +
                                            "PLS-00103: Encountered a symbol");

  for (const call_t& call : calls) {
    size_t line = 1;
    for (size_t i = 0; i < call.offset && i < sql.size(); ++i) line += sql[i] == '\n' ? 1 : 0;
    plsql_call_t context{machine, instance, session, binds, outputs, call.arguments, line};
    if (call.name.empty()) {
      context.out(0, context.in(1));
      continue;
    }
    const plsql_procedure_t* procedure = find_plsql_procedure(call.name);
    if (procedure == nullptr) throw undeclared(sql, call.offset, call.name);
    (*procedure)(context);
  }
}

void create_directory(node_t& instance, session_info_t& session, token_reader_t& reader,
                      bool replace) {
  const token_t name = reader.next();
  if (name.kind != token_kind_t::identifier && name.kind != token_kind_t::quoted_identifier) {
    throw ora(903);
  }
  if (!reader.accept_word("AS")) throw ora(905);
  const token_t path = reader.next();
  if (path.kind != token_kind_t::string) throw ora(1780);
  expect_end(reader);
  if (instance_level(instance) < level_t::open) throw ora(1109);
  if (!session.dba) throw ora(1031);
  for (node_t* directory : instance.all("directory")) {
    if (directory->get("name") == name.text) {
      if (!replace) throw ora(955);
      directory->set("path", path.text);
      return;
    }
  }
  node_t directory;
  directory.name = "directory";
  directory.set("name", name.text);
  directory.set("path", path.text);
  instance.children.push_back(directory);
}

void drop_directory(node_t& instance, session_info_t& session, token_reader_t& reader) {
  const token_t name = reader.next();
  expect_end(reader);
  if (instance_level(instance) < level_t::open) throw ora(1109);
  if (!session.dba) throw ora(1031);
  for (auto it = instance.children.begin(); it != instance.children.end(); ++it) {
    if (it->name == "directory" && it->get("name") == name.text) {
      instance.children.erase(it);
      return;
    }
  }
  throw ora(4043, {name.text});
}

}  // namespace ocisim
