// COracleQuery runs statements with a fixed number of text columns on one session and returns
// the rows as wide strings; COracleQueryResult holds them. Every column is fetched as text of
// at most 1023 bytes; a row with a NULL or a longer value in any column is left out. Bytes are
// widened one by one, without character-set decoding. Used on the operation's thread only,
// with no lock and no time limit.
#pragma once
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "oracle/client/oracle_handle.h"

namespace specific::oracle {

using oracle_row_t = std::vector<std::u16string>;

// The size of each column's buffer, terminating NUL included.
constexpr sb4 kOracleColumnSize = 1024;

class COracleQueryResult {
 public:
  explicit COracleQueryResult(std::vector<oracle_row_t> rows);

  // The row at the cursor, which then moves on; nothing at the end.
  std::optional<oracle_row_t> next_row();

  const std::vector<oracle_row_t>& rows() const { return rows_; }
  uint32_t cursor() const { return cursor_; }

 private:
  std::vector<oracle_row_t> rows_;
  uint32_t cursor_ = 0;
};

class COracleQuery {
 public:
  // Keeps the session's environment, service context and user session alive.
  COracleQuery(std::shared_ptr<COracleEnv> env, std::shared_ptr<COracleHandle> svcCtx,
               std::shared_ptr<COracleHandle> userSession);

  // Prepares, defines `columnCount` text columns, executes and fetches row by row. A fetch
  // that fails ends the result quietly with the rows so far. Failures before the fetch throw
  // with the trace line "Failed to exec query [<sql>].".
  std::shared_ptr<COracleQueryResult> exec(const std::string& sql, int32_t columnCount,
                                           bool upperCase);
  // A copy of the first row, or an empty vector for an empty result.
  oracle_row_t first_row(const std::string& sql, int32_t columnCount, bool upperCase);
  // The first column of the first row, or "".
  std::u16string single_value(const std::string& sql, bool upperCase);
  // A statement without columns; the result is dropped.
  void run(const std::string& sql);

 private:
  std::shared_ptr<COracleEnv> env_;
  std::shared_ptr<COracleHandle> svcCtx_;
  std::shared_ptr<COracleHandle> userSession_;
};

// A column's bytes as wide text: up to the first NUL or the end of `size` bytes, each byte one
// unit, sign-extended (0x80 becomes U+FF80); with `upperCase`, each unit then goes through
// towupper, which upper-cases the ASCII letters.
std::u16string widen_column(const char* bytes, size_t size, bool upperCase);

}  // namespace specific::oracle
