// Runs a parsed SELECT against the tables a context supplies: joins the FROM list, filters
// with Oracle's three-valued logic and ROWNUM as Oracle assigns it, evaluates the select list
// (aggregates over all rows when the list has any), orders, and returns the rows. Column and
// function errors raise the ORA- errors Oracle gives. One statement per call; any thread.
#pragma once
#include <string>
#include <vector>

#include "sql_ast.h"
#include "value.h"

namespace ocisim {

struct table_t {
  std::vector<std::string> columns;  // upper-case names
  std::vector<std::vector<value_t>> rows;
};

class sql_context_t {
 public:
  virtual ~sql_context_t() = default;
  // The table or view of that upper-case name; raises ORA-00942 or the error the instance's
  // state gives for it.
  virtual table_t table(const std::string& name) = 0;
  virtual value_t sys_context(const std::string& space, const std::string& parameter) = 0;
  // USER, SYSDATE, SYSTIMESTAMP, UID...; `known` false for any other name.
  virtual value_t pseudo_column(const std::string& name, bool& known) = 0;
  // The session time zone's offset from UTC in minutes, for SYS_EXTRACT_UTC.
  virtual int time_zone_minutes() = 0;
  // A bind variable's value; raises ORA-01008 when it is not bound.
  virtual value_t bind_value(const std::string& name) = 0;
};

table_t run_select(const select_t& query, sql_context_t& context);

// Expression evaluation without any row, for PL/SQL arguments and the like.
value_t evaluate_constant(const expr_t& expr, sql_context_t& context);

// Oracle's LIKE with % and _ and an optional escape character.
bool like_match(const std::string& text, const std::string& pattern, char escape);

}  // namespace ocisim
