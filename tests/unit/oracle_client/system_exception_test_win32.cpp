// The system-exception frame against real structured exceptions, which only Windows raises.
#include <windows.h>

#include <gtest/gtest.h>

#include "client_test_support.h"
#include "config/oracle_config.h"
#include "oracle/client/oracle_exc.h"
#include "oracle/client/session_holder.h"
#include "oracle/client/system_exception.h"

namespace {

using dsl_test::has_line;
using namespace specific::oracle;

seh_filter_result_t accept_all(uint32_t) { return seh_filter_result_t::execute_handler; }

// Called through a pointer, as the client's entry points are, so the compiler cannot know
// that it faults.
int read_at(const volatile int* address) { return *address; }
int (*volatile g_read_at)(const volatile int*) = read_at;

struct marker_t {
  bool* unwound;
  ~marker_t() { *unwound = true; }
};

void fault_through_pointer(void* context) {
  marker_t marker{static_cast<bool*>(context)};
  const int value = g_read_at(reinterpret_cast<const volatile int*>(static_cast<uintptr_t>(0x10)));
  ADD_FAILURE() << "read " << value;
}

TEST(SystemExceptionFrameWin32, AccessViolationIsCaughtAndTheFramesUnwound) {
  bool unwound = false;
  EXPECT_TRUE(run_guarded(&fault_through_pointer, &unwound, &accept_all));
  EXPECT_TRUE(unwound);
}

void raise_delay_load_failure(void* context) {
  marker_t marker{static_cast<bool*>(context)};
  ::RaiseException(0xC06D007E, EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

TEST(SystemExceptionFrameWin32, NoncontinuableExceptionIsCaughtToo) {
  bool unwound = false;
  EXPECT_TRUE(run_guarded(&raise_delay_load_failure, &unwound, &accept_all));
  EXPECT_TRUE(unwound);
}

void handled_inside(void* context) {
  // A structured exception the client handles itself never reaches the frame: here, one the
  // C++ runtime raises and catches within the same call.
  try {
    throw 7;
  } catch (int) {
    *static_cast<bool*>(context) = true;
  }
}

TEST(SystemExceptionFrameWin32, ExceptionsHandledBelowTheFrameAreNotItsConcern) {
  bool handled = false;
  static int shown = 0;
  auto counting = [](uint32_t) {
    ++shown;
    return seh_filter_result_t::execute_handler;
  };
  EXPECT_FALSE(run_guarded(&handled_inside, &handled, counting));
  EXPECT_TRUE(handled);
  EXPECT_EQ(shown, 0);
}

class SessionHolderWin32 : public dsl_test::client_test_t {
 protected:
  void SetUp() override {
    COracleConfig config;
    config.connectionTimeoutSec = 20;
    COracleConfig::replace_for_tests(config);
  }
  void TearDown() override { COracleConfig::replace_for_tests(COracleConfig()); }
};

TEST_F(SessionHolderWin32, AccessViolationInsideTheClientGivesSessionIsInvalid) {
  oci_->on_call("OCISessionBegin", [] {
    (void)g_read_at(reinterpret_cast<const volatile int*>(static_cast<uintptr_t>(0x10)));
  });
  EXPECT_THROW(COracleSessionHolder(u"ORCL", u"C:\\oracle", conn_t{}, false), COracleSessionCreateExc);
  EXPECT_TRUE(has_line(log_lines(), "WARN|SEH exception has occurred while initializing Oracle "
                                    "session, exception code: 0xc0000005"));
  EXPECT_TRUE(oci_->live_handles().empty());
}

TEST_F(SessionHolderWin32, DelayLoadFailureRaisedByTheClientIsLoggedAsAMissingLibrary) {
  oci_->on_call("OCIEnvCreate", [] { ::RaiseException(0xC06D007F, 0, 0, nullptr); });
  EXPECT_THROW(COracleSessionHolder(u"ORCL", u"C:\\oracle", conn_t{}, false), COracleSessionCreateExc);
  EXPECT_TRUE(has_line(log_lines(), "ERR |Failed to load OCI library"));
}

}  // namespace
