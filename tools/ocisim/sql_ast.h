// The parsed form of the simulated SQL: tokens, expressions and SELECT statements. Built by
// sql_parser, read by sql_select. Plain data; any thread.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "value.h"

namespace ocisim {

enum class token_kind_t { end, identifier, quoted_identifier, string, number, bind, symbol };

struct token_t {
  token_kind_t kind = token_kind_t::end;
  std::string text;  // identifiers upper-cased; strings without quotes; binds without colon
  size_t offset = 0;
};

struct select_t;

struct expr_t {
  enum class op_t {
    literal,
    column,     // qualifier (may be empty) and name
    bind,       // name
    function,   // name, args; count_star for COUNT(*)
    cast,       // args[0], name is the target type
    subquery,   // scalar subquery
    negate,
    add, subtract, multiply, divide, concat,
    equal, not_equal, less, less_equal, greater, greater_equal,
    and_, or_, not_,
    like,       // args: value, pattern[, escape]
    is_null,
    in_list,    // args[0] in args[1..]
    between,    // args: value, low, high
  };
  op_t op = op_t::literal;
  value_t literal;
  std::string qualifier;
  std::string name;
  std::vector<std::shared_ptr<expr_t>> args;
  std::shared_ptr<select_t> subquery;
  bool negated = false;     // NOT LIKE, IS NOT NULL, NOT IN, NOT BETWEEN
  bool distinct = false;    // COUNT(DISTINCT x)
  bool count_star = false;  // COUNT(*)

  // Where a column was last found, so that a row after the first finds it at once: valid
  // for the FROM list `resolved_in` only. Filled during evaluation, on one thread.
  mutable const void* resolved_in = nullptr;
  mutable size_t resolved_table = 0;
  mutable size_t resolved_column = 0;
};
using expr_p = std::shared_ptr<expr_t>;

struct select_item_t {
  expr_p expr;             // null for a star
  std::string alias;
  bool star = false;
  std::string star_qualifier;  // T.* names its table
};

struct table_ref_t {
  std::string name;   // upper-case, without schema
  std::string alias;  // upper-case; empty when none
};

struct order_item_t {
  expr_p expr;
  bool descending = false;
};

struct select_t {
  bool distinct = false;
  std::vector<select_item_t> items;
  std::vector<table_ref_t> from;
  expr_p where;
  std::vector<order_item_t> order_by;
};

}  // namespace ocisim
