// The rules for values filled into SQL templates, tried with hostile values: a number is digits
// and nothing else, a literal's apostrophes are doubled so that it cannot be ended early, an
// identifier is double-quoted with its quotes doubled.
#include "oracle/client/sql_text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace specific::oracle::sql;

TEST(SqlDecimalNumber, DigitsAloneAreANumber) {
  EXPECT_TRUE(is_decimal_number(std::string("0")));
  EXPECT_TRUE(is_decimal_number(std::string("1234567890123456789012345")));
  EXPECT_TRUE(is_decimal_number(std::u16string(u"42")));
}

TEST(SqlDecimalNumber, AnythingBesideDigitsIsNoNumber) {
  for (const char* text : {"1 OR 1=1", "1; DROP TABLE x", "1--", "-1", "+1", "1.5", "1e3", " 1",
                           "1 ", "0x10", "", "'1'", "1)", "NULL"}) {
    EXPECT_FALSE(is_decimal_number(std::string(text))) << text;
  }
  EXPECT_FALSE(is_decimal_number(std::u16string(u"")));
  EXPECT_FALSE(is_decimal_number(std::u16string(u"1 OR 1=1")));
  // Digits of other scripts are not the ASCII digits Oracle reads as a number.
  EXPECT_FALSE(is_decimal_number(std::u16string(u"\u0661\u0662")));
  EXPECT_FALSE(is_decimal_number(std::u16string(u"\uFF11")));
  EXPECT_FALSE(is_decimal_number(std::string("\xEF\xBC\x91")));
  EXPECT_FALSE(is_decimal_number(std::string("1\0" "2", 3)));
}

TEST(SqlLiteralText, ApostrophesAreDoubled) {
  EXPECT_EQ(literal_text("C:\\O'Brien\\arch\\x.arc"), "C:\\O''Brien\\arch\\x.arc");
  EXPECT_EQ(literal_text("'; DROP DIRECTORY x; --"), "''; DROP DIRECTORY x; --");
  EXPECT_EQ(literal_text("x' OR '1'='1"), "x'' OR ''1''=''1");
  EXPECT_EQ(literal_text("''"), "''''");
  EXPECT_EQ(literal_text("'"), "''");
}

TEST(SqlLiteralText, EverythingElsePassesUnchanged) {
  EXPECT_EQ(literal_text(""), "");
  EXPECT_EQ(literal_text("C:\\a \"b\"\\c"), "C:\\a \"b\"\\c");
  EXPECT_EQ(literal_text("\xD0\x96\xE2\x80\x99x"), "\xD0\x96\xE2\x80\x99x");  // U+2019 is no apostrophe
  EXPECT_EQ(literal_text("a\nb\r\n--c"), "a\nb\r\n--c");
  EXPECT_EQ(literal_text(std::string("a\0b", 3)), std::string("a\0b", 3));
}

// Reads a '...' literal from the start of `sql` the way Oracle's lexer does; answers what it
// holds and where the literal ended.
std::string read_literal(const std::string& sql, size_t& end) {
  std::string text;
  size_t i = 1;
  for (;;) {
    if (i >= sql.size()) {
      end = std::string::npos;
      return text;
    }
    if (sql[i] == '\'') {
      if (i + 1 < sql.size() && sql[i + 1] == '\'') {
        text += '\'';
        i += 2;
        continue;
      }
      end = i;
      return text;
    }
    text += sql[i++];
  }
}

TEST(SqlLiteralText, AQuotedLiteralReadsBackAsTheValueAndEndsWhereTheTemplateEndsIt) {
  for (const std::string value :
       {"C:\\O'Brien\\arch", "'; DROP TABLESPACE users INCLUDING CONTENTS; --", "x' OR '1'='1",
        "'", "''", "", "\xD0\x96'\xD0\x96", "a'||'b"}) {
    const std::string sql = "'" + literal_text(value) + "' rest";
    size_t end = 0;
    EXPECT_EQ(read_literal(sql, end), value);
    EXPECT_EQ(end, sql.size() - 6) << sql;
  }
}

TEST(SqlQuotedIdentifier, TheNameIsDoubleQuotedWithItsQuotesDoubled) {
  EXPECT_EQ(quoted_identifier("ORCL"), "\"ORCL\"");
  EXPECT_EQ(quoted_identifier("my pdb"), "\"my pdb\"");
  EXPECT_EQ(quoted_identifier("a\"b"), "\"a\"\"b\"");
  EXPECT_EQ(quoted_identifier("\"; DROP USER x; --"), "\"\"\"; DROP USER x; --\"");
  EXPECT_EQ(quoted_identifier(""), "\"\"");
  EXPECT_EQ(quoted_identifier("O'Brien"), "\"O'Brien\"");
  EXPECT_EQ(quoted_identifier("\xD0\x96"), "\"\xD0\x96\"");
}

}  // namespace
