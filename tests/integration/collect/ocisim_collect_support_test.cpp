// What the simulated machine offers the collector beyond its views: CREATE PFILE with Oracle's
// refusals, and the srvctl stand-in run through the library's command-line seam.
#include <gtest/gtest.h>

#include "collect_fixture.h"
#include "common/text/convert.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/command_line.h"

namespace collect_test {
namespace {

using namespace specific::oracle;

class SimulatedSupport : public collect_test_t {
 protected:
  std::shared_ptr<COracleQuery> query() {
    if (!holder_) holder_ = std::make_shared<COracleSessionHolder>(u"ORCL", home(), conn_t{}, false);
    return holder_->get_session()->make_query();
  }
  void TearDown() override {
    holder_.reset();
    collect_test_t::TearDown();
  }
  // Runs the stand-in in the home's BIN folder and returns what it wrote.
  std::string run_srvctl(const std::string& arguments) {
    const std::u16string out = folder_->base() + u"srvctl-output.txt";
    run_command_line(home_file(u"bin\\srvctl.bat") + util::from_utf8(" " + arguments + " > ") + out);
    return folder_->raw_read(u"srvctl-output.txt");
  }
  std::shared_ptr<COracleSessionHolder> holder_;
};

TEST_F(SimulatedSupport, PfileIntoAMissingFolderFailsAsOracleDoes) {
  use_scenario_file("collect_database.xml");
  try {
    query()->run("create pfile='" + base() + "no such folder\\x.ora' from memory");
    FAIL() << "no failure";
  } catch (const std::exception& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("ORA-27040: file create error, unable to create file"), std::string::npos) << what;
    EXPECT_NE(what.find("O/S-Error: (OS 3) The system cannot find the path specified."), std::string::npos)
        << what;
  }
}

TEST_F(SimulatedSupport, PfileWithoutATargetIsTheHomesInitFile) {
  use_scenario_file("collect_database.xml");
  put_file(u"app\\oracle\\product\\19.0.0\\dbhome_1\\database\\keep.txt", "k");
  query()->run("CREATE PFILE FROM SPFILE");
  const std::string text =
      folder_->raw_read(u"app\\oracle\\product\\19.0.0\\dbhome_1\\database\\INITORCL.ORA");
  EXPECT_NE(text.find("*.control_files='" + base() + "oradata\\ORCL\\CONTROL01.CTL','" + base() +
                      "oradata\\ORCL\\CONTROL02.CTL'\n"),
            std::string::npos)
      << text;
}

TEST_F(SimulatedSupport, PfileTargetWithDoubledApostrophesIsOneName) {
  use_scenario_file("collect_database.xml");
  put_file(u"O'Brien\\keep.txt", "k");
  query()->run("create pfile='" + base() + "O''Brien\\init.ora' from memory");
  EXPECT_TRUE(has_file(u"O'Brien\\init.ora"));
}

TEST_F(SimulatedSupport, SrvctlOf19cNamesThePasswordFile) {
  use_scenario_file("collect_database.xml");
  write_srvctl_forwarder(*folder_, u"app\\oracle\\product\\19.0.0\\dbhome_1\\bin\\srvctl.bat");
  const std::string out = run_srvctl("config database -db orcl");
  EXPECT_NE(out.find("Database unique name: ORCL"), std::string::npos) << out;
  EXPECT_NE(out.find("Password file: +DATA/ORCL/PASSWORD/pwdorcl.256.1031050111"), std::string::npos) << out;
  EXPECT_NE(out.find("Spfile: +DATA/ORCL/PARAMETERFILE/spfile.269.1031050991"), std::string::npos);
  EXPECT_NE(out.find("Disk Groups: DATA"), std::string::npos);
}

TEST_F(SimulatedSupport, SrvctlOf11gHasNoPasswordFileLine) {
  use_scenario_file("collect_database.xml", {{"$VERSION$", "11.2.0.4.0"}});
  write_srvctl_forwarder(*folder_, u"app\\oracle\\product\\19.0.0\\dbhome_1\\bin\\srvctl.bat");
  const std::string out = run_srvctl("config database -d ORCL");
  EXPECT_NE(out.find("Database name: ORCL"), std::string::npos) << out;
  EXPECT_EQ(out.find("Password file:"), std::string::npos) << out;
}

TEST_F(SimulatedSupport, SrvctlOfAnUnknownDatabaseSaysSo) {
  use_scenario_file("collect_database.xml");
  write_srvctl_forwarder(*folder_, u"app\\oracle\\product\\19.0.0\\dbhome_1\\bin\\srvctl.bat");
  const std::string out = run_srvctl("config database -db NOPE");
  EXPECT_EQ(out.rfind("PRCD-1120 : The resource for database NOPE could not be found.", 0), 0u) << out;
  EXPECT_NE(out.find("PRCR-1001 : Resource ora.nope.db does not exist"), std::string::npos) << out;
}

}  // namespace
}  // namespace collect_test
