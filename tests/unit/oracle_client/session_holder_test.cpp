#include "oracle/client/session_holder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>

#include "client_platform.h"
#include "client_test_support.h"
#include "common/win/thread_id.h"
#include "config/oracle_config.h"
#include "oracle/client/env_variable.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/oracle_exc.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_init.h"
#include "oracle/client/session_lock.h"
#include "oracle/client/system_exception.h"

namespace {

using dsl_test::has_line;
using dsl_test::index_of;
using namespace specific::oracle;
using lines_t = std::vector<std::string>;
using clock_type = std::chrono::steady_clock;

const std::u16string kSid = u"ORCL";
const std::u16string kHome = u"C:\\app\\oracle\\product\\12.1.0\\dbhome_1";

void set_timeout(uint32_t seconds) {
  COracleConfig config;
  config.connectionTimeoutSec = seconds;
  COracleConfig::replace_for_tests(config);
}

std::string env_value(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "<unset>";
}

// A hang the test ends: the hooked call waits, polling, until release(). The state is shared
// with the hook, so a worker still polling when the test ends touches nothing freed.
class hang_t {
 public:
  std::function<void()> hook() {
    return [state = state_] {
      state->entered = true;
      while (!state->released) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    };
  }
  // Ends the hang and gives the worker time to get back into the library.
  void release() {
    state_->released = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
  }
  bool entered() const { return state_->entered; }

 private:
  struct state_t {
    std::atomic<bool> entered{false};
    std::atomic<bool> released{false};
  };
  std::shared_ptr<state_t> state_ = std::make_shared<state_t>();
};

class SessionHolder : public dsl_test::client_test_t {
 protected:
  void SetUp() override { set_timeout(20); }
  void TearDown() override { COracleConfig::replace_for_tests(COracleConfig()); }

  std::vector<ub4> logon_modes() const {
    std::vector<ub4> modes;
    for (const auto& line : oci_->lines_of("OCISessionBegin")) {
      modes.push_back(static_cast<ub4>(std::stoul(line.substr(line.rfind("mode=") + 5))));
    }
    return modes;
  }
};

TEST_F(SessionHolder, MakesAnInitialisedSessionOnAWorkerThread) {
  COracleSessionHolder holder(kSid, kHome, conn_t{"scott", "tiger"}, false);
  ASSERT_TRUE(holder.get_session());
  EXPECT_TRUE(holder.get_session()->initialised());
  EXPECT_EQ(holder.get_sid(), kSid);
  EXPECT_EQ(holder.get_home(), kHome);
  EXPECT_TRUE(holder.make_query());
  const uint32_t self = win::current_thread_id();
  for (const auto& call : oci_->calls()) EXPECT_NE(call.thread, self) << call.line();
  EXPECT_EQ(logon_modes(), (std::vector<ub4>{2}));
  EXPECT_EQ(oci_->lines_of("OCISessionBegin"),
            (lines_t{"OCISessionBegin svcctx#3 err=error#2 session=session#5 cred=1 mode=2"}));
}

TEST_F(SessionHolder, SetsHomeThenSidAndLeavesThemSet) {
  { COracleSessionHolder holder(kSid, kHome, conn_t{}, false); }
  EXPECT_EQ(env_value("ORACLE_HOME"), "C:\\app\\oracle\\product\\12.1.0\\dbhome_1");
  EXPECT_EQ(env_value("ORACLE_SID"), "ORCL");
  const auto lines = log_lines();
  const long start = index_of(lines, "Creating oracle session holder: ORCL.");
  const long home = index_of(lines, "Setting env variable: ORACLE_HOME=C:\\app\\oracle\\product\\12.1.0\\dbhome_1");
  const long sid = index_of(lines, "Setting env variable: ORACLE_SID=ORCL");
  const long trying = index_of(lines, "Trying to initialize oracle interface");
  const long ok = index_of(lines, "Creating oracle session holder: ORCL. ok.");
  EXPECT_TRUE(start >= 0 && start < home && home < sid && sid < trying && trying < ok)
      << start << " " << home << " " << sid << " " << trying << " " << ok;
}

TEST_F(SessionHolder, PrelimConnectionLogsOnWithMode10) {
  COracleSessionHolder holder(kSid, kHome, conn_t{}, true);
  EXPECT_TRUE(holder.prelim_auth());
  EXPECT_EQ(logon_modes(), (std::vector<ub4>{10}));
}

TEST_F(SessionHolder, WrongPasswordWithAUserTriesSysdbaThenDefaultAndReportsTheSecondFailure) {
  oci_->fail("OCISessionBegin", OCI_ERROR, 1031, "ORA-01031: insufficient privileges\n");
  oci_->fail("OCISessionBegin", OCI_ERROR, 1017, "ORA-01017: invalid username/password; logon denied\n");
  try {
    COracleSessionHolder holder(kSid, kHome, conn_t{"scott", "wrong"}, false);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 1017u);
    EXPECT_EQ(std::string(e.what()),
              "Oracle error has occurred. ORA-01017: invalid username/password; logon denied\n\n"
              "--tr:Failed to create oracle session.\n"
              "--tr:Failed to create oracle session holder. SID: ORCL.");
  }
  EXPECT_EQ(logon_modes(), (std::vector<ub4>{2, 0}));
  // The first session is gone before the second attaches.
  lines_t order;
  for (const auto& call : oci_->calls()) {
    if (call.function == "OCIServerAttach" || call.function == "OCIServerDetach") order.push_back(call.function);
  }
  EXPECT_EQ(order, (lines_t{"OCIServerAttach", "OCIServerDetach", "OCIServerAttach", "OCIServerDetach"}));
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "Failed to connect as SYSDBA: insufficient privileges or channel error. "
                              "Connecting by default..."));
  EXPECT_TRUE(has_line(lines, "ERR |Oracle session init thread failed"));
  EXPECT_TRUE(oci_->live_handles().empty());
}

TEST_F(SessionHolder, DefaultLogonAfterAFailedSysdbaLogonGivesAWorkingHolder) {
  oci_->fail("OCISessionBegin", OCI_ERROR, 1031, "ORA-01031: insufficient privileges\n");
  COracleSessionHolder holder(kSid, kHome, conn_t{"scott", "tiger"}, false);
  EXPECT_TRUE(holder.get_session()->initialised());
  EXPECT_EQ(logon_modes(), (std::vector<ub4>{2, 0}));
}

TEST_F(SessionHolder, PrelimConnectionFallsBackToMode8Alone) {
  oci_->fail("OCISessionBegin", OCI_ERROR, 1031, "ORA-01031: insufficient privileges\n");
  COracleSessionHolder holder(kSid, kHome, conn_t{"sys", "pw"}, true);
  EXPECT_EQ(logon_modes(), (std::vector<ub4>{10, 8}));
}

TEST_F(SessionHolder, OperatingSystemAuthenticationIsNotRetried) {
  oci_->fail("OCISessionBegin", OCI_ERROR, 1031, "ORA-01031: insufficient privileges\n");
  try {
    COracleSessionHolder holder(kSid, kHome, conn_t{}, false);
    FAIL() << "no exception";
  } catch (const COracleExc& e) {
    EXPECT_EQ(e.code(), 1031u);
  }
  EXPECT_EQ(logon_modes(), (std::vector<ub4>{2}));
  EXPECT_FALSE(has_line(log_lines(), "Failed to connect as SYSDBA: insufficient privileges or channel "
                                     "error. Connecting by default..."));
}

TEST_F(SessionHolder, AnyOracleRefusalTriggersTheFallbackEvenAtAttach) {
  oci_->fail("OCIServerAttach", OCI_ERROR, 12560, "ORA-12560: TNS:protocol adapter error\n");
  COracleSessionHolder holder(kSid, kHome, conn_t{"scott", "tiger"}, false);
  EXPECT_EQ(oci_->count("OCIServerAttach"), 2u);
  EXPECT_EQ(logon_modes(), (std::vector<ub4>{0}));
}

TEST_F(SessionHolder, FailureThatIsNoOracleRefusalIsNotRetried) {
  oci_->fail("OCISessionBegin", OCI_INVALID_HANDLE);
  try {
    COracleSessionHolder holder(kSid, kHome, conn_t{"scott", "tiger"}, false);
    FAIL() << "no exception";
  } catch (const COracleExc&) {
    FAIL() << "not an Oracle refusal";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_EQ(std::string(e.what()),
              "Unexpected Oracle error has occurred. Code: -2\n"
              "--tr:Failed to create oracle session.\n"
              "--tr:Failed to create oracle session holder. SID: ORCL.");
  }
  EXPECT_EQ(logon_modes(), (std::vector<ub4>{2}));
}

TEST_F(SessionHolder, StoppedInstanceGivesAHolderWithInstanceDownAndNoException) {
  oci_->fail("OCISessionBegin", OCI_ERROR, 1034, "ORA-01034: ORACLE not available\n");
  std::unique_ptr<COracleSessionHolder> holder;
  ASSERT_NO_THROW(holder = std::make_unique<COracleSessionHolder>(kSid, kHome, conn_t{}, false));
  EXPECT_TRUE(holder->get_session()->instance_down());
  EXPECT_TRUE(holder->get_session()->initialised());
  EXPECT_FALSE(holder->get_session()->is_instance_open(false));
}

TEST_F(SessionHolder, DestructionEndsTheSessionInOrder) {
  auto holder = std::make_shared<COracleSessionHolder>(kSid, kHome, conn_t{}, false);
  oci_->clear_calls();
  holder.reset();
  EXPECT_EQ(oci_->lines(),
            (lines_t{"OCISessionEnd svcctx#3 err=error#2 session=session#5 mode=0",
                     "OCIServerDetach server#4 err=error#2 mode=0", "OCIHandleFree session#5 type=9",
                     "OCIHandleFree server#4 type=8", "OCIHandleFree svcctx#3 type=3",
                     "OCIHandleFree error#2 type=2", "OCIHandleFree env#1 type=1"}));
}

TEST_F(SessionHolder, HangBeyondTheTimeOutRaisesInitTimeoutAndNoCallFollows) {
  set_timeout(1);
  hang_t hang;
  oci_->on_call("OCIServerAttach", hang.hook());
  const auto start = clock_type::now();
  try {
    COracleSessionHolder holder(kSid, kHome, conn_t{"scott", "tiger"}, false);
    FAIL() << "no exception";
  } catch (const COracleInitTimeoutExc& e) {
    EXPECT_EQ(std::string(e.what()),
              "Failed to wait oracle session initialization\n"
              "--tr:Failed to create oracle session holder. SID: ORCL.");
  }
  const auto waited = clock_type::now() - start;
  EXPECT_GE(waited, std::chrono::milliseconds(950));
  EXPECT_LT(waited, std::chrono::milliseconds(3000));
  EXPECT_TRUE(hang.entered());
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "Terminating oracle init thread"));
  EXPECT_TRUE(has_line(lines, "Terminating oracle init thread ok."));
  EXPECT_EQ(session_lock_t::instance().owner(), 0u);

  // Let the hung call return: the worker must not reach the client again.
  const size_t before = oci_->calls().size();
  hang.release();
  EXPECT_EQ(oci_->calls().size(), before) << "a call reached the abandoned handles";
  EXPECT_FALSE(has_line(log_lines(), "Oracle session init thread failed"));

  // The next holder works.
  oci_->on_call("OCIServerAttach", nullptr);
  set_timeout(20);
  COracleSessionHolder next(kSid, kHome, conn_t{"scott", "tiger"}, false);
  EXPECT_TRUE(next.get_session()->initialised());
}

TEST_F(SessionHolder, TimeOutOfZeroSecondsGivesUpAtOnce) {
  set_timeout(0);
  hang_t hang;
  oci_->on_call("OCIServerAttach", hang.hook());
  const auto start = clock_type::now();
  EXPECT_THROW(COracleSessionHolder(kSid, kHome, conn_t{}, false), COracleInitTimeoutExc);
  EXPECT_LT(clock_type::now() - start, std::chrono::milliseconds(900));
  hang.release();
}

TEST_F(SessionHolder, HangAtLogonIsCutOffToo) {
  set_timeout(1);
  hang_t hang;
  oci_->on_call("OCISessionBegin", hang.hook());
  EXPECT_THROW(COracleSessionHolder(kSid, kHome, conn_t{}, false), COracleInitTimeoutExc);
  const size_t before = oci_->calls().size();
  hang.release();
  EXPECT_EQ(oci_->calls().size(), before);
  EXPECT_EQ(oci_->count("OCIHandleFree"), 0u);
}

TEST_F(SessionHolder, TheLockIsRecursiveOnTheSameThread) {
  session_lock_guard_t outer;
  uint32_t countInside = 0;
  uint32_t ownerInside = 0;
  oci_->on_call("OCIServerAttach", [&] {
    countInside = session_lock_t::instance().count();
    ownerInside = session_lock_t::instance().owner();
  });
  COracleSessionHolder holder(kSid, kHome, conn_t{}, false);
  EXPECT_EQ(countInside, 2u);
  EXPECT_EQ(ownerInside, win::current_thread_id());
  EXPECT_EQ(session_lock_t::instance().count(), 1u);
}

TEST_F(SessionHolder, SessionsAreNeverMadeAtOnce) {
  std::atomic<int> inFlight{0};
  std::atomic<int> most{0};
  oci_->on_call("OCIEnvCreate", [&] {
    const int now = ++inFlight;
    int seen = most.load();
    while (now > seen && !most.compare_exchange_weak(seen, now)) {
    }
  });
  oci_->on_call("OCISessionBegin", [&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    --inFlight;
  });
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] { COracleSessionHolder holder(kSid, kHome, conn_t{}, false); });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(most.load(), 1);
  EXPECT_EQ(oci_->count("OCISessionBegin"), 4u);
}

TEST_F(SessionHolder, SystemExceptionInTheClientGivesSessionIsInvalid) {
  oci_->on_call("OCIServerAttach", [] { raise_system_exception(0xC0000005); });
  try {
    COracleSessionHolder holder(kSid, kHome, conn_t{}, false);
    FAIL() << "no exception";
  } catch (const COracleExc&) {
    FAIL() << "must not be a COracleExc";
  } catch (const COracleSessionCreateExc& e) {
    EXPECT_EQ(std::string(e.what()),
              "Failed to create oracle session holder. Session is invalid.\n"
              "--tr:Failed to create oracle session holder. SID: ORCL.");
  }
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "WARN|SEH exception has occurred while initializing Oracle session, "
                              "exception code: 0xc0000005"));
  EXPECT_FALSE(has_line(lines, "ERR |Oracle session init thread failed"));
  // The frames between were unwound: the session was freed when the holder gave up.
  EXPECT_TRUE(oci_->live_handles().empty());
}

TEST_F(SessionHolder, CppExceptionOfTheClientPassesTheFrameAndIsReported) {
  oci_->on_call("OCIServerAttach", [] { throw std::runtime_error("client threw"); });
  try {
    COracleSessionHolder holder(kSid, kHome, conn_t{}, false);
    FAIL() << "no exception";
  } catch (const COracleSessionCreateExc&) {
    FAIL() << "a C++ exception must not be taken for a system exception";
  } catch (const exc::runtime_exc_t& e) {
    EXPECT_EQ(std::string(e.what()),
              "client threw\n"
              "--tr:OracleSession: failed to init server.\n"
              "--tr:Failed to create oracle session.\n"
              "--tr:Failed to create oracle session holder. SID: ORCL.");
  }
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "ERR |Oracle session init thread failed"));
  EXPECT_EQ(dsl_test::index_starting(lines, "WARN|SEH exception"), -1);
}

TEST_F(SessionHolder, SoftWayInReturnsNothingAndLogsTheFailure) {
  oci_->fail("OCIServerAttach", OCI_ERROR, 12560, "ORA-12560: TNS:protocol adapter error\n");
  auto holder = COracleSessionHolder::create(kSid, kHome, conn_t{});
  EXPECT_FALSE(holder);
  const auto lines = log_lines();
  const long at = index_of(lines, "ERR |Failed to create session holder for SID: ORCL");
  ASSERT_GE(at, 0);
  EXPECT_EQ(lines[at + 1], ">>  |Oracle error has occurred. ORA-12560: TNS:protocol adapter error");
}

TEST_F(SessionHolder, SoftWayInTakesAnInstanceRecord) {
  struct sid_record_t {
    std::u16string sid;
    std::u16string home;
    std::u16string homeName;
    bool isAsm;
  } record{u"+ASM", kHome, u"OraDb12Home1", true};
  auto holder = COracleSessionHolder::create(record, conn_t{});
  ASSERT_TRUE(holder);
  EXPECT_EQ(holder->get_sid(), u"+ASM");
  EXPECT_FALSE(holder->prelim_auth());
}

// The client library itself -----------------------------------------------------------------

class ClientLibrary : public SessionHolder {
 protected:
  void SetUp() override {
    SessionHolder::SetUp();
    oci_.reset();  // the gate binds the library named by DSL_OCI_LIBRARY
    const char* previous = std::getenv(kOciLibraryVariable);
    previous_ = previous ? previous : "";
  }
  void TearDown() override {
    put(previous_);
    SessionHolder::TearDown();
  }
  static void put(const std::string& value);

  std::string previous_;
};

void ClientLibrary::put(const std::string& value) {
  put_env_assignment(std::string(kOciLibraryVariable) + "=" + value);
}
const char* const kMissingLibrary = dsl_test::missing_client_library();
const char* const kLibraryWithoutOci = dsl_test::library_without_oci();

TEST_F(ClientLibrary, MissingLibraryIsLoggedAndTheCallerHearsSessionIsInvalid) {
  put(kMissingLibrary);
  try {
    COracleSessionHolder holder(kSid, kHome, conn_t{}, false);
    FAIL() << "no exception";
  } catch (const COracleSessionCreateExc& e) {
    EXPECT_EQ(std::string(e.what()),
              "Failed to create oracle session holder. Session is invalid.\n"
              "--tr:Failed to create oracle session holder. SID: ORCL.");
  }
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "ERR |Failed to load OCI library"));
  EXPECT_GE(dsl_test::index_starting(lines, std::string("Cannot load OCI client library [") + kMissingLibrary + "]"), 0);
  EXPECT_FALSE(has_line(lines, "ERR |Oracle session init thread failed"));
}

TEST_F(ClientLibrary, MissingEntryPointTakesTheSamePath) {
  put(kLibraryWithoutOci);
  EXPECT_THROW(COracleSessionHolder(kSid, kHome, conn_t{}, false), COracleSessionCreateExc);
  const auto lines = log_lines();
  EXPECT_TRUE(has_line(lines, "ERR |Failed to load OCI library"));
  EXPECT_TRUE(has_line(lines, std::string("OCI client library [") + kLibraryWithoutOci +
                                  "] has no entry point [OCIEnvCreate]"));
}

TEST_F(ClientLibrary, SoftWayInOfAMachineWithoutAClientReturnsNothing) {
  put(kMissingLibrary);
  EXPECT_FALSE(COracleSessionHolder::create(kSid, kHome, conn_t{}));
  EXPECT_TRUE(has_line(log_lines(), "ERR |Failed to create session holder for SID: ORCL"));
}

// The worker's pieces -----------------------------------------------------------------------

TEST(SessionInitWork, CutOffBeforeTheSessionExistsFlagsNothingUntilOneIsPublished) {
  session_init_work_t work(conn_t{}, false);
  work.cut_off();
  EXPECT_TRUE(work.is_cut_off());
  EXPECT_FALSE(work.session());
  auto session = std::make_shared<COracleSession>(conn_t{});
  work.publish(session);
  EXPECT_TRUE(session->terminated());
}

TEST(SessionInitWork, WorkerCutOffNeverChangesTheEnvironmentAgain) {
  dsl_test::capture_log_t log;
  session_init_work_t work(conn_t{}, false);
  EXPECT_TRUE(work.set_environment(u"DSL_CUT_OFF_PROBE", u"first"));
  EXPECT_EQ(env_value("DSL_CUT_OFF_PROBE"), "first");
  work.cut_off();
  EXPECT_FALSE(work.set_environment(u"DSL_CUT_OFF_PROBE", u"second"));
  EXPECT_EQ(env_value("DSL_CUT_OFF_PROBE"), "first");
}

TEST(SessionInitWork, CutOffFlagsThePublishedSession) {
  session_init_work_t work(conn_t{}, false);
  auto session = std::make_shared<COracleSession>(conn_t{});
  work.publish(session);
  EXPECT_FALSE(session->terminated());
  work.cut_off();
  EXPECT_TRUE(session->terminated());
}

TEST(SessionInitWork, AWorkerThatFinishedIsNotCutOffAndIsLeftToEnd) {
  session_init_work_t work(conn_t{}, false);
  auto session = std::make_shared<COracleSession>(conn_t{});
  work.publish(session);
  EXPECT_TRUE(work.finish());
  EXPECT_FALSE(work.cut_off());
  EXPECT_FALSE(work.is_cut_off());
  EXPECT_FALSE(session->terminated());
}

TEST(SessionInitWork, AWorkerCutOffBeforeItFinishedMustPark) {
  session_init_work_t work(conn_t{}, false);
  EXPECT_TRUE(work.cut_off());
  EXPECT_FALSE(work.finish());
  EXPECT_TRUE(work.is_cut_off());
}

TEST(SessionInitFilter, DelayLoadFailuresAreLoggedAndHandled) {
  dsl_test::capture_log_t log;
  EXPECT_EQ(session_init_filter(0xC06D007E), seh_filter_result_t::execute_handler);
  EXPECT_EQ(session_init_filter(0xC06D007F), seh_filter_result_t::execute_handler);
  EXPECT_EQ(dsl_test::plain_log(log), (lines_t{"ERR |Failed to load OCI library", "ERR |Failed to load OCI library"}));
}

TEST(SessionInitFilter, CppExceptionsPassSilently) {
  dsl_test::capture_log_t log;
  EXPECT_EQ(session_init_filter(0xE06D7363), seh_filter_result_t::continue_search);
  EXPECT_EQ(session_init_filter(0x20474343), seh_filter_result_t::continue_search);
  EXPECT_TRUE(dsl_test::plain_log(log).empty());
}

TEST(SessionInitFilter, OtherSystemExceptionsAreWarnedAboutWithTheirCode) {
  dsl_test::capture_log_t log;
  EXPECT_EQ(session_init_filter(0xC00000FD), seh_filter_result_t::execute_handler);
  EXPECT_EQ(dsl_test::plain_log(log),
            (lines_t{"WARN|SEH exception has occurred while initializing Oracle session, exception "
                     "code: 0xc00000fd"}));
}

// The frame itself ---------------------------------------------------------------------------

seh_filter_result_t accept_all(uint32_t) { return seh_filter_result_t::execute_handler; }
seh_filter_result_t accept_none(uint32_t) { return seh_filter_result_t::continue_search; }

struct frame_probe_t {
  bool unwound = false;
};

struct unwind_marker_t {
  frame_probe_t* probe;
  ~unwind_marker_t() { probe->unwound = true; }
};

void raise_access_violation(void* context) {
  unwind_marker_t marker{static_cast<frame_probe_t*>(context)};
  raise_system_exception(0xC0000005);
}

void return_normally(void*) {}

TEST(SystemExceptionFrame, AcceptedExceptionUnwindsToTheFrame) {
  frame_probe_t probe;
  EXPECT_TRUE(run_guarded(&raise_access_violation, &probe, &accept_all));
  EXPECT_TRUE(probe.unwound);
}

TEST(SystemExceptionFrame, NormalReturnIsNoException) {
  EXPECT_FALSE(run_guarded(&return_normally, nullptr, &accept_all));
}

void inner_refuses(void* context) {
  // The inner frame refuses, so it must not return at all; returning true would be wrong.
  EXPECT_FALSE(run_guarded(&raise_access_violation, context, &accept_none));
}

TEST(SystemExceptionFrame, RefusedExceptionGoesOnToTheOuterFrame) {
  frame_probe_t probe;
  EXPECT_TRUE(run_guarded(&inner_refuses, &probe, &accept_all));
  EXPECT_TRUE(probe.unwound);
}

void throw_cpp(void*) { throw std::logic_error("C++"); }

TEST(SystemExceptionFrame, CppExceptionsAreNotShownToTheFilter) {
  static int shown = 0;
  shown = 0;
  auto counting = [](uint32_t) {
    ++shown;
    return seh_filter_result_t::execute_handler;
  };
  EXPECT_THROW(run_guarded(&throw_cpp, nullptr, counting), std::logic_error);
  EXPECT_EQ(shown, 0);
}

}  // namespace
