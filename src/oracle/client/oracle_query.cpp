#include "oracle/client/oracle_query.h"

#include <cwctype>

#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/text/convert.h"
#include "oracle/client/ora_interface.h"

namespace specific::oracle {

// COracleQueryResult ------------------------------------------------------------------------

COracleQueryResult::COracleQueryResult(std::vector<oracle_row_t> rows) : rows_(std::move(rows)) {}

std::optional<oracle_row_t> COracleQueryResult::next_row() {
  if (rows_.empty() || cursor_ >= rows_.size()) return std::nullopt;
  return rows_[cursor_++];
}

// Column text -------------------------------------------------------------------------------

std::u16string widen_column(const char* bytes, size_t size, bool upperCase) {
  size_t length = 0;
  while (length < size && bytes[length] != '\0') ++length;
  std::u16string text(length, u'\0');
  for (size_t i = 0; i < length; ++i) {
    // One byte, one unit: a byte of 0x80 or more is sign-extended, as a signed char widens.
    const auto unit = static_cast<char16_t>(
        static_cast<uint16_t>(static_cast<int16_t>(static_cast<signed char>(bytes[i]))));
    text[i] = upperCase ? static_cast<char16_t>(std::towupper(static_cast<wint_t>(unit))) : unit;
  }
  return text;
}

// COracleQuery ------------------------------------------------------------------------------

namespace {

void log_result(const std::vector<oracle_row_t>& rows) {
  const auto& log = logging::oralib();
  log.info("Oracle query result");
  for (const auto& row : rows) {
    std::string line;
    for (const auto& cell : row) {
      line += util::to_multibyte_safe(cell);
      line += ' ';
    }
    log.info("%1", line);
  }
}

}  // namespace

COracleQuery::COracleQuery(std::shared_ptr<COracleEnv> env, std::shared_ptr<COracleHandle> svcCtx,
                           std::shared_ptr<COracleHandle> userSession)
    : env_(std::move(env)), svcCtx_(std::move(svcCtx)), userSession_(std::move(userSession)) {}

std::shared_ptr<COracleQueryResult> COracleQuery::exec(const std::string& sql,
                                                       int32_t columnCount, bool upperCase) {
  try {
    logging::oralib().info("Exec oracle query: %1", sql);
    auto gate = CWinOraInterface::instance();
    OCIError* error = env_->error_handle();

    std::shared_ptr<COracleHandle> statement;
    try {
      // The session attribute goes on the service context before every statement, so that a
      // logon that answered with information still has its session in place.
      check_oci_result(*env_, gate->attr_set(svcCtx_->handle(), OCI_HTYPE_SVCCTX,
                                             userSession_->handle(), /*size=*/0,
                                             OCI_ATTR_SESSION, error));
      statement = COracleHandle::create(env_, OCI_HTYPE_STMT);
      check_oci_result(*env_, gate->stmt_prepare(statement->as<OCIStmt>(), error, sql));
    } catch (const std::exception& e) {
      exc::rethrow_with_trace("OracleSession: failed to create OCI Stmt.", e);
    }

    const size_t columns = columnCount > 0 ? static_cast<size_t>(columnCount) : 0;
    std::vector<std::vector<char>> buffers(columns);
    std::vector<sb2> indicators(columns, 0);
    // Declared after the statement, so the defines are freed before it.
    std::vector<std::shared_ptr<COracleHandle>> defines;
    defines.reserve(columns);
    for (size_t column = 0; column < columns; ++column) {
      buffers[column].assign(kOracleColumnSize, '\0');
      OCIDefine* define = nullptr;
      check_oci_result(*env_, gate->define_by_pos(
                                  statement->as<OCIStmt>(), &define, error,
                                  static_cast<ub4>(column + 1), buffers[column].data(),
                                  kOracleColumnSize, SQLT_STR, &indicators[column],
                                  /*length=*/nullptr, /*code=*/nullptr, OCI_DEFAULT));
      defines.push_back(COracleHandle::adopt(env_, define, OCI_HTYPE_DEFINE));
    }

    // A query is executed with no iteration and its rows fetched; anything else runs once.
    check_oci_result(*env_, gate->stmt_execute(svcCtx_->as<OCISvcCtx>(), statement->as<OCIStmt>(),
                                               error, columns != 0 ? 0 : 1));

    std::vector<oracle_row_t> rows;
    for (;;) {
      const sword rc = gate->stmt_fetch(statement->as<OCIStmt>(), error, /*rows=*/1,
                                        OCI_FETCH_NEXT, /*offset=*/0, OCI_DEFAULT);
      // Compared as unsigned: the end of the data and every failure alike end the result.
      if (static_cast<ub4>(rc) > static_cast<ub4>(OCI_SUCCESS_WITH_INFO)) break;
      bool complete = true;
      for (const sb2 indicator : indicators) {
        if (indicator != 0) complete = false;
      }
      if (!complete) continue;  // a NULL or a cut-off value: the row is left out
      oracle_row_t row;
      row.reserve(columns);
      for (const auto& buffer : buffers) {
        row.push_back(widen_column(buffer.data(), buffer.size(), upperCase));
      }
      rows.push_back(std::move(row));
    }

    log_result(rows);
    return std::make_shared<COracleQueryResult>(std::move(rows));
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to exec query [%1].", sql, e);
  }
}

oracle_row_t COracleQuery::first_row(const std::string& sql, int32_t columnCount,
                                     bool upperCase) {
  auto result = exec(sql, columnCount, upperCase);
  if (result->rows().empty()) return {};
  return result->rows().front();
}

std::u16string COracleQuery::single_value(const std::string& sql, bool upperCase) {
  const oracle_row_t row = first_row(sql, 1, upperCase);
  if (row.empty()) return std::u16string();
  return row.front();
}

void COracleQuery::run(const std::string& sql) { exec(sql, 0, true); }

}  // namespace specific::oracle
