#include "common/synch/global_lock.h"

namespace synch {

std::recursive_mutex& global_lock() {
  static auto* const lock = new std::recursive_mutex();
  return *lock;
}

}  // namespace synch
