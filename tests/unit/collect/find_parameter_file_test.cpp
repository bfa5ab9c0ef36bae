// The parameter file by name in the home's database folder: the file system alone decides.
#include <gtest/gtest.h>

#include "common/exc/exc_base.h"
#include "common/win/file_hooks.h"
#include "oracle/discovery/ora_sid_collector.h"
#include "support/test_folder.h"

namespace {

using namespace specific::oracle;

class FindParameterFile : public ::testing::Test {
 protected:
  SOracleSid instance() const {
    SOracleSid sid;
    sid.sid = u"ORCL";
    sid.home = folder_.path(u"home");
    return sid;
  }
  dsl_test::test_folder_t folder_;
};

TEST_F(FindParameterFile, TheSpfileComesFirst) {
  folder_.raw_write(u"home\\database\\spfileORCL.ora", "s");
  folder_.raw_write(u"home\\database\\initORCL.ora", "i");
  EXPECT_EQ(find_parameter_file(instance()), folder_.path(u"home\\database\\spfileORCL.ora"));
}

TEST_F(FindParameterFile, TheInitFileServesWhenThereIsNoSpfile) {
  folder_.raw_write(u"home\\database\\initORCL.ora", "i");
  EXPECT_EQ(find_parameter_file(instance()), folder_.path(u"home\\database\\initORCL.ora"));
}

TEST_F(FindParameterFile, NeitherGivesAnEmptyPath) {
  folder_.raw_write(u"home\\database\\spfileOTHER.ora", "s");
  EXPECT_EQ(find_parameter_file(instance()), u"");
}

TEST_F(FindParameterFile, AHomeWithATrailingSeparatorGetsNoSecondOne) {
  folder_.raw_write(u"home\\database\\initORCL.ora", "i");
  SOracleSid sid = instance();
  sid.home += u"\\";
  EXPECT_EQ(find_parameter_file(sid), folder_.path(u"home\\database\\initORCL.ora"));
}

TEST_F(FindParameterFile, ASidThatClimbsOutOfTheFolderFindsNothing) {
  folder_.raw_write(u"home\\database\\spfileORCL.ora", "s");
  folder_.raw_write(u"home\\x.ora", "a file outside the database folder");
  folder_.raw_mkdir(u"home\\database\\spfile");  // so that the host build resolves the dots too
  SOracleSid sid = instance();
  sid.sid = u"\\..\\..\\x";  // spfile\..\..\x.ora would name home\x.ora
  EXPECT_EQ(find_parameter_file(sid), u"");
}

// A policy that refuses every path: the existence test then fails rather than answers.
class refuse_all_t : public win::file_hooks_t {
 public:
  void check_access(const win::path_holder_t& path) override {
    throw exc::win_sys_exc_t("Access to [%1] is refused.", path.narrow(), /*access denied*/ 5);
  }
};

TEST_F(FindParameterFile, AnExistenceTestThatFailsCountsAsAbsentAndRaisesNothing) {
  folder_.raw_write(u"home\\database\\spfileORCL.ora", "s");
  win::set_file_hooks(std::make_shared<refuse_all_t>());
  std::u16string found = u"old";
  EXPECT_NO_THROW(found = find_parameter_file(instance()));
  win::set_file_hooks(nullptr);
  EXPECT_EQ(found, u"");
}

}  // namespace
