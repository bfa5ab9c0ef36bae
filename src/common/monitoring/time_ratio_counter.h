// CTimeRatioCounter: how much of a thread's time goes into one kind of work (reads, writes).
// enter() and leave() bracket each piece of work; the busy share is brought up to date at each
// enter after a leave, over the span since the previous one. A counter is touched by its own
// thread alone and holds no lock. Time stamps are microseconds.
#pragma once
#include <cstdint>
#include <memory>

namespace workload {

class CTimeRatioCounter {
 public:
  enum state_t : int { kNew = 0, kInside = 1, kOutside = 2 };

  // `context` is what the creating thread's context resolved to.
  explicit CTimeRatioCounter(std::shared_ptr<void> context = nullptr);

  void enter();
  void leave();
  // The same, at a given time stamp.
  void enter(uint64_t now);
  void leave(uint64_t now);
  // The byte count of the piece of work just done; a negative count is kept as 0. It is added
  // to the total at the next enter.
  void set_last_amount(int64_t amount);

  const std::shared_ptr<void>& context() const { return context_; }
  state_t state() const { return state_; }
  uint64_t enter_time() const { return enter_time_; }
  uint64_t leave_time() const { return leave_time_; }
  int64_t last_amount() const { return last_amount_; }
  uint64_t busy_time() const { return busy_time_; }
  uint64_t total_time() const { return total_time_; }
  float busy_percent() const { return busy_percent_; }
  uint64_t total_amount() const { return total_amount_; }

 private:
  std::shared_ptr<void> context_;
  state_t state_ = kNew;
  uint64_t enter_time_ = 0;
  uint64_t leave_time_ = 0;
  int64_t last_amount_ = 0;
  uint64_t busy_time_ = 0;
  uint64_t total_time_ = 0;
  float busy_percent_ = 0.0f;
  uint64_t total_amount_ = 0;
};

}  // namespace workload
