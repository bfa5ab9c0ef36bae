#include "common/monitoring/time_ratio_counter.h"

#include <utility>

#include "common/monitoring/time_stamp.h"

namespace workload {

CTimeRatioCounter::CTimeRatioCounter(std::shared_ptr<void> context)
    : context_(std::move(context)) {}

void CTimeRatioCounter::enter() {
  // Inside already: a nested entry does not count, and costs no time stamp.
  if (state_ == kInside) return;
  enter(time_stamp_us());
}

void CTimeRatioCounter::leave() {
  if (state_ == kOutside) return;
  leave(time_stamp_us());
}

void CTimeRatioCounter::enter(uint64_t now) {
  switch (state_) {
    case kNew:
      enter_time_ = now;
      state_ = kInside;
      break;
    case kInside:
      break;
    case kOutside: {
      const uint64_t busy = leave_time_ - enter_time_;
      total_amount_ += static_cast<uint64_t>(last_amount_);
      enter_time_ = now;
      const uint64_t idle = now - leave_time_;
      if (busy + idle != 0) {
        total_time_ += busy + idle;
        busy_time_ += busy;
        busy_percent_ = static_cast<float>(static_cast<double>(busy_time_) * 100.0 /
                                           static_cast<double>(total_time_));
      }
      state_ = kInside;
      break;
    }
  }
}

void CTimeRatioCounter::leave(uint64_t now) {
  switch (state_) {
    case kNew:
      enter_time_ = now;
      leave_time_ = now;
      state_ = kOutside;
      break;
    case kInside:
      leave_time_ = now;
      state_ = kOutside;
      break;
    case kOutside:
      break;
  }
}

void CTimeRatioCounter::set_last_amount(int64_t amount) { last_amount_ = amount < 0 ? 0 : amount; }

}  // namespace workload
