// A path with an apostrophe, or one written to break out of its literal, reaches the simulated
// server as one literal when the library fills it into a statement: the directory objects that
// the ASM copy makes hold exactly the folder that was asked for.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ocisim_fixture.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/session_holder.h"
#include "oracle/logs/asm_file_ops.h"
#include "common/win/file.h"
#include "common/win/path_ops.h"

namespace {

using namespace specific::oracle;
using ocisim_test::machine_with;

const std::u16string kHome = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";

std::string open_instance() {
  return "<instance sid=\"ORCL\" home=\"C:\\app\\oracle\\product\\19.0.0\\dbhome_1\" "
         "state=\"open\" version=\"19.0.0.0.0\">\n"
         "<database name=\"ORCL\" dbid=\"1559187620\" open_mode=\"READ WRITE\" "
         "log_mode=\"ARCHIVELOG\" cdb=\"NO\"/>\n"
         "</instance>\n";
}

using HostileLiteralOcisim = ocisim_test::ocisim_test_t;

TEST_F(HostileLiteralOcisim, AnApostropheInTheTargetPathReachesTheServerAsOneLiteral) {
  use_scenario(machine_with(open_instance()));
  const win::path_holder_t source(std::string("C:\\src\\arch\\x.arc"));
  win::create_directories(source);
  const std::string redo(512, 'r');  // one whole block, as the server copies whole blocks
  win::win_file_t::create(source)->write(static_cast<uint32_t>(redo.size()), redo.data());
  // The server refuses to copy over an existing file: a copy left by an earlier run goes first.
  const win::path_holder_t earlier(std::string("C:\\O'Brien\\arch\\x.arc"));
  if (win::file_exists(earlier)) win::remove_file(earlier);
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  copy_asm_file(holder.get_session(), "C:\\src\\arch\\x.arc", "C:\\O'Brien\\arch\\x.arc");

  bool seen = false;
  for (const auto& line : journal_of("SQL")) {
    if (line.rest.find("CREATE DIRECTORY") == std::string::npos) continue;
    if (line.rest.find("AS 'C:\\O''Brien\\arch'") != std::string::npos) seen = true;
  }
  EXPECT_TRUE(seen) << journal_text();
  // The server took the literal whole: the copy landed in the folder with the apostrophe.
  const win::path_holder_t target(std::string("C:\\O'Brien\\arch\\x.arc"));
  ASSERT_TRUE(win::file_exists(target)) << journal_text();
  std::string bytes(1024, '\0');
  bytes.resize(win::win_file_t::open_read(target)->read(&bytes[0], 1024));
  EXPECT_EQ(bytes, redo);
}

TEST_F(HostileLiteralOcisim, APathWrittenToEndItsLiteralEarlyStaysInsideIt) {
  use_scenario(machine_with(open_instance()));
  COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
  const std::string hostile = "C:\\x' OR '1'='1";
  // The source is missing, so the copy fails after both directory objects are made and they
  // stay behind to be looked at.
  EXPECT_THROW(copy_asm_file(holder.get_session(), "C:\\nowhere\\x.arc", hostile + "\\y.arc"),
               std::exception);
  const auto rows = holder.make_query()->exec(
      "SELECT DIRECTORY_PATH FROM DBA_DIRECTORIES ORDER BY DIRECTORY_PATH", 1, false)->rows();
  std::vector<std::u16string> paths;
  for (const auto& row : rows) paths.push_back(row.at(0));
  EXPECT_EQ(paths, (std::vector<std::u16string>{u"C:\\nowhere", u"C:\\x' OR '1'='1"}))
      << journal_text();
}

}  // namespace
