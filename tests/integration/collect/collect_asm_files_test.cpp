// Files reached through the server: copying out of a disk group, asking whether a file there
// exists, and removing a file through a directory object; paths with an apostrophe keep their
// literals closed.
#include <gtest/gtest.h>

#include "collect_fixture.h"
#include "common/text/convert.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/parameter_files.h"
#include "oracle/logs/asm_file_ops.h"

namespace collect_test {
namespace {

using namespace specific::oracle;

const char kAsmLog[] = "+DATA/ORCL/ARCHIVELOG/2016_01_01/thread_1_seq_9.300.123";

class ServerFiles : public collect_test_t {
 protected:
  void SetUp() override {
    collect_test_t::SetUp();
    use_scenario_file("collect_database.xml");
    holder_ = std::make_shared<COracleSessionHolder>(u"ORCL", home(), conn_t{}, false);
  }
  void TearDown() override {
    holder_.reset();
    collect_test_t::TearDown();
  }
  std::shared_ptr<COracleSession> session() const { return holder_->get_session(); }
  std::u16string directory_count() const {
    return session()->make_query()->single_value("SELECT COUNT(*) FROM DBA_DIRECTORIES", false);
  }
  // The statements from the first CREATE DIRECTORY on, with the generated object names
  // replaced by A, B, ... in order of appearance.
  std::vector<std::string> directory_statements() const {
    std::vector<std::string> result;
    std::vector<std::string> names;
    for (std::string s : statements()) {
      if (s.rfind("CREATE DIRECTORY ", 0) == 0) {
        names.push_back(s.substr(17, s.find(' ', 17) - 17));
      }
      if (names.empty()) continue;
      for (size_t i = 0; i < names.size(); ++i) {
        for (size_t at = s.find(names[i]); at != std::string::npos; at = s.find(names[i])) {
          s.replace(at, names[i].size(), std::string(1, static_cast<char>('A' + i)));
        }
      }
      result.push_back(s);
    }
    return result;
  }
  std::shared_ptr<COracleSessionHolder> holder_;
};

TEST_F(ServerFiles, CopySplitsBothNamesAtTheirLastSeparator) {
  put_file(u"asm\\DATA\\ORCL\\ARCHIVELOG\\2016_01_01\\thread_1_seq_9.300.123", std::string(1024, 'r'));
  put_file(u"Stage\\keep.txt", "k");
  copy_asm_file(session(), kAsmLog, base() + "Stage\\x.arc");
  const std::vector<std::string> expected = {
      "CREATE DIRECTORY A AS '+DATA/ORCL/ARCHIVELOG/2016_01_01'",
      "CREATE DIRECTORY B AS '" + base() + "Stage'",
      "BEGIN  DBMS_FILE_TRANSFER.COPY_FILE('A', 'thread_1_seq_9.300.123', 'B', 'x.arc');  END;",
      "DROP DIRECTORY A",
      "DROP DIRECTORY B",
  };
  EXPECT_EQ(directory_statements(), expected) << journal_text();
  EXPECT_EQ(folder_->raw_read(u"Stage\\x.arc"), std::string(1024, 'r'));
  EXPECT_EQ(directory_count(), u"0");
}

TEST_F(ServerFiles, CopyOfAnAbsentSourceFailsAndLeavesBothDirectoryObjects) {
  put_file(u"Stage\\keep.txt", "k");
  const std::string to = base() + "Stage\\x.arc";
  try {
    copy_asm_file(session(), kAsmLog, to);
    FAIL() << "no failure";
  } catch (const std::exception& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("ORA-19505"), std::string::npos) << what;
    EXPECT_NE(what.find(std::string("Failed to copy ASM file, from: [") + kAsmLog + "], to: [" + to + "]"),
              std::string::npos)
        << what;
  }
  EXPECT_EQ(directory_count(), u"2");
  EXPECT_FALSE(saw_statement_starting("DROP DIRECTORY"));
}

TEST_F(ServerFiles, AttributesOfAMissingFileAnswerFalseWithOneLogLine) {
  EXPECT_FALSE(asm_file_exists(session(), kAsmLog));
  EXPECT_EQ(log_with("Failed to check if ASM file exists").size(), 1u);
  EXPECT_TRUE(log_with("ASM file: ").empty());
}

TEST_F(ServerFiles, AttributesOfAPresentFileAnswerTrueAndAreLogged) {
  put_file(u"asm\\DATA\\ORCL\\ARCHIVELOG\\2016_01_01\\thread_1_seq_9.300.123", std::string(1024, 'r'));
  EXPECT_TRUE(asm_file_exists(session(), kAsmLog));
  EXPECT_EQ(log_with(std::string("ASM file: ") + kAsmLog + ", type: 4, size: 2").size(), 1u);
}

TEST_F(ServerFiles, ApostropheInTheTargetFolderIsDoubledInsideItsLiteral) {
  put_file(u"asm\\DATA\\ORCL\\ARCHIVELOG\\2016_01_01\\thread_1_seq_9.300.123", std::string(512, 'r'));
  put_file(u"O'Brien\\keep.txt", "k");
  copy_asm_file(session(), kAsmLog, base() + "O'Brien\\it's.arc");
  const auto seen = directory_statements();
  ASSERT_EQ(seen.size(), 5u) << journal_text();
  EXPECT_EQ(seen[1], "CREATE DIRECTORY B AS '" + base() + "O''Brien'");
  EXPECT_EQ(seen[2],
            "BEGIN  DBMS_FILE_TRANSFER.COPY_FILE('A', 'thread_1_seq_9.300.123', 'B', 'it''s.arc');  END;");
  EXPECT_EQ(folder_->raw_read(u"O'Brien\\it's.arc"), std::string(512, 'r'));
}

TEST_F(ServerFiles, ServerRemovalOfAPathWithAnApostropheKeepsItsLiteralsClosed) {
  put_file(u"it's here\\a'b.txt", "gone soon");
  remove_file_on_server(session(), base() + "it's here\\a'b.txt");
  const std::vector<std::string> expected = {
      "CREATE DIRECTORY A AS '" + base() + "it''s here'",
      "BEGIN  UTL_FILE.FREMOVE('A', 'a''b.txt');  END;",
      "DROP DIRECTORY A",
  };
  EXPECT_EQ(directory_statements(), expected) << journal_text();
  EXPECT_FALSE(has_file(u"it's here\\a'b.txt"));
  EXPECT_EQ(directory_count(), u"0");
}

TEST_F(ServerFiles, FailingServerRemovalLeavesItsDirectoryObject) {
  // The folder is there, the file is not: FREMOVE fails, DROP is never reached.
  put_file(u"empty\\keep.txt", "k");
  EXPECT_THROW(remove_file_on_server(session(), base() + "empty\\none.txt"), std::exception);
  EXPECT_EQ(directory_count(), u"1");
  EXPECT_FALSE(saw_statement_starting("DROP DIRECTORY"));
}

}  // namespace
}  // namespace collect_test
