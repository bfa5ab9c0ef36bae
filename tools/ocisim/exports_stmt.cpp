// Entry points of statements: prepare, define, bind, execute and fetch.
#include <algorithm>

#include "call.h"
#include "fetch.h"
#include "machine.h"
#include "sql_parser.h"

using namespace ocisim;

namespace {

std::vector<std::shared_ptr<define_handle_t>> defines_of(stmt_handle_t& stmt) {
  std::vector<std::shared_ptr<define_handle_t>> defines;
  for (const auto& weak : stmt.defines) {
    if (auto define = weak.lock()) defines.push_back(define);
  }
  return defines;
}

std::vector<std::shared_ptr<bind_handle_t>> binds_of(const stmt_handle_t& stmt) {
  std::vector<std::shared_ptr<bind_handle_t>> binds;
  for (const auto& child : child_handles(&stmt)) {
    if (child->type == OCI_HTYPE_BIND) binds.push_back(std::static_pointer_cast<bind_handle_t>(child));
  }
  return binds;
}

// The client tells a query from the first word of its text, as OCI's statement type does.
bool is_query_text(const std::string& text) {
  try {
    const std::vector<token_t> tokens = tokenize(text);
    return !tokens.empty() && tokens[0].kind == token_kind_t::identifier &&
           (tokens[0].text == "SELECT" || tokens[0].text == "WITH");
  } catch (const ora_error_t&) {
    return false;
  }
}

bool names_bind(const std::string& text, const std::string& name) {
  try {
    for (const token_t& token : tokenize(text)) {
      if (token.kind == token_kind_t::bind && token.text == name) return true;
    }
  } catch (const ora_error_t&) {
  }
  return false;
}

// The line (from 1) of the statement text where the bind `name` is first named.
std::size_t line_of_bind(const std::string& text, const std::string& name) {
  try {
    for (const token_t& token : tokenize(text)) {
      if (token.kind == token_kind_t::bind && token.text == name) {
        return 1 + static_cast<std::size_t>(
                       std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(
                                                               std::min(token.offset, text.size())),
                                  '\n'));
      }
    }
  } catch (const ora_error_t&) {
  }
  return 1;
}

// Fetches up to `rows` rows into the defines; the code the call returns.
sword fetch_rows(call_t& call, stmt_handle_t& stmt, ub4 rows) {
  const auto defines = defines_of(stmt);
  bool truncated = false;
  ub4 fetched = 0;
  for (; fetched < rows; ++fetched) {
    if (stmt.fetch_fault.error &&
        static_cast<std::int64_t>(stmt.next_row) >= stmt.fetch_fault.after_rows) {
      stmt.cursor_done = true;
      const ora_error_t failure = *stmt.fetch_fault.error;
      stmt.fetch_fault.error.reset();
      call.arg("row", std::to_string(stmt.next_row + 1));
      return call.error(failure);
    }
    if (stmt.next_row >= stmt.rows.rows.size()) break;
    write_row(stmt.rows.rows[stmt.next_row], defines, fetched, truncated);
    ++stmt.next_row;
  }
  call.arg("row", std::to_string(stmt.next_row));
  if (fetched < rows) {
    stmt.cursor_done = true;
    return call.no_data();
  }
  if (truncated) return call.with_info(ora(1406));
  return call.ok();
}

}  // namespace

extern "C" sword OCIStmtPrepare(OCIStmt* stmtp, OCIError* errhp, const OraText* stmt,
                                ub4 stmt_len, ub4 language, ub4 mode) {
  call_t call("OCIStmtPrepare");
  call.handle("stmt", stmtp);
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto statement = find<stmt_handle_t>(stmtp, OCI_HTYPE_STMT);
    if (!statement) return call.invalid_handle();
    if (stmt == nullptr) return call.error(ora(900));
    statement->text.assign(reinterpret_cast<const char*>(stmt), stmt_len);
    call.arg("length", std::to_string(stmt_len));
    statement->prepared = true;
    statement->query = is_query_text(statement->text);
    statement->executed = false;
    statement->cursor_done = false;
    statement->rows = table_t{};
    statement->next_row = 0;
    return call.ok();
  });
}

extern "C" sword OCIDefineByPos(OCIStmt* stmtp, OCIDefine** defnp, OCIError* errhp, ub4 position,
                                void* valuep, sb4 value_sz, ub2 dty, void* indp, ub2* rlenp,
                                ub2* rcodep, ub4 mode) {
  call_t call("OCIDefineByPos");
  call.handle("stmt", stmtp).arg("position", std::to_string(position)).arg("type", std::to_string(dty))
      .arg("size", std::to_string(value_sz));
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto statement = find<stmt_handle_t>(stmtp, OCI_HTYPE_STMT);
    if (!statement || defnp == nullptr) return call.invalid_handle();
    if (position == 0) return call.error(ora(1007));
    if (dty != SQLT_STR && dty != SQLT_CHR && dty != SQLT_INT) return call.error(ora(3115));
    // A new define for a position replaces the old one; a define handle given back is reused.
    std::shared_ptr<define_handle_t> define = find<define_handle_t>(*defnp, OCI_HTYPE_DEFINE);
    if (define && define->parent != statement.get()) define.reset();
    for (const auto& existing : defines_of(*statement)) {
      if (existing->position == position && existing != define) free_handle(existing.get(), OCI_HTYPE_DEFINE);
    }
    if (!define) {
      define = std::static_pointer_cast<define_handle_t>(create_handle(OCI_HTYPE_DEFINE, statement.get()));
      // Forget the defines that are gone, then remember this one.
      auto& list = statement->defines;
      list.erase(std::remove_if(list.begin(), list.end(), [](const auto& w) { return w.expired(); }), list.end());
      list.push_back(define);
    }
    define->position = position;
    define->value = valuep;
    define->value_size = value_sz;
    define->data_type = dty;
    define->indicator = static_cast<sb2*>(indp);
    define->returned_length = rlenp;
    define->return_code = rcodep;
    *defnp = reinterpret_cast<OCIDefine*>(define.get());
    return call.ok(handle_label(define.get()));
  });
}

extern "C" sword OCIBindByName(OCIStmt* stmtp, OCIBind** bindp, OCIError* errhp,
                               const OraText* placeholder, sb4 placeh_len, void* valuep,
                               sb4 value_sz, ub2 dty, void* indp, ub2* alenp, ub2* rcodep,
                               ub4 maxarr_len, ub4* curelep, ub4 mode) {
  call_t call("OCIBindByName");
  call.handle("stmt", stmtp);
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto statement = find<stmt_handle_t>(stmtp, OCI_HTYPE_STMT);
    if (!statement || bindp == nullptr || placeholder == nullptr) return call.invalid_handle();
    const char* text = reinterpret_cast<const char*>(placeholder);
    std::string name = placeh_len < 0 ? std::string(text) : std::string(text, static_cast<std::size_t>(placeh_len));
    call.arg("name", name).arg("type", std::to_string(dty)).arg("size", std::to_string(value_sz));
    if (!name.empty() && name[0] == ':') name.erase(0, 1);
    name = upper(name);
    if (!statement->prepared) return call.error(ora(24337));
    if (!names_bind(statement->text, name)) return call.error(ora(1036));
    if (dty != SQLT_STR && dty != SQLT_CHR && dty != SQLT_INT) return call.error(ora(3115));
    std::shared_ptr<bind_handle_t> bind;
    for (const auto& existing : binds_of(*statement)) {
      if (existing->name == name) bind = existing;
    }
    if (!bind) bind = std::static_pointer_cast<bind_handle_t>(create_handle(OCI_HTYPE_BIND, statement.get()));
    bind->name = name;
    bind->value = valuep;
    bind->value_size = value_sz;
    bind->data_type = dty;
    bind->indicator = static_cast<sb2*>(indp);
    bind->actual_length = alenp;
    bind->return_code = rcodep;
    *bindp = reinterpret_cast<OCIBind*>(bind.get());
    return call.ok(handle_label(bind.get()));
  });
}

extern "C" sword OCIStmtExecute(OCISvcCtx* svchp, OCIStmt* stmtp, OCIError* errhp, ub4 iters,
                                ub4 rowoff, const OCISnapshot* snap_in, OCISnapshot* snap_out,
                                ub4 mode) {
  call_t call("OCIStmtExecute");
  call.handle("svc", svchp).handle("stmt", stmtp).arg("iters", std::to_string(iters));
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto svc = find<svcctx_handle_t>(svchp, OCI_HTYPE_SVCCTX);
    auto statement = find<stmt_handle_t>(stmtp, OCI_HTYPE_STMT);
    if (!svc || !statement) return call.invalid_handle();
    if (!statement->prepared) return call.error(ora(24337));
    auto server = find<server_handle_t>(svc->server, OCI_HTYPE_SERVER);
    if (!server || !server->attached) return call.error(ora(3114));
    auto session = find<session_handle_t>(svc->session, OCI_HTYPE_SESSION);
    if (!session || !session->begun) return call.error(ora(1012));
    // The client knows the statement type: a statement that is no query needs an iteration.
    if (!statement->query && iters == 0) return call.error(ora(24333));

    statement->executed = false;
    statement->cursor_done = false;
    statement->rows = table_t{};
    statement->next_row = 0;
    statement->fetch_fault = fetch_fault_t{};

    std::map<std::string, value_t> binds;
    const auto bind_handles = binds_of(*statement);
    for (const auto& bind : bind_handles) binds[bind->name] = read_bind(*bind);
    journal_sql(statement->text);
    execution_t result = server_execute(session->info, statement->text, binds);
    for (const auto& bind : bind_handles) {
      // The block's assignment to a variable too small for its text fails the whole call;
      // no OUT value reaches the caller.
      const auto out = result.outputs.find(bind->name);
      if (out != result.outputs.end() && !out_text_fits(*bind, out->second)) {
        throw ora_error_t(6502, "ORA-06502: PL/SQL: numeric or value error: character string "
                                "buffer too small\nORA-06512: at line " +
                                    std::to_string(line_of_bind(statement->text, bind->name)));
      }
    }
    for (const auto& bind : bind_handles) {
      const auto out = result.outputs.find(bind->name);
      if (out != result.outputs.end()) write_bind(*bind, out->second);
    }
    statement->executed = true;
    if (!result.query) {
      statement->cursor_done = true;
      return call.ok();
    }
    for (const auto& define : defines_of(*statement)) {
      if (define->position > result.rows.columns.size()) return call.error(ora(1007));
    }
    statement->rows = std::move(result.rows);
    statement->fetch_fault = result.fetch_fault;
    call.arg("rows", std::to_string(statement->rows.rows.size()));
    if (iters == 0) return call.ok();
    return fetch_rows(call, *statement, iters);
  });
}

extern "C" sword OCIStmtFetch2(OCIStmt* stmtp, OCIError* errhp, ub4 nrows, ub2 orientation,
                               sb4 scrollOffset, ub4 mode) {
  call_t call("OCIStmtFetch2");
  call.handle("stmt", stmtp).arg("nrows", std::to_string(nrows));
  return call.guarded([&]() -> sword {
    if (!call.use_error_handle(errhp)) return call.invalid_handle();
    auto statement = find<stmt_handle_t>(stmtp, OCI_HTYPE_STMT);
    if (!statement) return call.invalid_handle();
    if (!statement->executed) return call.error(ora(24338));
    if (!statement->query) return call.error(ora(24374));
    if (orientation != OCI_FETCH_NEXT && orientation != 0) return call.error(ora(24300));
    if (nrows == 0) {
      statement->cursor_done = true;  // a fetch of no rows cancels the cursor
      return call.ok();
    }
    if (statement->cursor_done) {
      if (statement->next_row < statement->rows.rows.size() || statement->fetch_fault.error) {
        return call.error(ora(1002));
      }
      return call.no_data();
    }
    return fetch_rows(call, *statement, nrows);
  });
}
