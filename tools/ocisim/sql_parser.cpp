#include "sql_parser.h"

#include <cctype>
#include <cstring>

#include "errors.h"
#include "machine.h"

namespace ocisim {

namespace {

bool identifier_start(char c) { return std::isalpha(static_cast<unsigned char>(c)) != 0; }

bool identifier_part(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '$' || c == '#';
}

// Words that end an expression or a select item: they are never taken as aliases or columns.
bool reserved(const std::string& word) {
  static const char* const kWords[] = {
      "SELECT", "FROM", "WHERE", "AND", "OR", "NOT", "NULL", "IS", "LIKE", "IN", "BETWEEN",
      "AS", "ORDER", "BY", "GROUP", "HAVING", "ASC", "DESC", "DISTINCT", "ALL", "ESCAPE",
      "UNION", "MINUS", "INTERSECT", "CONNECT", "START", "FOR", "NULLS"};
  for (const char* w : kWords) {
    if (word == w) return true;
  }
  return false;
}

}  // namespace

std::vector<token_t> tokenize(const std::string& sql) {
  std::vector<token_t> tokens;
  size_t i = 0;
  while (i < sql.size()) {
    const char c = sql[i];
    if (std::isspace(static_cast<unsigned char>(c))) {
      ++i;
      continue;
    }
    if (c == '-' && i + 1 < sql.size() && sql[i + 1] == '-') {
      while (i < sql.size() && sql[i] != '\n') ++i;
      continue;
    }
    if (c == '/' && i + 1 < sql.size() && sql[i + 1] == '*') {
      const size_t close = sql.find("*/", i + 2);
      i = close == std::string::npos ? sql.size() : close + 2;
      continue;
    }
    token_t token;
    token.offset = i;
    if (identifier_start(c)) {
      size_t j = i;
      while (j < sql.size() && identifier_part(sql[j])) ++j;
      token.kind = token_kind_t::identifier;
      token.text = upper(sql.substr(i, j - i));
      i = j;
    } else if (c == '"') {
      const size_t close = sql.find('"', i + 1);
      if (close == std::string::npos) throw ora(1740);
      // Oracle lets no double quote into an identifier, not even a doubled one: a quote right
      // after the closing one is refused rather than read as a quote inside the name, so a name
      // built to break out of its quotes never becomes two tokens.
      if (close + 1 < sql.size() && sql[close + 1] == '"') throw ora(25716);
      if (close == i + 1) throw ora(1741);
      token.kind = token_kind_t::quoted_identifier;
      token.text = sql.substr(i + 1, close - i - 1);
      i = close + 1;
    } else if (c == '\'') {
      std::string text;
      size_t j = i + 1;
      for (;;) {
        if (j >= sql.size()) throw ora(1756);
        if (sql[j] == '\'') {
          if (j + 1 < sql.size() && sql[j + 1] == '\'') {
            text += '\'';
            j += 2;
            continue;
          }
          break;
        }
        text += sql[j++];
      }
      token.kind = token_kind_t::string;
      token.text = text;
      i = j + 1;
    } else if (std::isdigit(static_cast<unsigned char>(c)) ||
               (c == '.' && i + 1 < sql.size() && std::isdigit(static_cast<unsigned char>(sql[i + 1])))) {
      size_t j = i;
      while (j < sql.size() && (std::isdigit(static_cast<unsigned char>(sql[j])) || sql[j] == '.')) ++j;
      if (j < sql.size() && (sql[j] == 'e' || sql[j] == 'E')) {
        size_t k = j + 1;
        if (k < sql.size() && (sql[k] == '+' || sql[k] == '-')) ++k;
        if (k < sql.size() && std::isdigit(static_cast<unsigned char>(sql[k]))) {
          j = k;
          while (j < sql.size() && std::isdigit(static_cast<unsigned char>(sql[j]))) ++j;
        }
      }
      token.kind = token_kind_t::number;
      token.text = sql.substr(i, j - i);
      i = j;
    } else if (c == ':' && i + 1 < sql.size() &&
               (identifier_part(sql[i + 1]) || std::isdigit(static_cast<unsigned char>(sql[i + 1])))) {
      size_t j = i + 1;
      while (j < sql.size() && identifier_part(sql[j])) ++j;
      token.kind = token_kind_t::bind;
      token.text = upper(sql.substr(i + 1, j - i - 1));
      i = j;
    } else {
      static const char* const kTwo[] = {"||", "<>", "!=", "^=", "<=", ">=", ":="};
      token.kind = token_kind_t::symbol;
      bool matched = false;
      for (const char* two : kTwo) {
        if (sql.compare(i, 2, two) == 0) {
          token.text = two;
          i += 2;
          matched = true;
          break;
        }
      }
      if (!matched) {
        if (std::strchr("(),.*+-/=<>;%", c) == nullptr || c == '\0') throw ora(911);
        token.text = std::string(1, c);
        ++i;
      }
    }
    tokens.push_back(token);
  }
  token_t end;
  end.offset = sql.size();
  tokens.push_back(end);
  return tokens;
}

const token_t& token_reader_t::peek(size_t ahead) const {
  const size_t at = position_ + ahead;
  return at < tokens_.size() ? tokens_[at] : tokens_.back();
}

token_t token_reader_t::next() {
  token_t token = peek();
  if (position_ + 1 < tokens_.size()) ++position_;
  return token;
}

bool token_reader_t::is_word(const char* word, size_t ahead) const {
  const token_t& token = peek(ahead);
  return token.kind == token_kind_t::identifier && token.text == word;
}

bool token_reader_t::is_symbol(const char* symbol, size_t ahead) const {
  const token_t& token = peek(ahead);
  return token.kind == token_kind_t::symbol && token.text == symbol;
}

bool token_reader_t::accept_word(const char* word) {
  if (!is_word(word)) return false;
  next();
  return true;
}

bool token_reader_t::accept_symbol(const char* symbol) {
  if (!is_symbol(symbol)) return false;
  next();
  return true;
}

namespace {

expr_p make(expr_t::op_t op, std::vector<expr_p> args = {}) {
  auto e = std::make_shared<expr_t>();
  e->op = op;
  e->args = std::move(args);
  return e;
}

void expect_close(token_reader_t& reader) {
  if (!reader.accept_symbol(")")) throw ora(907);
}

expr_p parse_or(token_reader_t& reader);

expr_p parse_primary(token_reader_t& reader) {
  const token_t& token = reader.peek();
  switch (token.kind) {
    case token_kind_t::number: {
      auto e = make(expr_t::op_t::literal);
      if (!parse_number(reader.next().text, e->literal)) throw ora(1722);
      return e;
    }
    case token_kind_t::string: {
      auto e = make(expr_t::op_t::literal);
      e->literal = value_t::of_text(reader.next().text);
      return e;
    }
    case token_kind_t::bind: {
      auto e = make(expr_t::op_t::bind);
      e->name = reader.next().text;
      return e;
    }
    case token_kind_t::symbol:
      if (reader.accept_symbol("(")) {
        if (reader.is_word("SELECT")) {
          auto e = make(expr_t::op_t::subquery);
          e->subquery = std::make_shared<select_t>(parse_query(reader));
          expect_close(reader);
          return e;
        }
        expr_p inner = parse_or(reader);
        expect_close(reader);
        return inner;
      }
      throw ora(936);
    case token_kind_t::quoted_identifier:
    case token_kind_t::identifier:
      break;
    case token_kind_t::end:
      throw ora(936);
  }
  if (token.kind == token_kind_t::identifier && token.text == "NULL") {
    reader.next();
    return make(expr_t::op_t::literal);
  }
  if (token.kind == token_kind_t::identifier && reserved(token.text)) throw ora(936);
  const std::string first = reader.next().text;
  if (first == "CAST" && reader.accept_symbol("(")) {
    auto e = make(expr_t::op_t::cast, {parse_or(reader)});
    if (!reader.accept_word("AS")) throw ora(905);
    e->name = reader.next().text;
    if (reader.accept_symbol("(")) {  // VARCHAR2(30), NUMBER(10,2): the size does not matter
      while (!reader.at_end() && !reader.is_symbol(")")) reader.next();
      expect_close(reader);
    }
    expect_close(reader);
    return e;
  }
  if (reader.accept_symbol("(")) {
    auto e = make(expr_t::op_t::function);
    e->name = first;
    if (reader.accept_symbol("*")) {
      e->count_star = true;
    } else if (!reader.is_symbol(")")) {
      if (reader.accept_word("DISTINCT")) e->distinct = true;
      else reader.accept_word("ALL");
      e->args.push_back(parse_or(reader));
      while (reader.accept_symbol(",")) e->args.push_back(parse_or(reader));
    }
    expect_close(reader);
    return e;
  }
  auto e = make(expr_t::op_t::column);
  if (reader.is_symbol(".") && reader.peek(1).kind != token_kind_t::symbol) {
    reader.next();
    e->qualifier = first;
    e->name = reader.next().text;
  } else {
    e->name = first;
  }
  return e;
}

expr_p parse_unary(token_reader_t& reader) {
  if (reader.accept_symbol("-")) return make(expr_t::op_t::negate, {parse_unary(reader)});
  if (reader.accept_symbol("+")) return parse_unary(reader);
  return parse_primary(reader);
}

expr_p parse_multiplicative(token_reader_t& reader) {
  expr_p left = parse_unary(reader);
  for (;;) {
    if (reader.accept_symbol("*")) {
      left = make(expr_t::op_t::multiply, {left, parse_unary(reader)});
    } else if (reader.accept_symbol("/")) {
      left = make(expr_t::op_t::divide, {left, parse_unary(reader)});
    } else {
      return left;
    }
  }
}

expr_p parse_additive(token_reader_t& reader) {
  expr_p left = parse_multiplicative(reader);
  for (;;) {
    if (reader.accept_symbol("+")) {
      left = make(expr_t::op_t::add, {left, parse_multiplicative(reader)});
    } else if (reader.accept_symbol("-")) {
      left = make(expr_t::op_t::subtract, {left, parse_multiplicative(reader)});
    } else if (reader.accept_symbol("||")) {
      left = make(expr_t::op_t::concat, {left, parse_multiplicative(reader)});
    } else {
      return left;
    }
  }
}

expr_p parse_predicate(token_reader_t& reader) {
  expr_p left = parse_additive(reader);
  static const std::pair<const char*, expr_t::op_t> kComparisons[] = {
      {"=", expr_t::op_t::equal},          {"<>", expr_t::op_t::not_equal},
      {"!=", expr_t::op_t::not_equal},     {"^=", expr_t::op_t::not_equal},
      {"<=", expr_t::op_t::less_equal},    {">=", expr_t::op_t::greater_equal},
      {"<", expr_t::op_t::less},           {">", expr_t::op_t::greater}};
  for (const auto& comparison : kComparisons) {
    if (reader.accept_symbol(comparison.first)) {
      return make(comparison.second, {left, parse_additive(reader)});
    }
  }
  if (reader.accept_word("IS")) {
    auto e = make(expr_t::op_t::is_null, {left});
    e->negated = reader.accept_word("NOT");
    if (!reader.accept_word("NULL")) throw ora(908);
    return e;
  }
  const bool negated = reader.is_word("NOT") &&
                       (reader.is_word("LIKE", 1) || reader.is_word("IN", 1) ||
                        reader.is_word("BETWEEN", 1));
  if (negated) reader.next();
  if (reader.accept_word("LIKE")) {
    auto e = make(expr_t::op_t::like, {left, parse_additive(reader)});
    if (reader.accept_word("ESCAPE")) e->args.push_back(parse_additive(reader));
    e->negated = negated;
    return e;
  }
  if (reader.accept_word("IN")) {
    if (!reader.accept_symbol("(")) throw ora(906);
    auto e = make(expr_t::op_t::in_list, {left});
    e->args.push_back(parse_additive(reader));
    while (reader.accept_symbol(",")) e->args.push_back(parse_additive(reader));
    expect_close(reader);
    e->negated = negated;
    return e;
  }
  if (reader.accept_word("BETWEEN")) {
    expr_p low = parse_additive(reader);
    if (!reader.accept_word("AND")) throw ora(905);
    auto e = make(expr_t::op_t::between, {left, low, parse_additive(reader)});
    e->negated = negated;
    return e;
  }
  return left;
}

expr_p parse_not(token_reader_t& reader) {
  if (reader.accept_word("NOT")) return make(expr_t::op_t::not_, {parse_not(reader)});
  return parse_predicate(reader);
}

expr_p parse_and(token_reader_t& reader) {
  expr_p left = parse_not(reader);
  while (reader.accept_word("AND")) left = make(expr_t::op_t::and_, {left, parse_not(reader)});
  return left;
}

expr_p parse_or(token_reader_t& reader) {
  expr_p left = parse_and(reader);
  while (reader.accept_word("OR")) left = make(expr_t::op_t::or_, {left, parse_and(reader)});
  return left;
}

// An alias is a plain word that is not a keyword, or a quoted name.
bool take_alias(token_reader_t& reader, std::string& alias) {
  const token_t& token = reader.peek();
  if (token.kind == token_kind_t::quoted_identifier ||
      (token.kind == token_kind_t::identifier && !reserved(token.text))) {
    alias = reader.next().text;
    return true;
  }
  return false;
}

}  // namespace

expr_p parse_expression(token_reader_t& reader) { return parse_or(reader); }

select_t parse_query(token_reader_t& reader) {
  if (!reader.accept_word("SELECT")) throw ora(900);
  select_t query;
  if (reader.accept_word("DISTINCT") || reader.accept_word("UNIQUE")) {
    query.distinct = true;
  } else {
    reader.accept_word("ALL");
  }
  do {
    select_item_t item;
    if (reader.accept_symbol("*")) {
      item.star = true;
    } else if (reader.peek().kind == token_kind_t::identifier && reader.is_symbol(".", 1) &&
               reader.is_symbol("*", 2)) {
      item.star = true;
      item.star_qualifier = reader.next().text;
      reader.next();
      reader.next();
    } else {
      item.expr = parse_or(reader);
      if (reader.accept_word("AS")) {
        if (!take_alias(reader, item.alias)) throw ora(923);
      } else {
        take_alias(reader, item.alias);
      }
    }
    query.items.push_back(std::move(item));
  } while (reader.accept_symbol(","));

  if (!reader.accept_word("FROM")) throw ora(923);
  do {
    table_ref_t table;
    const token_t name = reader.next();
    if (name.kind != token_kind_t::identifier && name.kind != token_kind_t::quoted_identifier) {
      throw ora(903);
    }
    table.name = name.text;
    if (reader.accept_symbol(".")) table.name = reader.next().text;  // SYS.V_$..., owner dropped
    take_alias(reader, table.alias);
    query.from.push_back(table);
  } while (reader.accept_symbol(","));

  if (reader.accept_word("WHERE")) query.where = parse_or(reader);
  if (reader.accept_word("ORDER")) {
    if (!reader.accept_word("BY")) throw ora(924);
    do {
      order_item_t item;
      item.expr = parse_or(reader);
      if (reader.accept_word("DESC")) {
        item.descending = true;
      } else {
        reader.accept_word("ASC");
      }
      query.order_by.push_back(item);
    } while (reader.accept_symbol(","));
  }
  return query;
}

select_t parse_select(const std::string& sql) {
  token_reader_t reader(tokenize(sql));
  select_t query = parse_query(reader);
  if (!reader.at_end()) throw ora(933);
  return query;
}

}  // namespace ocisim
