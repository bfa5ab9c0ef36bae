// The parameter file by name in the home's database folder: the file system alone decides.
#include <gtest/gtest.h>

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

}  // namespace
