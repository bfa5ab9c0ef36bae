// Where the log lies and how its file is opened: directory choice, the path selection with
// its fallback, numbered names of held files.
#include <gtest/gtest.h>

#include <cctype>

#include <memory>
#include <string>
#include <vector>

#include "support/holder_process.h"
#include "common/exc/exc_base.h"
#include "common/logging/log_file.h"
#include "common/logging/log_path.h"
#include "common/text/convert.h"
#include "common/win/path_ops.h"
#include "log_files_env.h"

namespace {

using dsl_test::machine_settings_t;
using dsl_test::test_folder_t;
using logging::default_log_dir;
using logging::default_log_path;
using logging::join_log_dir;
using logging::log_dir_from_registry;
using logging::numbered_log_name;
using logging::open_log;
using logging::select_log_path;

TEST(JoinLogDir, AnEmptyDirectoryGivesTheNameAlone) {
  EXPECT_EQ(join_log_dir(u"", u"agent.log"), u"agent.log");
}

TEST(JoinLogDir, ADirectoryEndingInASeparatorIsJoinedWithoutAnother) {
  EXPECT_EQ(join_log_dir(u"C:\\logs\\", u"agent.log"), u"C:\\logs\\agent.log");
  EXPECT_EQ(join_log_dir(u"C:/logs/", u"agent.log"), u"C:/logs/agent.log");
}

TEST(JoinLogDir, AnyOtherDirectoryGetsABackslash) {
  EXPECT_EQ(join_log_dir(u"C:/logs", u"agent.log"), u"C:/logs\\agent.log");
  EXPECT_EQ(join_log_dir(u"C:\\logs", u"agent.log"), u"C:\\logs\\agent.log");
}

TEST(DefaultLogDir, IsTheCommonDataFolderWithTheProductsSubfolder) {
  test_folder_t folder;
  const std::u16string dir = default_log_dir();
  ASSERT_GT(dir.size(), std::u16string(u"\\Trelo\\Backup\\").size());
  EXPECT_EQ(dir.substr(dir.size() - 14), u"\\Trelo\\Backup\\");
}

TEST(LogDirFromRegistry, AMissingKeyIsNoValue) {
  test_folder_t folder;
  machine_settings_t machine({});
  std::u16string dir = u"untouched";
  EXPECT_FALSE(log_dir_from_registry(dir));
  EXPECT_EQ(dir, u"untouched");
}

TEST(LogDirFromRegistry, AKeyWithoutTheValueIsNoValue) {
  test_folder_t folder;
  machine_settings_t::key_t key;
  key.path = "SOFTWARE\\Trelo\\Trelo Safekeep";
  key.values.push_back({"SomethingElse", "x", false, 0});
  machine_settings_t machine({key});
  std::u16string dir = u"untouched";
  EXPECT_FALSE(log_dir_from_registry(dir));
  EXPECT_EQ(dir, u"untouched");
}

TEST(LogDirFromRegistry, ANumberWhereTextBelongsIsNoValue) {
  test_folder_t folder;
  machine_settings_t::key_t key;
  key.path = "SOFTWARE\\Trelo\\Trelo Safekeep";
  key.values.push_back({"LogDirectory", "", true, 7});
  machine_settings_t machine({key});
  std::u16string dir = u"untouched";
  EXPECT_FALSE(log_dir_from_registry(dir));
  EXPECT_EQ(dir, u"untouched");
}

TEST(LogDirFromRegistry, ReadsTheConfiguredDirectory) {
  test_folder_t folder;
  machine_settings_t machine({dsl_test::log_directory_key("D:\\Agent Logs")});
  std::u16string dir;
  ASSERT_TRUE(log_dir_from_registry(dir));
  EXPECT_EQ(dir, u"D:\\Agent Logs");
}

TEST(DefaultLogPath, UsesTheStandardFolderWithoutASetting) {
  test_folder_t folder;
  machine_settings_t machine({});
  EXPECT_EQ(default_log_path(u"agent.log"), default_log_dir() + u"agent.log");
}

TEST(DefaultLogPath, UsesLogDirectoryWhenSet) {
  test_folder_t folder;
  machine_settings_t machine({dsl_test::log_directory_key("D:\\Agent Logs")});
  EXPECT_EQ(default_log_path(u"agent.log"), u"D:\\Agent Logs\\agent.log");
}

TEST(NumberedLogName, NumberZeroIsThePathItself) {
  EXPECT_EQ(numbered_log_name("C:\\l\\X.log", 0), "C:\\l\\X.log");
}

TEST(NumberedLogName, ALogEndingTakesTheNumberBeforeIt) {
  EXPECT_EQ(numbered_log_name("C:\\l\\X.log", 1), "C:\\l\\X.1.log");
  EXPECT_EQ(numbered_log_name("C:\\l\\X.log", 999), "C:\\l\\X.999.log");
}

TEST(NumberedLogName, TheEndingKeepsItsLetterCase) {
  EXPECT_EQ(numbered_log_name("C:\\l\\X.LOG", 1), "C:\\l\\X.1.LOG");
}

TEST(NumberedLogName, AnotherEndingGetsNumberAndLogAppended) {
  EXPECT_EQ(numbered_log_name("C:\\l\\X.txt", 1), "C:\\l\\X.txt.1.log");
  EXPECT_EQ(numbered_log_name("C:\\l\\X.logs", 2), "C:\\l\\X.logs.2.log");
}

TEST(NumberedLogName, ANameWithoutADotGetsNumberAndLog) {
  EXPECT_EQ(numbered_log_name("C:\\l\\X", 3), "C:\\l\\X.3.log");
}

TEST(NumberedLogName, AFinalDotGivesWayToTheNumber) {
  EXPECT_EQ(numbered_log_name("C:\\l\\X.", 4), "C:\\l\\X.4");
}

TEST(SelectLogPath, AnEmptyListFails) {
  try {
    select_log_path({});
    FAIL() << "no failure";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "Log paths list is empty.");
  }
}

TEST(SelectLogPath, CreatesTheFoldersOfTheFirstPath) {
  test_folder_t folder;
  const std::string path = folder.path8("a\\b\\X.log");
  EXPECT_EQ(select_log_path({path}), path);
  EXPECT_TRUE(folder.raw_is_directory(u"a\\b"));
  EXPECT_FALSE(folder.raw_exists(u"a\\b\\X.log"));
}

TEST(SelectLogPath, TakesTheNextPathWhenTheFirstCannotBeUsed) {
  test_folder_t folder;
  folder.raw_write(u"blocker", "a file where a folder would have to be");
  const std::string second = folder.path8("ok\\X.log");
  EXPECT_EQ(select_log_path({folder.path8("blocker\\sub\\X.log"), second}), second);
  EXPECT_TRUE(folder.raw_is_directory(u"ok"));
}

TEST(SelectLogPath, APathOutsideLogDirectoryThatCannotBeCreatedFails) {
  test_folder_t folder;
  folder.raw_write(u"blocker", "x");
  machine_settings_t machine({dsl_test::log_directory_key(folder.path8("configured"))});
  try {
    select_log_path({folder.path8("blocker\\sub\\X.log")});
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_NE(std::string(e.what()).find("Failed to create directory ["), std::string::npos)
        << e.what();
  }
}

TEST(SelectLogPath, APathUnderALogDirectoryThatCannotBeCreatedEndsInTheStandardFolder) {
  test_folder_t folder;
  folder.raw_write(u"blocker", "x");
  const std::string configured = folder.path8("blocker\\logs");
  machine_settings_t machine({dsl_test::log_directory_key(configured)});
  dsl_test::standard_folder_file_t standard(u"dsl-fallback-test.log");
  // Letter case and the kind of separator do not matter for "lies under".
  std::string first = configured + "/deeper\\dsl-fallback-test.log";
  for (auto& c : first) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  first.replace(first.size() - 21, 21, "dsl-fallback-test.log");
  const std::string chosen = select_log_path({first});
  EXPECT_EQ(util::from_utf8(chosen), standard.path());
  EXPECT_TRUE(win::file_exists(win::path_holder_t(default_log_dir())));
}

TEST(SelectLogPath, LogDirectoryItselfBeingAFileFallsBackToTheStandardFolder) {
  test_folder_t folder;
  folder.raw_write(u"not-a-folder", "x");
  const std::string configured = folder.path8("not-a-folder");
  machine_settings_t machine({dsl_test::log_directory_key(configured)});
  dsl_test::standard_folder_file_t standard(u"dsl-file-as-dir.log");
  const std::string chosen = select_log_path({configured + "\\dsl-file-as-dir.log"});
  EXPECT_EQ(util::from_utf8(chosen), standard.path());
}

TEST(OpenLog, CreatesTheFileAndTellsWhichNameWasUsed) {
  test_folder_t folder;
  std::string used;
  const auto file = open_log(folder.path8("X.log"), used);
  ASSERT_NE(file, nullptr);
  EXPECT_EQ(used, folder.path8("X.log"));
  EXPECT_EQ(file->path(), used);
  EXPECT_TRUE(folder.raw_exists(u"X.log"));
}

TEST(OpenLog, AppendsToWhatTheFileHolds) {
  test_folder_t folder;
  folder.raw_write(u"X.log", "earlier run\r\n");
  std::string used;
  const auto file = open_log(folder.path8("X.log"), used);
  file->write("this run\r\n");
  EXPECT_EQ(folder.raw_read(u"X.log"), "earlier run\r\nthis run\r\n");
}

TEST(OpenLog, AFileHeldByAnotherProcessGivesTheNextNumber) {
  test_folder_t folder;
  folder.raw_write(u"X.log", "held");
  dsl_test::holder_process_t holder(dsl_test::hold_kind_t::write_open, folder.path(u"X.log"), 0, 0,
                                    30000);
  ASSERT_TRUE(holder.holding());
  std::string used;
  const auto file = open_log(folder.path8("X.log"), used);
  EXPECT_EQ(used, folder.path8("X.1.log"));
  file->write("second process\r\n");
  holder.end();
  EXPECT_EQ(folder.raw_read(u"X.1.log"), "second process\r\n");
  EXPECT_EQ(folder.raw_read(u"X.log"), "held");
}

TEST(OpenLog, TwoLogsOfOneNameInOneProcessTakeTwoFiles) {
  test_folder_t folder;
  std::string first_used, second_used, third_used;
  const auto first = open_log(folder.path8("X.LOG"), first_used);
  const auto second = open_log(folder.path8("X.LOG"), second_used);
  const auto third = open_log(folder.path8("X.LOG"), third_used);
  EXPECT_EQ(first_used, folder.path8("X.LOG"));
  EXPECT_EQ(second_used, folder.path8("X.1.LOG"));
  EXPECT_EQ(third_used, folder.path8("X.2.LOG"));
}

TEST(OpenLog, AThousandHeldNamesMeanAllAreLocked) {
  test_folder_t folder;
  std::vector<std::shared_ptr<logging::receiver::log_file_t>> held;
  for (int i = 0; i < logging::kLogNameAttempts; ++i) {
    held.push_back(std::make_shared<logging::receiver::win_log_file_t>(
        numbered_log_name(folder.path8("X.txt"), i)));
  }
  EXPECT_TRUE(folder.raw_exists(u"X.txt.999.log"));
  try {
    std::string used = "untouched";
    open_log(folder.path8("X.txt"), used);
    FAIL() << "no failure";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_STREQ(e.what(), "All log files are locked.");
  }
  EXPECT_FALSE(folder.raw_exists(u"X.txt.1000.log"));
  // One name let go is the one found.
  held[537].reset();
  std::string used;
  EXPECT_NE(open_log(folder.path8("X.txt"), used), nullptr);
  EXPECT_EQ(used, folder.path8("X.txt.537.log"));
}

TEST(OpenLog, AFailureOtherThanALockEndsTheSearchAtOnce) {
  test_folder_t folder;
  std::string used = "untouched";
  try {
    open_log(folder.path8("missing\\X.log"), used);
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), 3u);
    EXPECT_NE(std::string(e.what()).find("Failed to create or open file [" +
                                         folder.path8("missing\\X.log") + "]."),
              std::string::npos)
        << e.what();
  }
  EXPECT_EQ(used, "untouched");
  EXPECT_FALSE(folder.raw_exists(u"missing"));
}

}  // namespace
