// The writer probe against real services: on Windows the test service program installed as
// OracleVssWriterORCL and brought into the fixture's state, on the host build the service keys
// of the fixture's registry.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "oracle/discovery/vss_probes.h"
#include "support/capture_receiver.h"
#include "vss_services.h"

namespace {

using specific::oracle::probe_writer;

bool logged(const dsl_test::capture_log_t& log, const std::string& text) {
  for (const auto& line : dsl_test::plain_log(log)) {
    if (line == text) return true;
  }
  return false;
}

bool logged_prefix(const dsl_test::capture_log_t& log, const std::string& prefix) {
  for (const auto& line : dsl_test::plain_log(log)) {
    if (line.rfind(prefix, 0) == 0) return true;
  }
  return false;
}

TEST(VssWriterProbe, ServiceNameIsTheWriterPrefixAndTheSidAsGiven) {
  EXPECT_EQ(specific::oracle::vss_writer_service_name(u"orcl"), u"OracleVssWriterorcl");
}

TEST(VssWriterProbe, RunningWriterAnswersTrueAndLogsItsState) {
  dsl_test::vss_services_t services("vss_writer_orcl_running.reg");
  dsl_test::capture_log_t log;
  EXPECT_TRUE(probe_writer(u"ORCL"));
  EXPECT_TRUE(logged(log, "Found service: OracleVssWriterORCL, status: 4"));
}

TEST(VssWriterProbe, StoppedWriterAnswersFalse) {
  dsl_test::vss_services_t services("vss_writer_orcl_stopped.reg");
  dsl_test::capture_log_t log;
  EXPECT_FALSE(probe_writer(u"ORCL"));
  EXPECT_TRUE(logged(log, "Found service: OracleVssWriterORCL, status: 1"));
}

TEST(VssWriterProbe, PausedWriterAnswersFalse) {
  dsl_test::vss_services_t services("vss_writer_orcl_paused.reg");
  dsl_test::capture_log_t log;
  EXPECT_FALSE(probe_writer(u"ORCL"));
  EXPECT_TRUE(logged(log, "Found service: OracleVssWriterORCL, status: 7"));
}

TEST(VssWriterProbe, MissingWriterAnswersFalseAndLogsTheFailure) {
  dsl_test::capture_log_t log;
  EXPECT_FALSE(probe_writer(u"DSLNOSUCHSID"));
  EXPECT_TRUE(logged(log, "ERR |Failed to check if VSS oracle writer service enabled, sid: "
                          "DSLNOSUCHSID"));
  EXPECT_TRUE(logged_prefix(log, ">>  |Failed to open service 'OracleVssWriterDSLNOSUCHSID'."));
  EXPECT_FALSE(logged_prefix(log, "Found service"));
}

TEST(VssWriterProbe, LookupOfTheServiceUsesTheSidAsGiven) {
  // Service names are not case-sensitive on Windows, so "orcl" finds the same service.
  dsl_test::vss_services_t services("vss_writer_orcl_running.reg");
  dsl_test::capture_log_t log;
  EXPECT_TRUE(probe_writer(u"orcl"));
  EXPECT_TRUE(logged(log, "Found service: OracleVssWriterorcl, status: 4"));
}

}  // namespace
