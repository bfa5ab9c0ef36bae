// The host build's drive mapping as the simulated client applies it to the files it writes.
#include "ocisim_fixture.h"
#include "test_platform.h"

namespace ocisim_test {
namespace {

class HostPathsTest : public OcisimTest {
 protected:
  sword archive_to(const std::string& destination) {
    write_scenario(single_instance("<parameter name=\"log_archive_dest_1\" value=\"LOCATION=" + destination + "\"/>"));
    client_t client(api());
    EXPECT_EQ(client.attach("ORCL", kHome), OCI_SUCCESS);
    EXPECT_EQ(client.logon(OCI_SYSDBA), OCI_SUCCESS);
    const sword code = client.run("ALTER SYSTEM ARCHIVE LOG CURRENT");
    error_ = client.error_text();
    return code;
  }
  std::string error_;
};

TEST_F(HostPathsTest, ADriveLetterBecomesALowerCaseFolderBelowTheRoot) {
  ASSERT_EQ(archive_to("D:\\Arch\\ORCL"), OCI_SUCCESS) << error_;
  EXPECT_TRUE(file_exists(folder_ + "/root/d/Arch/ORCL/ARC0000000012_1040000000.0001"));
}

TEST_F(HostPathsTest, AServerShareBecomesAFolderBelowUnc) {
  ASSERT_EQ(archive_to("\\\\backup01\\logs\\orcl"), OCI_SUCCESS) << error_;
  EXPECT_TRUE(file_exists(folder_ + "/root/unc/backup01/logs/orcl/ARC0000000012_1040000000.0001"));
}

TEST_F(HostPathsTest, LongPathPrefixesAreDropped) {
  ASSERT_EQ(archive_to("\\\\?\\C:\\long\\arch"), OCI_SUCCESS) << error_;
  EXPECT_TRUE(file_exists(folder_ + "/root/c/long/arch/ARC0000000012_1040000000.0001"));
  ASSERT_EQ(archive_to("\\\\?\\UNC\\srv\\share\\arch"), OCI_SUCCESS) << error_;
  EXPECT_TRUE(file_exists(folder_ + "/root/unc/srv/share/arch/ARC0000000012_1040000000.0001"));
}

TEST_F(HostPathsTest, WithoutARootNothingIsWrittenOutsideIt) {
  set_env("DBSHADOWLINK_ROOT", "");
  EXPECT_EQ(archive_to("C:\\arch"), OCI_ERROR);
  EXPECT_NE(error_.find("ORA-19504"), std::string::npos) << error_;
}

}  // namespace
}  // namespace ocisim_test
