#include "sql_select.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "errors.h"
#include "machine.h"

namespace ocisim {

namespace {

struct source_t {
  std::string name;
  std::string alias;
  table_t table;
};

struct scope_t {
  const std::vector<source_t>* sources = nullptr;
  std::vector<size_t> row;  // the row of each source
  std::int64_t rownum = 0;
  const scope_t* outer = nullptr;
};

// The rows that passed the filter: for each, the row number in every source of the FROM list.
struct picked_t {
  size_t width = 0;
  std::vector<size_t> rows;
  size_t size() const { return width == 0 ? 0 : rows.size() / width; }
  void load(size_t index, scope_t& scope) const {
    scope.row.assign(rows.begin() + static_cast<std::ptrdiff_t>(index * width),
                     rows.begin() + static_cast<std::ptrdiff_t>((index + 1) * width));
    scope.rownum = static_cast<std::int64_t>(index) + 1;
  }
};

// The rows an aggregate runs over, with the scope they are evaluated in.
struct group_t {
  const picked_t* picked;
  const scope_t* base;
};

bool is_aggregate(const std::string& name) {
  return name == "MAX" || name == "MIN" || name == "COUNT" || name == "SUM" || name == "AVG";
}

bool has_aggregate(const expr_t& e) {
  if (e.op == expr_t::op_t::function && is_aggregate(e.name)) return true;
  for (const expr_p& a : e.args) {
    if (a && has_aggregate(*a)) return true;
  }
  return false;
}

const char* type_name(const value_t& v) {
  switch (v.kind) {
    case value_t::kind_t::number: return "NUMBER";
    case value_t::kind_t::date: return "DATE";
    case value_t::kind_t::timestamp: return "TIMESTAMP";
    default: return "CHAR";
  }
}

value_t to_number(const value_t& v) {
  if (v.is_null() || v.kind == value_t::kind_t::number) return v;
  if (v.kind == value_t::kind_t::text) {
    value_t number;
    if (!parse_number(v.text, number)) throw ora(1722);
    return number;
  }
  throw ora(932, {"NUMBER", type_name(v)});
}

bool is_date(const value_t& v) {
  return v.kind == value_t::kind_t::date || v.kind == value_t::kind_t::timestamp;
}

// Both values are not NULL. Numbers win over text, as Oracle converts text to a number when
// the other side is one.
int compare_values(const value_t& a, const value_t& b) {
  if (a.kind == value_t::kind_t::number || b.kind == value_t::kind_t::number) {
    const value_t x = to_number(a);
    const value_t y = to_number(b);
    if (x.integral && y.integral) return x.integer < y.integer ? -1 : x.integer > y.integer ? 1 : 0;
    return x.real < y.real ? -1 : x.real > y.real ? 1 : 0;
  }
  if (is_date(a) && is_date(b)) return a.seconds < b.seconds ? -1 : a.seconds > b.seconds ? 1 : 0;
  const std::string x = to_text(a);
  const std::string y = to_text(b);
  return x < y ? -1 : x > y ? 1 : 0;
}

value_t arithmetic(expr_t::op_t op, const value_t& a, const value_t& b) {
  if (a.is_null() || b.is_null()) return value_t::null();
  if (is_date(a) || is_date(b)) {
    if (op == expr_t::op_t::subtract && is_date(a) && is_date(b)) {
      return value_t::of_real(static_cast<double>(a.seconds - b.seconds) / 86400.0);
    }
    if ((op == expr_t::op_t::add || op == expr_t::op_t::subtract) && is_date(a) && !is_date(b)) {
      const double days = to_number(b).real;
      const double sign = op == expr_t::op_t::add ? 1.0 : -1.0;
      return value_t::of_date(a.seconds + static_cast<std::int64_t>(std::llround(sign * days * 86400.0)),
                              a.kind == value_t::kind_t::timestamp);
    }
    if (op == expr_t::op_t::add && is_date(b) && !is_date(a)) return arithmetic(op, b, a);
    throw ora(932, {"NUMBER", "DATE"});
  }
  const value_t x = to_number(a);
  const value_t y = to_number(b);
  if (x.integral && y.integral) {
    std::int64_t result = 0;
    bool overflow = false;
    switch (op) {
      case expr_t::op_t::add: overflow = __builtin_add_overflow(x.integer, y.integer, &result); break;
      case expr_t::op_t::subtract: overflow = __builtin_sub_overflow(x.integer, y.integer, &result); break;
      case expr_t::op_t::multiply: overflow = __builtin_mul_overflow(x.integer, y.integer, &result); break;
      default: overflow = true; break;
    }
    if (!overflow) return value_t::of_integer(result);
  }
  switch (op) {
    case expr_t::op_t::add: return value_t::of_real(x.real + y.real);
    case expr_t::op_t::subtract: return value_t::of_real(x.real - y.real);
    case expr_t::op_t::multiply: return value_t::of_real(x.real * y.real);
    case expr_t::op_t::divide:
      if (y.real == 0) throw ora(1476);
      return value_t::of_real(x.real / y.real);
    default: return value_t::null();
  }
}

std::string quoted_name(const expr_t& e) {
  return (e.qualifier.empty() ? std::string() : "\"" + e.qualifier + "\".") + "\"" + e.name + "\"";
}

class evaluator_t {
 public:
  explicit evaluator_t(sql_context_t& context) : context_(context) {}

  table_t run(const select_t& query, const scope_t* outer);
  value_t value(const expr_t& e, const scope_t& scope, const group_t* group);
  int truth(const expr_t& e, const scope_t& scope, const group_t* group);

 private:
  const table_t& load(const std::string& name);
  value_t column(const expr_t& e, const scope_t& scope, const group_t* group);
  value_t function(const expr_t& e, const scope_t& scope, const group_t* group);
  value_t aggregate(const expr_t& e, const group_t& group);
  value_t subquery(const expr_t& e, const scope_t& scope);

  sql_context_t& context_;
  std::map<std::string, table_t> tables_;
  std::map<const select_t*, value_t> constant_subqueries_;
};

const table_t& evaluator_t::load(const std::string& name) {
  auto found = tables_.find(name);
  if (found == tables_.end()) found = tables_.emplace(name, context_.table(name)).first;
  return found->second;
}

value_t evaluator_t::column(const expr_t& e, const scope_t& scope, const group_t* group) {
  if (group == nullptr && scope.sources != nullptr && e.resolved_in == scope.sources) {
    return (*scope.sources)[e.resolved_table].table.rows[scope.row[e.resolved_table]][e.resolved_column];
  }
  if (e.qualifier.empty() && e.name == "ROWNUM") return value_t::of_integer(scope.rownum);
  for (const scope_t* s = &scope; s != nullptr; s = s->outer) {
    if (s->sources == nullptr) continue;
    const value_t* found = nullptr;
    size_t found_table = 0;
    size_t found_column = 0;
    bool table_named = false;
    for (size_t t = 0; t < s->sources->size(); ++t) {
      const source_t& source = (*s->sources)[t];
      if (!e.qualifier.empty()) {
        const std::string& label = source.alias.empty() ? source.name : source.alias;
        if (label != e.qualifier) continue;
        table_named = true;
      }
      const auto& columns = source.table.columns;
      const auto at = std::find(columns.begin(), columns.end(), e.name);
      if (at == columns.end()) continue;
      if (found != nullptr) throw ora(918);
      if (group != nullptr && s == &scope) throw ora(937);
      found_table = t;
      found_column = static_cast<size_t>(at - columns.begin());
      found = &source.table.rows[s->row[t]][found_column];
    }
    if (found != nullptr) {
      if (s == &scope) {
        e.resolved_in = scope.sources;
        e.resolved_table = found_table;
        e.resolved_column = found_column;
      }
      return *found;
    }
    if (table_named) break;
  }
  if (e.qualifier.empty()) {
    bool known = false;
    value_t pseudo = context_.pseudo_column(e.name, known);
    if (known) return pseudo;
  }
  throw ora(904, {quoted_name(e)});
}

value_t evaluator_t::subquery(const expr_t& e, const scope_t& scope) {
  const auto cached = constant_subqueries_.find(e.subquery.get());
  if (cached != constant_subqueries_.end()) return cached->second;
  table_t result;
  bool constant = true;
  try {
    result = run(*e.subquery, nullptr);
  } catch (const ora_error_t& error) {
    if (error.code() != 904) throw;
    constant = false;  // it names a column of the outer query
    result = run(*e.subquery, &scope);
  }
  if (result.columns.size() != 1) throw ora(913);
  if (result.rows.size() > 1) throw ora(1427);
  const value_t v = result.rows.empty() ? value_t::null() : result.rows[0][0];
  if (constant) constant_subqueries_[e.subquery.get()] = v;
  return v;
}

value_t evaluator_t::aggregate(const expr_t& e, const group_t& group) {
  if (e.name == "COUNT" && e.count_star) {
    return value_t::of_integer(static_cast<std::int64_t>(group.picked->size()));
  }
  if (e.args.size() != 1) throw ora(909);
  std::vector<value_t> values;
  scope_t s = *group.base;
  for (size_t i = 0; i < group.picked->size(); ++i) {
    group.picked->load(i, s);
    value_t v = value(*e.args[0], s, nullptr);
    if (!v.is_null()) values.push_back(v);
  }
  if (e.distinct) {
    std::vector<value_t> unique;
    for (const value_t& v : values) {
      bool seen = false;
      for (const value_t& u : unique) seen = seen || compare_values(u, v) == 0;
      if (!seen) unique.push_back(v);
    }
    values.swap(unique);
  }
  if (e.name == "COUNT") return value_t::of_integer(static_cast<std::int64_t>(values.size()));
  if (values.empty()) return value_t::null();
  if (e.name == "MAX" || e.name == "MIN") {
    value_t best = values[0];
    for (const value_t& v : values) {
      const int order = compare_values(v, best);
      if ((e.name == "MAX" && order > 0) || (e.name == "MIN" && order < 0)) best = v;
    }
    return best;
  }
  value_t sum = value_t::of_integer(0);
  for (const value_t& v : values) sum = arithmetic(expr_t::op_t::add, sum, v);
  if (e.name == "SUM") return sum;
  return arithmetic(expr_t::op_t::divide, sum, value_t::of_integer(static_cast<std::int64_t>(values.size())));
}

value_t evaluator_t::function(const expr_t& e, const scope_t& scope, const group_t* group) {
  if (is_aggregate(e.name)) {
    if (group == nullptr) throw ora(934);
    return aggregate(e, *group);
  }
  std::vector<value_t> a;
  for (const expr_p& arg : e.args) a.push_back(value(*arg, scope, group));
  const std::string& f = e.name;
  auto need = [&](size_t low, size_t high) {
    if (a.size() < low) throw ora(938);
    if (a.size() > high) throw ora(939);
  };
  if (f == "NVL") {
    need(2, 2);
    return a[0].is_null() ? a[1] : a[0];
  }
  if (f == "DECODE") {
    need(3, 255);
    for (size_t i = 1; i + 1 < a.size(); i += 2) {
      const bool both_null = a[0].is_null() && a[i].is_null();
      if (both_null || (!a[0].is_null() && !a[i].is_null() && compare_values(a[0], a[i]) == 0)) {
        return a[i + 1];
      }
    }
    return a.size() % 2 == 0 ? a.back() : value_t::null();
  }
  if (f == "SYS_CONTEXT") {
    need(2, 3);
    return context_.sys_context(upper(to_text(a[0])), upper(to_text(a[1])));
  }
  if (f == "CONCAT") {
    need(2, 2);
    return value_t::of_text(to_text(a[0]) + to_text(a[1]));
  }
  for (const value_t& v : a) {
    if (v.is_null()) {
      need(1, 3);
      return value_t::null();  // every other function here gives NULL for a NULL argument
    }
  }
  if (f == "UPPER" || f == "LOWER") {
    need(1, 1);
    std::string text = to_text(a[0]);
    for (char& c : text) {
      if (f == "UPPER" && c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
      if (f == "LOWER" && c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    }
    return value_t::of_text(text);
  }
  if (f == "LENGTH") {
    need(1, 1);
    return value_t::of_integer(static_cast<std::int64_t>(to_text(a[0]).size()));
  }
  if (f == "SUBSTR") {
    need(2, 3);
    const std::string text = to_text(a[0]);
    std::int64_t start = static_cast<std::int64_t>(std::trunc(to_number(a[1]).real));
    const std::int64_t size = static_cast<std::int64_t>(text.size());
    if (start == 0) start = 1;
    if (start < 0) start = size + start + 1;
    if (start < 1 || start > size) return value_t::null();
    std::int64_t count = size - start + 1;
    if (a.size() == 3) count = std::min(count, static_cast<std::int64_t>(std::trunc(to_number(a[2]).real)));
    if (count < 1) return value_t::null();
    return value_t::of_text(text.substr(static_cast<size_t>(start - 1), static_cast<size_t>(count)));
  }
  if (f == "INSTR") {
    need(2, 2);
    const size_t at = to_text(a[0]).find(to_text(a[1]));
    return value_t::of_integer(at == std::string::npos ? 0 : static_cast<std::int64_t>(at) + 1);
  }
  if (f == "TRIM" || f == "LTRIM" || f == "RTRIM") {
    need(1, 1);
    std::string text = to_text(a[0]);
    if (f != "RTRIM") text.erase(0, text.find_first_not_of(' '));
    if (f != "LTRIM") {
      const size_t last = text.find_last_not_of(' ');
      text.erase(last == std::string::npos ? 0 : last + 1);
    }
    return value_t::of_text(text);
  }
  if (f == "REPLACE") {
    need(2, 3);
    std::string text = to_text(a[0]);
    const std::string from = to_text(a[1]);
    const std::string to = a.size() == 3 ? to_text(a[2]) : std::string();
    if (from.empty()) return value_t::of_text(text);
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
      text.replace(at, from.size(), to);
    }
    return value_t::of_text(text);
  }
  if (f == "TO_CHAR") {
    need(1, 2);
    if (is_date(a[0])) {
      return value_t::of_text(a.size() == 2 ? format_date(a[0].seconds, to_text(a[1])) : to_text(a[0]));
    }
    return value_t::of_text(to_text(a[0]));
  }
  if (f == "TO_NUMBER") {
    need(1, 1);
    return to_number(a[0]);
  }
  if (f == "SYS_EXTRACT_UTC") {
    need(1, 1);
    if (!is_date(a[0])) throw ora(932, {"TIMESTAMP", type_name(a[0])});
    return value_t::of_date(a[0].seconds - context_.time_zone_minutes() * 60LL, true);
  }
  if (f == "ABS") {
    need(1, 1);
    const value_t n = to_number(a[0]);
    return n.integral ? value_t::of_integer(n.integer < 0 ? -n.integer : n.integer)
                      : value_t::of_real(std::fabs(n.real));
  }
  if (f == "ROUND" || f == "TRUNC") {
    need(1, 2);
    if (is_date(a[0]) && a.size() == 1) {
      const std::int64_t day = a[0].seconds - ((a[0].seconds % 86400) + 86400) % 86400;
      return value_t::of_date(f == "TRUNC" ? day : day + (a[0].seconds - day >= 43200 ? 86400 : 0));
    }
    const double n = to_number(a[0]).real;
    const double scale = std::pow(10.0, a.size() == 2 ? std::trunc(to_number(a[1]).real) : 0.0);
    return value_t::of_real((f == "ROUND" ? std::round(n * scale) : std::trunc(n * scale)) / scale);
  }
  if (f == "MOD") {
    need(2, 2);
    const value_t x = to_number(a[0]);
    const value_t y = to_number(a[1]);
    if (y.real == 0) return x;
    if (x.integral && y.integral) return value_t::of_integer(x.integer % y.integer);
    return value_t::of_real(std::fmod(x.real, y.real));
  }
  throw ora(904, {"\"" + f + "\""});
}

value_t evaluator_t::value(const expr_t& e, const scope_t& scope, const group_t* group) {
  using op = expr_t::op_t;
  switch (e.op) {
    case op::literal: return e.literal;
    case op::column: return column(e, scope, group);
    case op::bind: return context_.bind_value(e.name);
    case op::function: return function(e, scope, group);
    case op::subquery: return subquery(e, scope);
    case op::negate: {
      const value_t v = value(*e.args[0], scope, group);
      return arithmetic(op::subtract, value_t::of_integer(0), v);
    }
    case op::add:
    case op::subtract:
    case op::multiply:
    case op::divide:
      return arithmetic(e.op, value(*e.args[0], scope, group), value(*e.args[1], scope, group));
    case op::concat:
      return value_t::of_text(to_text(value(*e.args[0], scope, group)) +
                              to_text(value(*e.args[1], scope, group)));
    case op::cast: {
      const value_t v = value(*e.args[0], scope, group);
      if (v.is_null()) return v;
      if (e.name == "TIMESTAMP" || e.name == "DATE") {
        if (!is_date(v)) throw ora(932, {e.name, type_name(v)});
        return value_t::of_date(v.seconds, e.name == "TIMESTAMP");
      }
      if (e.name == "NUMBER" || e.name == "INTEGER") return to_number(v);
      if (e.name == "VARCHAR2" || e.name == "VARCHAR" || e.name == "CHAR") {
        return value_t::of_text(to_text(v));
      }
      throw ora(902);
    }
    default:
      throw ora(920);  // a condition where a value belongs
  }
}

int evaluator_t::truth(const expr_t& e, const scope_t& scope, const group_t* group) {
  using op = expr_t::op_t;
  auto negate = [](int t) { return t < 0 ? t : 1 - t; };
  switch (e.op) {
    case op::and_: {
      const int l = truth(*e.args[0], scope, group);
      if (l == 0) return 0;
      const int r = truth(*e.args[1], scope, group);
      if (r == 0) return 0;
      return l == 1 && r == 1 ? 1 : -1;
    }
    case op::or_: {
      const int l = truth(*e.args[0], scope, group);
      if (l == 1) return 1;
      const int r = truth(*e.args[1], scope, group);
      if (r == 1) return 1;
      return l == 0 && r == 0 ? 0 : -1;
    }
    case op::not_: return negate(truth(*e.args[0], scope, group));
    case op::equal:
    case op::not_equal:
    case op::less:
    case op::less_equal:
    case op::greater:
    case op::greater_equal: {
      const value_t l = value(*e.args[0], scope, group);
      const value_t r = value(*e.args[1], scope, group);
      if (l.is_null() || r.is_null()) return -1;
      const int c = compare_values(l, r);
      switch (e.op) {
        case op::equal: return c == 0;
        case op::not_equal: return c != 0;
        case op::less: return c < 0;
        case op::less_equal: return c <= 0;
        case op::greater: return c > 0;
        default: return c >= 0;
      }
    }
    case op::is_null: {
      const bool null = value(*e.args[0], scope, group).is_null();
      return e.negated ? !null : null;
    }
    case op::like: {
      const value_t v = value(*e.args[0], scope, group);
      const value_t p = value(*e.args[1], scope, group);
      if (v.is_null() || p.is_null()) return -1;
      char escape = '\0';
      if (e.args.size() == 3) {
        const std::string text = to_text(value(*e.args[2], scope, group));
        if (text.size() != 1) throw ora(1425);
        escape = text[0];
      }
      const bool match = like_match(to_text(v), to_text(p), escape);
      return e.negated ? !match : match;
    }
    case op::in_list: {
      const value_t v = value(*e.args[0], scope, group);
      if (v.is_null()) return -1;
      int result = 0;
      for (size_t i = 1; i < e.args.size(); ++i) {
        const value_t item = value(*e.args[i], scope, group);
        if (item.is_null()) {
          result = -1;
        } else if (compare_values(v, item) == 0) {
          result = 1;
          break;
        }
      }
      return e.negated ? negate(result) : result;
    }
    case op::between: {
      const value_t v = value(*e.args[0], scope, group);
      const value_t low = value(*e.args[1], scope, group);
      const value_t high = value(*e.args[2], scope, group);
      if (v.is_null() || low.is_null() || high.is_null()) return -1;
      const int result = compare_values(v, low) >= 0 && compare_values(v, high) <= 0;
      return e.negated ? negate(result) : result;
    }
    default:
      throw ora(920);  // a value where a condition belongs
  }
}

std::string row_key(const std::vector<value_t>& row) {
  std::string key;
  for (const value_t& v : row) {
    key += std::to_string(static_cast<int>(v.kind)) + ":" + to_text(v) + '\x1f';
  }
  return key;
}

table_t evaluator_t::run(const select_t& query, const scope_t* outer) {
  std::vector<source_t> sources;
  for (const table_ref_t& ref : query.from) {
    sources.push_back(source_t{ref.name, ref.alias, load(ref.name)});
  }

  bool grouped = false;
  for (const select_item_t& item : query.items) {
    if (item.expr && has_aggregate(*item.expr)) grouped = true;
  }
  if (query.where && has_aggregate(*query.where)) throw ora(934);

  // The output columns: stars expand to their tables' columns in order.
  struct output_t {
    const expr_t* expr = nullptr;
    size_t source = 0;
    size_t column = 0;
  };
  std::vector<output_t> outputs;
  table_t result;
  for (const select_item_t& item : query.items) {
    if (!item.star) {
      outputs.push_back(output_t{item.expr.get(), 0, 0});
      result.columns.push_back(!item.alias.empty() ? item.alias
                               : item.expr->op == expr_t::op_t::column ? item.expr->name
                                                                       : std::string("EXPR"));
      continue;
    }
    if (grouped) throw ora(937);
    bool named = item.star_qualifier.empty();
    for (size_t t = 0; t < sources.size(); ++t) {
      const std::string& label = sources[t].alias.empty() ? sources[t].name : sources[t].alias;
      if (!item.star_qualifier.empty() && label != item.star_qualifier) continue;
      named = true;
      for (size_t c = 0; c < sources[t].table.columns.size(); ++c) {
        outputs.push_back(output_t{nullptr, t, c});
        result.columns.push_back(sources[t].table.columns[c]);
      }
    }
    if (!named) throw ora(904, {"\"" + item.star_qualifier + "\""});
  }

  // Join and filter: ROWNUM counts the rows that passed so far, so ROWNUM=1 keeps the first
  // and ROWNUM=2 keeps none, as in Oracle.
  picked_t picked;
  picked.width = sources.size();
  scope_t scope;
  scope.sources = &sources;
  scope.outer = outer;
  scope.row.assign(sources.size(), 0);
  bool empty = sources.empty();
  for (const source_t& s : sources) empty = empty || s.table.rows.empty();
  while (!empty) {
    scope.rownum = static_cast<std::int64_t>(picked.size()) + 1;
    if (!query.where || truth(*query.where, scope, nullptr) == 1) {
      picked.rows.insert(picked.rows.end(), scope.row.begin(), scope.row.end());
    }
    size_t t = sources.size();
    while (t > 0) {
      --t;
      if (++scope.row[t] < sources[t].table.rows.size()) break;
      scope.row[t] = 0;
      if (t == 0) empty = true;
    }
  }

  auto evaluate_row = [&](const scope_t& s, const group_t* group) {
    std::vector<value_t> row;
    row.reserve(outputs.size());
    for (const output_t& o : outputs) {
      row.push_back(o.expr != nullptr ? value(*o.expr, s, group)
                                      : sources[o.source].table.rows[s.row[o.source]][o.column]);
    }
    return row;
  };

  // Which picked row each result row came from; grouped results have the one group row.
  std::vector<size_t> origins;
  const group_t group{&picked, &scope};
  if (grouped) {
    scope.rownum = 1;
    result.rows.push_back(evaluate_row(scope, &group));
    origins.push_back(0);
  } else {
    result.rows.reserve(picked.size());
    for (size_t i = 0; i < picked.size(); ++i) {
      picked.load(i, scope);
      result.rows.push_back(evaluate_row(scope, nullptr));
      origins.push_back(i);
    }
  }

  if (query.distinct) {
    std::vector<std::vector<value_t>> unique;
    std::vector<size_t> unique_origins;
    std::set<std::string> seen;
    for (size_t i = 0; i < result.rows.size(); ++i) {
      if (!seen.insert(row_key(result.rows[i])).second) continue;
      unique.push_back(result.rows[i]);
      unique_origins.push_back(origins[i]);
    }
    result.rows.swap(unique);
    origins.swap(unique_origins);
  }

  if (!query.order_by.empty()) {
    std::vector<std::vector<value_t>> keys(result.rows.size());
    for (size_t r = 0; r < result.rows.size(); ++r) {
      for (const order_item_t& item : query.order_by) {
        const expr_t& e = *item.expr;
        if (e.op == expr_t::op_t::literal && e.literal.kind == value_t::kind_t::number) {
          const std::int64_t position = e.literal.integer;
          if (!e.literal.integral || position < 1 || position > static_cast<std::int64_t>(outputs.size())) {
            throw ora(1785);
          }
          keys[r].push_back(result.rows[r][static_cast<size_t>(position - 1)]);
          continue;
        }
        size_t alias = result.columns.size();
        if (e.op == expr_t::op_t::column && e.qualifier.empty()) {
          for (size_t c = 0; c < query.items.size() && c < result.columns.size(); ++c) {
            if (!query.items[c].star && query.items[c].alias == e.name) alias = c;
          }
        }
        if (alias < result.columns.size()) {
          keys[r].push_back(result.rows[r][alias]);
        } else if (grouped) {
          keys[r].push_back(value(e, scope, &group));
        } else {
          picked.load(origins[r], scope);
          keys[r].push_back(value(e, scope, nullptr));
        }
      }
    }
    std::vector<size_t> order(result.rows.size());
    for (size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::stable_sort(order.begin(), order.end(), [&](size_t x, size_t y) {
      for (size_t k = 0; k < query.order_by.size(); ++k) {
        const value_t& a = keys[x][k];
        const value_t& b = keys[y][k];
        const bool descending = query.order_by[k].descending;
        if (a.is_null() || b.is_null()) {
          if (a.is_null() == b.is_null()) continue;
          // NULL sorts as the largest value: last going up, first going down.
          return descending ? a.is_null() : b.is_null();
        }
        const int c = compare_values(a, b);
        if (c != 0) return descending ? c > 0 : c < 0;
      }
      return false;
    });
    std::vector<std::vector<value_t>> sorted;
    for (size_t i : order) sorted.push_back(std::move(result.rows[i]));
    result.rows.swap(sorted);
  }
  return result;
}

}  // namespace

bool like_match(const std::string& text, const std::string& pattern, char escape) {
  // The pattern as elements: a literal byte, '_' (any one) or '%' (any run).
  struct element_t {
    char kind;  // 'c', '_', '%'
    char c;
  };
  std::vector<element_t> elements;
  for (size_t i = 0; i < pattern.size(); ++i) {
    const char c = pattern[i];
    if (escape != '\0' && c == escape) {
      if (i + 1 >= pattern.size()) throw ora(1424);
      elements.push_back(element_t{'c', pattern[++i]});
    } else if (c == '%' || c == '_') {
      elements.push_back(element_t{c, c});
    } else {
      elements.push_back(element_t{'c', c});
    }
  }
  size_t t = 0;
  size_t p = 0;
  size_t star = std::string::npos;
  size_t resume = 0;
  while (t < text.size()) {
    if (p < elements.size() && elements[p].kind == '%') {
      star = p++;
      resume = t;
    } else if (p < elements.size() &&
               (elements[p].kind == '_' || (elements[p].kind == 'c' && elements[p].c == text[t]))) {
      ++p;
      ++t;
    } else if (star != std::string::npos) {
      p = star + 1;
      t = ++resume;
    } else {
      return false;
    }
  }
  while (p < elements.size() && elements[p].kind == '%') ++p;
  return p == elements.size();
}

table_t run_select(const select_t& query, sql_context_t& context) {
  evaluator_t evaluator(context);
  return evaluator.run(query, nullptr);
}

value_t evaluate_constant(const expr_t& expr, sql_context_t& context) {
  evaluator_t evaluator(context);
  scope_t scope;
  return evaluator.value(expr, scope, nullptr);
}

}  // namespace ocisim
