// Reads the SQL the simulated server understands: a tokenizer for Oracle's lexical rules and
// a parser for SELECT statements (select list, comma joins with aliases, WHERE with AND, OR,
// NOT, comparisons, LIKE, IS NULL, IN, BETWEEN, arithmetic and ||, function calls, CAST,
// scalar subqueries, ORDER BY). Syntax errors raise the ORA- error Oracle gives. Any thread.
#pragma once
#include <string>
#include <vector>

#include "sql_ast.h"

namespace ocisim {

// The tokens of a statement; raises ORA-00911 for a character Oracle rejects and ORA-01756
// for a string without its closing quote.
std::vector<token_t> tokenize(const std::string& sql);

// Parses a whole SELECT statement (a trailing semicolon is refused as Oracle refuses it).
select_t parse_select(const std::string& sql);

class token_reader_t {
 public:
  explicit token_reader_t(std::vector<token_t> tokens) : tokens_(std::move(tokens)) {}
  const token_t& peek(size_t ahead = 0) const;
  token_t next();
  bool at_end() const { return peek().kind == token_kind_t::end; }
  // True, and the token is taken, when the next token is that keyword or symbol.
  bool accept_word(const char* word);
  bool accept_symbol(const char* symbol);
  bool is_word(const char* word, size_t ahead = 0) const;
  bool is_symbol(const char* symbol, size_t ahead = 0) const;

 private:
  std::vector<token_t> tokens_;
  size_t position_ = 0;
};

// Expression and query parsing on a token stream, for statements that embed them.
expr_p parse_expression(token_reader_t& reader);
select_t parse_query(token_reader_t& reader);

}  // namespace ocisim
