// The process-wide lock under which the library's singletons are created. Recursive, so that
// the creation of one singleton may ask for another. Never destroyed: code running during
// process exit may still take it. Taken only for creation, never on a hot path.
#pragma once
#include <mutex>

namespace synch {

std::recursive_mutex& global_lock();

}  // namespace synch
