// The data folder on the host build: made private (mode 0700), refused when others may write in
// it or when it is a link, and nothing written, renamed or deleted through a link planted inside.
// The host cannot make a folder of another user without root, so "another user" is played by a
// folder whose mode lets others write; the owner rule itself is the Windows build's test.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "common/exc/exc_base.h"
#include "common/logging/log.h"
#include "common/logging/log_file.h"
#include "common/logging/log_file_rotation.h"
#include "common/logging/log_path.h"
#include "common/logging/log_start.h"
#include "common/win/file.h"
#include "common/win/path_ops.h"
#include "common/win/safe_folder.h"
#include "support/test_folder.h"

namespace {

const std::u16string kData = u"C:\\ProgramData\\Trelo\\Backup";
const std::string kData8 = "C:\\ProgramData\\Trelo\\Backup";

class DataFolderPosix : public ::testing::Test {
 protected:
  std::string host(const std::string& below_root) const { return folder.host_root() + "/" + below_root; }
  std::string trelo() const { return host("c/ProgramData/Trelo"); }
  std::string backup() const { return host("c/ProgramData/Trelo/Backup"); }
  std::string victim() const { return host("c/t/victim.txt"); }

  void make_victim() const {
    std::ofstream(victim()) << "precious";
  }
  std::string victim_text() const {
    std::ifstream in(victim());
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }
  void make_private_data_folder() const {
    ::mkdir(host("c/ProgramData").c_str(), 0755);
    ASSERT_EQ(::mkdir(trelo().c_str(), 0700), 0);
    ASSERT_EQ(::mkdir(backup().c_str(), 0700), 0);
  }
  static mode_t mode_of(const std::string& path) {
    struct stat st;
    EXPECT_EQ(::lstat(path.c_str(), &st), 0) << path;
    return st.st_mode & 07777;
  }
  static bool exists(const std::string& path) {
    struct stat st;
    return ::lstat(path.c_str(), &st) == 0;
  }
  template <typename F>
  static std::string failure_of(F&& f) {
    try {
      f();
    } catch (const std::exception& e) {
      return e.what();
    }
    return "(no failure)";
  }

  dsl_test::test_folder_t folder;
};

TEST_F(DataFolderPosix, TheLibraryMakesItsDataFolderPrivate) {
  win::create_directories(win::path_holder_t(kData8 + "\\OracleLogBackup\\ORCL\\x.arc"));
  EXPECT_EQ(mode_of(trelo()), 0700u);
  EXPECT_EQ(mode_of(backup()), 0700u);
  EXPECT_EQ(mode_of(backup() + "/OracleLogBackup"), 0700u);
  EXPECT_EQ(mode_of(backup() + "/OracleLogBackup/ORCL"), 0700u);
}

TEST_F(DataFolderPosix, TheTemporaryFolderIsMadePrivateToo) {
  const std::u16string temp = win::library_temp_folder();
  EXPECT_EQ(temp, kData + u"\\Tmp\\");
  EXPECT_EQ(mode_of(backup() + "/Tmp"), 0700u);
}

TEST_F(DataFolderPosix, ADataFolderOthersMayWriteInIsRefusedAndNothingIsWritten) {
  ::mkdir(host("c/ProgramData").c_str(), 0755);
  ASSERT_EQ(::mkdir(trelo().c_str(), 0700), 0);
  ASSERT_EQ(::mkdir(backup().c_str(), 0777), 0);
  ASSERT_EQ(::chmod(backup().c_str(), 0777), 0);  // as another user's umask would leave it
  const std::string text = failure_of(
      [&] { logging::select_log_path({kData8 + "\\OracleVssInitLib"}); });
  EXPECT_EQ(text, "The folder [" + kData8 +
                      "] cannot hold the library's files: other users may write in it. Nothing is "
                      "written through it.");
  EXPECT_NE(failure_of([&] { win::win_file_t::create(win::path_holder_t(kData8 + "\\OracleMeta.xml")); })
                .find("other users may write in it"),
            std::string::npos);
  EXPECT_FALSE(exists(backup() + "/OracleMeta.xml"));
  EXPECT_FALSE(exists(backup() + "/OracleVssInitLib"));
  EXPECT_EQ(mode_of(backup()), 0777u) << "a refused folder is not changed either";
}

TEST_F(DataFolderPosix, AParentFolderOthersMayWriteInIsRefusedToo) {
  ::mkdir(host("c/ProgramData").c_str(), 0755);
  ASSERT_EQ(::mkdir(trelo().c_str(), 0777), 0);
  ASSERT_EQ(::chmod(trelo().c_str(), 0777), 0);
  EXPECT_NE(failure_of([&] { win::create_directories(win::path_holder_t(kData8 + "\\x.log")); })
                .find("The folder [C:\\ProgramData\\Trelo] cannot hold the library's files"),
            std::string::npos);
  EXPECT_FALSE(exists(backup()));
}

TEST_F(DataFolderPosix, ADataFolderThatIsASymbolicLinkIsRefused) {
  ::mkdir(host("c/ProgramData").c_str(), 0755);
  ASSERT_EQ(::mkdir(trelo().c_str(), 0700), 0);
  ASSERT_EQ(::mkdir(host("c/elsewhere").c_str(), 0700), 0);
  ASSERT_EQ(::symlink(host("c/elsewhere").c_str(), backup().c_str()), 0);
  EXPECT_EQ(failure_of([&] { win::create_directories(win::path_holder_t(kData8 + "\\x.log")); }),
            "The folder [" + kData8 +
                "] cannot hold the library's files: it is a symbolic link. Nothing is written "
                "through it.");
  EXPECT_NE(failure_of([&] { win::win_file_t::create(win::path_holder_t(kData8 + "\\x.log")); })
                .find("it is a symbolic link"),
            std::string::npos);
  EXPECT_FALSE(exists(host("c/elsewhere/x.log")));
}

TEST_F(DataFolderPosix, ALinkPlantedWhereTheLogGoesIsNotFollowed) {
  make_private_data_folder();
  make_victim();
  ASSERT_EQ(::symlink(victim().c_str(), (backup() + "/OracleVssInitLib").c_str()), 0);
  const std::string text = failure_of(
      [&] { logging::receiver::win_log_file_t file(kData8 + "\\OracleVssInitLib"); });
  EXPECT_EQ(text, "The path [" + kData8 +
                      "\\OracleVssInitLib] is a junction or a symbolic link; the library does "
                      "not write, rename or delete through one.");
  EXPECT_EQ(victim_text(), "precious");
}

TEST_F(DataFolderPosix, TheLogStartsNowhereWhenItsFolderIsUnsafeAndSaysWhy) {
  ::mkdir(host("c/ProgramData").c_str(), 0755);
  ASSERT_EQ(::mkdir(trelo().c_str(), 0777), 0);
  ASSERT_EQ(::chmod(trelo().c_str(), 0777), 0);
  auto log = std::make_shared<logging::log_t>();
  testing::internal::CaptureStdout();
  const bool attached = logging::attach_receiver(*log, {kData8 + "\\OracleVssInitLib"}, true);
  const std::string console = testing::internal::GetCapturedStdout();
  EXPECT_FALSE(attached);
  EXPECT_NE(console.find("Failed to initialize log [" + kData8 + "\\OracleVssInitLib]."),
            std::string::npos)
      << console;
  EXPECT_NE(console.find("The folder [C:\\ProgramData\\Trelo] cannot hold the library's files: "
                         "other users may write in it."),
            std::string::npos)
      << console;
  EXPECT_FALSE(exists(backup()));
}

TEST_F(DataFolderPosix, ALinkPlantedWhereAnArchiveGoesIsNotFollowed) {
  make_private_data_folder();
  make_victim();
  const std::string log = kData8 + "\\Agent.log";
  ASSERT_EQ(::symlink(victim().c_str(), (backup() + "/Agent.log.gz").c_str()), 0);
  EXPECT_NE(failure_of([&] { logging::age_file(log + ".gz", ".log.gz"); })
                .find("is a junction or a symbolic link"),
            std::string::npos);
  EXPECT_EQ(victim_text(), "precious");
  EXPECT_TRUE(exists(backup() + "/Agent.log.gz"));
  EXPECT_FALSE(exists(backup() + "/Agent.1.log.gz")) << "the link is not moved either";
}

TEST_F(DataFolderPosix, ALinkAtTheArchiveNameStopsTheRotationBeforeZlibOpensIt) {
  make_private_data_folder();
  make_victim();
  const std::string log = kData8 + "\\Agent.log";
  logging::receiver::win_log_file_t file(log);
  const std::string big(logging::kLogSizeLimit, 'x');
  file.write(big);
  // A link that appears at the archive's place after ageing emptied it.
  ASSERT_EQ(::symlink(victim().c_str(), (backup() + "/Agent.log.gz").c_str()), 0);
  EXPECT_THROW(win::check_not_link(u"C:\\ProgramData\\Trelo\\Backup\\Agent.log.gz", true),
               exc::runtime_exc_t);
  EXPECT_THROW(logging::check_log_size(file), std::exception);
  EXPECT_EQ(victim_text(), "precious");
  EXPECT_EQ(file.size(), logging::kLogSizeLimit) << "the log keeps its lines";
}

TEST_F(DataFolderPosix, ALinkPlantedWhereTheMetaFileOrADescriptionGoesIsNotFollowed) {
  make_private_data_folder();
  make_victim();
  ASSERT_EQ(::mkdir((backup() + "/OracleLogBackup").c_str(), 0700), 0);
  ASSERT_EQ(::symlink(victim().c_str(), (backup() + "/OracleMeta.xml").c_str()), 0);
  ASSERT_EQ(::symlink(victim().c_str(), (backup() + "/OracleLogBackup/ORCL_1_7.xml").c_str()), 0);
  for (const std::string name : {"\\OracleMeta.xml", "\\OracleLogBackup\\ORCL_1_7.xml"}) {
    const win::path_holder_t path(kData8 + name);
    EXPECT_NE(failure_of([&] { win::win_file_t::create(path); }).find("is a junction or a symbolic link"),
              std::string::npos)
        << name;
    EXPECT_NE(failure_of([&] { win::win_file_t::create_or_open(path); })
                  .find("is a junction or a symbolic link"),
              std::string::npos)
        << name;
    EXPECT_NE(failure_of([&] { win::win_file_t::open_read(path); }).find("is a junction or a symbolic link"),
              std::string::npos)
        << name;
  }
  EXPECT_EQ(victim_text(), "precious");
}

TEST_F(DataFolderPosix, ALinkIsNotDeletedOrRenamedThrough) {
  make_private_data_folder();
  make_victim();
  ASSERT_EQ(::symlink(victim().c_str(), (backup() + "/OracleMeta.xml").c_str()), 0);
  const win::path_holder_t link(kData8 + "\\OracleMeta.xml");
  EXPECT_NE(failure_of([&] { win::remove_file(link); }).find("is a junction or a symbolic link"),
            std::string::npos);
  EXPECT_NE(failure_of([&] { win::rename_file(link, win::path_holder_t(kData8 + "\\y.xml")); })
                .find("is a junction or a symbolic link"),
            std::string::npos);
  std::ofstream(backup() + "/fresh.xml") << "new";
  EXPECT_NE(failure_of([&] { win::rename_file(win::path_holder_t(kData8 + "\\fresh.xml"), link); })
                .find("is a junction or a symbolic link"),
            std::string::npos);
  EXPECT_TRUE(exists(backup() + "/OracleMeta.xml"));
  EXPECT_EQ(victim_text(), "precious");
}

TEST_F(DataFolderPosix, AHardLinkPlantedInsideIsNotWrittenThrough) {
  make_private_data_folder();
  make_victim();
  ASSERT_EQ(::link(victim().c_str(), (backup() + "/OracleMeta.xml").c_str()), 0);
  EXPECT_NE(failure_of([&] { win::win_file_t::create(win::path_holder_t(kData8 + "\\OracleMeta.xml")); })
                .find("is a file with several hard links"),
            std::string::npos);
  EXPECT_EQ(victim_text(), "precious");
}

TEST_F(DataFolderPosix, ALinkedSubfolderInsideIsRefused) {
  make_private_data_folder();
  ASSERT_EQ(::mkdir(host("c/elsewhere").c_str(), 0700), 0);
  ASSERT_EQ(::symlink(host("c/elsewhere").c_str(), (backup() + "/OracleLogBackup").c_str()), 0);
  EXPECT_NE(failure_of([&] {
              win::win_file_t::create(win::path_holder_t(kData8 + "\\OracleLogBackup\\x.arc"));
            }).find("The folder [" + kData8 + "\\OracleLogBackup] cannot hold the library's files: it is a symbolic link."),
            std::string::npos);
  EXPECT_FALSE(exists(host("c/elsewhere/x.arc")));
}

TEST_F(DataFolderPosix, DotsDoNotHideAPathInTheDataFolder) {
  EXPECT_TRUE(win::lies_in_data_folder(u"C:\\Windows\\..\\ProgramData\\Trelo\\Backup\\x.log"));
  EXPECT_TRUE(win::lies_in_data_folder(u"\\\\?\\C:\\ProgramData\\.\\Trelo\\Backup\\x.log"));
  EXPECT_TRUE(win::lies_in_data_folder(u"c:/programdata/trelo/backup/Tmp/x"));
  EXPECT_FALSE(win::lies_in_data_folder(u"C:\\ProgramData\\Trelo\\Backup\\..\\Other\\x"));
  EXPECT_FALSE(win::lies_in_data_folder(u"D:\\logs\\x.log"));
}

TEST_F(DataFolderPosix, FilesOutsideTheDataFolderKeepTheirOldRules) {
  make_victim();
  ASSERT_EQ(::symlink(victim().c_str(), host("c/t/link.txt").c_str()), 0);
  // Outside the data folder a link is the administrator's choice and is followed.
  EXPECT_NO_THROW(win::win_file_t::open_read(win::path_holder_t(folder.path(u"link.txt"))));
}

}  // namespace
