// A session worker given up on at any instant of its work leaves the process working: the next
// session, a log line, an allocation and a load of the client all go through. The instants are
// swept from 0 to the worker's own duration. DSL_CUT_OFF_ITERATIONS sets how many (default
// 100); scripts/stress runs many more.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include "common/logging/log_channel.h"
#include "ocisim_fixture.h"
#include "ocisim_platform.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/client/session_init.h"
#include "oracle/client/session_lock.h"

namespace {

using namespace specific::oracle;
using ocisim_test::machine_with;
using clock_type = std::chrono::steady_clock;

const std::u16string kHome = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";

const std::string kMachine = machine_with(
    "<instance sid=\"ORCL\" home=\"C:\\app\\oracle\\product\\19.0.0\\dbhome_1\" state=\"open\">\n"
    "<database name=\"ORCL\" dbid=\"1559187620\" open_mode=\"READ WRITE\" log_mode=\"ARCHIVELOG\"/>\n"
    "</instance>\n");

int iterations() {
  const char* text = std::getenv("DSL_CUT_OFF_ITERATIONS");
  const int count = text != nullptr ? std::atoi(text) : 0;
  return count > 1 ? count : 100;
}

// Ends the process with a message when the test makes no progress for a minute: a frozen
// process is the failure this test looks for, and it must not wait for CTest's time-out.
class watchdog_t {
 public:
  watchdog_t() {
    thread_ = std::thread([state = state_] {
      int last = -1;
      auto since = clock_type::now();
      while (!state->done) {
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        const int now = state->progress.load();
        if (now != last) {
          last = now;
          since = clock_type::now();
        } else if (clock_type::now() - since > std::chrono::seconds(60)) {
          std::fprintf(stderr, "FROZEN: no progress for 60 s at iteration %d, step %d\n",
                       now / 10, now % 10);
          std::fflush(stderr);
          std::_Exit(3);
        }
      }
    });
  }
  ~watchdog_t() {
    state_->done = true;
    thread_.join();
  }
  void step(int iteration, int part) { state_->progress = iteration * 10 + part; }

 private:
  struct state_t {
    std::atomic<int> progress{0};
    std::atomic<bool> done{false};
  };
  std::shared_ptr<state_t> state_ = std::make_shared<state_t>();
  std::thread thread_;
};

// One worker as the holder runs it, given up on after `timeout`; true when it ended in time.
bool run_worker(std::chrono::microseconds timeout) {
  session_lock_guard_t lock;
  auto work = std::make_shared<session_init_work_t>(conn_t{}, /*prelimAuth=*/false);
  return run_session_worker_within(work, u"ORCL", kHome, timeout);
}

using WorkerCutOff = ocisim_test::ocisim_test_t;

TEST_F(WorkerCutOff, CuttingTheWorkerOffAtAnyInstantOfItsWorkNeverFreezesTheProcess) {
  use_scenario(kMachine);
  // The worker's own duration: the shortest of a few whole runs (the first binds the client
  // and reads the scenario afresh), so that nearly every instant falls inside the work.
  std::chrono::microseconds duration = std::chrono::seconds(20);
  for (int i = 0; i < 5; ++i) {
    const auto start = clock_type::now();
    ASSERT_TRUE(run_worker(std::chrono::seconds(20)));
    duration = std::min(duration, std::chrono::duration_cast<std::chrono::microseconds>(
                                      clock_type::now() - start));
  }

  const int count = iterations();
  int cut = 0;
  int ended = 0;
  watchdog_t watchdog;
  for (int i = 0; i < count; ++i) {
    watchdog.step(i, 0);
    const auto instant = duration * i / (count - 1);
    if (run_worker(instant)) {
      ++ended;
    } else {
      ++cut;
    }
    // After it: a new session, a log line, an allocation, a load and unload of the client.
    watchdog.step(i, 1);
    {
      COracleSessionHolder holder(u"ORCL", kHome, conn_t{}, false);
      ASSERT_TRUE(holder.get_session()->initialised()) << "iteration " << i;
    }
    watchdog.step(i, 2);
    const std::string line = "after cut-off " + std::to_string(i);
    logging::oralib().info("%1", line);
    watchdog.step(i, 3);
    auto block = std::make_unique<char[]>(4096 + static_cast<size_t>(i));
    block[0] = 'x';
    void* raw = std::malloc(1 << 16);
    ASSERT_NE(raw, nullptr);
    std::free(raw);
    watchdog.step(i, 4);
    ASSERT_TRUE(ocisim_test::load_and_unload_client()) << "iteration " << i;
  }
  // Both ways out were taken: the sweep reached inside the work and past its end.
  EXPECT_GT(cut, 0);
  EXPECT_GT(ended, 0);
  const auto lines = log_lines();
  EXPECT_NE(std::find_if(lines.begin(), lines.end(),
                         [&](const std::string& l) {
                           return l.find("after cut-off " + std::to_string(count - 1)) !=
                                  std::string::npos;
                         }),
            lines.end());
  std::printf("[ figures  ] %d iterations over %lld us: %d cut off, %d ended in time\n", count,
              static_cast<long long>(duration.count()), cut, ended);
}

}  // namespace
