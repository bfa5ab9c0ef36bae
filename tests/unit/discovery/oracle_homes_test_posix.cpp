// The host build only: a registry store file that cannot be read is a broken test machine, not
// a machine without Oracle, so discovery fails instead of reporting no instances.
#include <gtest/gtest.h>

#include <string>

#include "common/exc/exc_base.h"
#include "discovery_machine.h"

namespace {

TEST(OracleHomesHostStore, AStoreFileThatCannotBeParsedFailsDiscovery) {
  const std::string folder = dsl_test::scratch_folder("discovery-broken-store");
  const std::string path = folder + "/broken.reg";
  dsl_test::write_file(path, "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\SOFTWARE\n");
  {
    dsl_test::reg_machine_t machine(path);
    try {
      const specific::oracle::COracleHomes homes;
      ADD_FAILURE() << "no failure";
    } catch (const exc::exc_base_t& e) {
      const auto chain = dsl_test::chain_of(e);
      ASSERT_GE(chain.size(), 3u);
      EXPECT_NE(chain.front().find("broken.reg"), std::string::npos) << chain.front();
      EXPECT_EQ(chain[chain.size() - 2], "COracleHomes: failed to find oracle homes.");
      EXPECT_EQ(chain.back(), "Failed to create oracle homes.");
    }
  }
  dsl_test::remove_folder(folder);
}

}  // namespace
