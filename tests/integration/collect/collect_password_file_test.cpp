// The password file: srvctl's answer on 12c and later, the PWD<SID>.ora name otherwise.
#include <gtest/gtest.h>

#include <algorithm>

#include "collect_fixture.h"
#include "common/text/convert.h"
#include "oracle/discovery/oracle_sid.h"
#include "oracle/discovery/parameter_files.h"

namespace collect_test {
namespace {

using namespace specific::oracle;

const char kAsmPasswordFile[] = "+DATA/ORCL/PASSWORD/pwdorcl.256.1031050111";

class CollectPasswordFile : public collect_test_t {
 protected:
  std::u16string pwd_file() const { return home_file(u"database\\PWDORCL.ora"); }
  std::u16string home_relative(const std::u16string& name) const {
    return u"app\\oracle\\product\\19.0.0\\dbhome_1\\" + name;
  }
  void put_pwd_file() { put_file(home_relative(u"database\\PWDORCL.ora")); }
  void forwarder(const std::u16string& where = u"bin\\srvctl.bat") {
    write_srvctl_forwarder(*folder_, home_relative(where));
  }
  void printing(const std::vector<std::string>& lines) {
    write_srvctl_printing(*folder_, home_relative(u"bin\\srvctl.bat"), lines);
  }
};

TEST_F(CollectPasswordFile, Version11TakesThePwdFileByNameWithoutRunningTheScript) {
  use_scenario_file("collect_database.xml", {{"$VERSION$", "11.2.0.4.0"}});
  put_pwd_file();
  forwarder();
  EXPECT_EQ(collect(false)->pwdFilePath, pwd_file());
  EXPECT_TRUE(log_with("Executing script").empty());
  EXPECT_EQ(log_with("Found pwd file: " + util::to_utf8(pwd_file())).size(), 1u);
}

TEST_F(CollectPasswordFile, Version12TakesTheLocationThatSrvctlReports) {
  use_scenario_file("collect_database.xml", {{"$VERSION$", "12.1.0.2.0"}});
  put_pwd_file();  // the tool's answer comes first
  forwarder();
  EXPECT_EQ(collect(false)->pwdFilePath, util::from_utf8(kAsmPasswordFile));
  EXPECT_EQ(log_with(std::string("Found pwd file (ASM location): ") + kAsmPasswordFile).size(), 1u);
  const auto executed = log_with("Executing script: " + util::to_utf8(home_file(u"bin\\srvctl.bat")) +
                                 " config database -db ORCL > ");
  EXPECT_EQ(executed.size(), 1u);
  // Each line of the tool's output is logged.
  EXPECT_EQ(log_with("Database unique name: ORCL").size(), 1u);
}

TEST_F(CollectPasswordFile, TheToolsOutputFileIsRemovedAfterwards) {
  use_scenario_file("collect_database.xml", {{"$VERSION$", "19.0.0.0.0"}});
  forwarder();
  const auto before = temp_files();
  EXPECT_EQ(collect(false)->pwdFilePath, util::from_utf8(kAsmPasswordFile));
  EXPECT_EQ(temp_files(), before);
  const auto removed = log_with("Removing file: ");
  ASSERT_EQ(removed.size(), 2u);  // the step's start and end lines
  EXPECT_NE(removed[1].find(" ok."), std::string::npos);
}

TEST_F(CollectPasswordFile, PasswordFileLineWithNothingBehindFallsBackToThePwdName) {
  use_scenario_file("collect_database.xml");
  put_pwd_file();
  printing({"Database unique name: ORCL", "Password file: ", std::string("Password file: ") + kAsmPasswordFile});
  EXPECT_EQ(collect(false)->pwdFilePath, pwd_file());
  // The loop ended at the first mark: the second one was never read.
  EXPECT_TRUE(log_with(std::string("Password file: ") + kAsmPasswordFile).empty());
}

TEST_F(CollectPasswordFile, OutputWithoutAPasswordFileLineFallsBackToThePwdName) {
  use_scenario_file("collect_database.xml", {{"$VERSION$", "12.1.0.2.0"}});
  put_pwd_file();
  printing({"Database unique name: ORCL", "Database name: ORCL", "Oracle home: C:\\app",
            "Spfile: +DATA/ORCL/PARAMETERFILE/spfile.269.1031050991", "Domain: ",
            "Start options: open"});
  EXPECT_EQ(collect(false)->pwdFilePath, pwd_file());
  EXPECT_EQ(log_with("Start options: open").size(), 1u);  // every line was read
}

TEST_F(CollectPasswordFile, GarbageOutputFallsBackToThePwdName) {
  use_scenario_file("collect_database.xml");
  put_pwd_file();
  printing({"PRCD-1120 : The resource for database ORCL could not be found.", "xyzzy 42"});
  EXPECT_EQ(collect(false)->pwdFilePath, pwd_file());
}

TEST_F(CollectPasswordFile, NoOutputAndNoPwdFileGiveNothing) {
  use_scenario_file("collect_database.xml");
  printing({});
  EXPECT_EQ(collect(false)->pwdFilePath, u"");
  EXPECT_TRUE(log_with("Failed to get password file").empty());
}

TEST_F(CollectPasswordFile, DatabaseUnknownToTheToolFallsBackToThePwdName) {
  use_scenario_file("collect_database.xml", {{"$SRVCTL$", "unregistered"}});
  put_pwd_file();
  forwarder();
  EXPECT_EQ(collect(false)->pwdFilePath, pwd_file());
  EXPECT_EQ(log_with("PRCD-1120 : The resource for database ORCL could not be found.").size(), 1u);
}

TEST_F(CollectPasswordFile, ToolReportingAnEmptyPasswordFileFallsBackToThePwdName) {
  use_scenario_file("collect_database.xml", {{"$PASSWORD_FILE$", ""}});
  put_pwd_file();
  forwarder();
  EXPECT_EQ(collect(false)->pwdFilePath, pwd_file());
  EXPECT_EQ(log_with("Password file:").size(), 1u);
}

TEST_F(CollectPasswordFile, WithoutSrvctlThePwdNameIsTriedWithoutAFailure) {
  use_scenario_file("collect_database.xml");
  put_pwd_file();
  EXPECT_EQ(collect(false)->pwdFilePath, pwd_file());
  EXPECT_TRUE(log_with("Executing script").empty());
  EXPECT_TRUE(log_with("Failed to get password file").empty());
}

TEST_F(CollectPasswordFile, SrvctlInTheSrvmFolderIsUsedWhenBinHasNone) {
  use_scenario_file("collect_database.xml");
  forwarder(u"srvm\\bin\\srvctl.bat");
  EXPECT_EQ(collect(false)->pwdFilePath, util::from_utf8(kAsmPasswordFile));
  EXPECT_EQ(log_with("Executing script: " + util::to_utf8(home_file(u"srvm\\bin\\srvctl.bat"))).size(), 1u);
}

TEST_F(CollectPasswordFile, NoPasswordFileAnywhereIsNoError) {
  use_scenario_file("collect_database.xml", {{"$VERSION$", "11.2.0.4.0"}});
  auto props = collect(false);
  EXPECT_EQ(props->pwdFilePath, u"");
  EXPECT_FALSE(props->isError);
}

}  // namespace
}  // namespace collect_test

namespace collect_test {
namespace {

using namespace specific::oracle;

TEST_F(CollectPasswordFile, ASidThatWouldStartASecondCommandIsNeverRun) {
  use_scenario_file("collect_database.xml");
  forwarder();
  SOracleSid instance;
  instance.sid = u"ORCL&echo";
  instance.home = home();
  std::u16string location = u"old";
  EXPECT_FALSE(find_password_file_with_srvctl(instance, location));
  EXPECT_EQ(location, u"");
  EXPECT_TRUE(log_with("Executing script").empty());
  EXPECT_EQ(log_with("Failed to get password file ASM location").size(), 1u);
}

}  // namespace
}  // namespace collect_test
