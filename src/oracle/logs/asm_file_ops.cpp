#include "oracle/logs/asm_file_ops.h"

#include <cstdint>

#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/text/fmt.h"
#include "common/win/path.h"
#include "oracle/client/oracle_cmd_exec.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/sql_text.h"
#include "oracle/client/unique_object_name.h"

namespace specific::oracle {

namespace {

void run(const std::shared_ptr<COracleSession>& session, const std::string& sql) {
  session->make_command(sql)->execute();
}

void create_directory(const std::shared_ptr<COracleSession>& session, const std::string& object,
                      const std::string& dir) {
  run(session, util::fmt_t::format("CREATE DIRECTORY %1 AS '%2'", object, sql::literal_text(dir)));
}

}  // namespace

void copy_asm_file(const std::shared_ptr<COracleSession>& session, const std::string& from,
                   const std::string& to) {
  try {
    std::string fromDir, fromFile, toDir, toFile;
    win::split_path(from, fromDir, fromFile);
    win::split_path(to, toDir, toFile);
    const std::string source = make_unique_object_name();
    const std::string target = make_unique_object_name();
    create_directory(session, source, fromDir);
    create_directory(session, target, toDir);
    const std::string args[] = {source, sql::literal_text(fromFile), target,
                                sql::literal_text(toFile)};
    run(session, util::fmt_t::format(
                     "BEGIN\n DBMS_FILE_TRANSFER.COPY_FILE('%1', '%2', '%3', '%4');\n END;", args,
                     4));
    run(session, util::fmt_t::format("DROP DIRECTORY %1", source));
    run(session, util::fmt_t::format("DROP DIRECTORY %1", target));
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to copy ASM file, from: [%1], to: [%2]", from, to, e);
  }
}

bool asm_file_exists(const std::shared_ptr<COracleSession>& session,
                     const std::string& path) noexcept {
  try {
    auto command = session->make_command(
        "BEGIN \n DBMS_DISKGROUP.GETFILEATTR(:fname,:ftype,:fsize,:blksize); \n END;");
    std::string name = path;  // the bind reads the terminating NUL too
    int32_t type = 0, size = 0, blockSize = 0;
    command->bind(":fname", name.data(), SQLT_STR, static_cast<ub4>(name.size() + 1));
    command->bind(":ftype", &type, SQLT_INT, sizeof type);
    command->bind(":fsize", &size, SQLT_INT, sizeof size);
    command->bind(":blksize", &blockSize, SQLT_INT, sizeof blockSize);
    command->execute();
    logging::oralib().info("ASM file: %1, type: %2, size: %3", path, std::to_string(type),
                           std::to_string(size));
    return true;
  } catch (const std::exception& e) {
    try {
      exc::log_warn(logging::oralib(), "Failed to check if ASM file exists: [%1]", path, e);
    } catch (...) {
    }
    return false;
  }
}

}  // namespace specific::oracle
