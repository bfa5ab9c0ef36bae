#include "oracle/client/system_exception.h"

namespace specific::oracle {

void raise_system_exception(uint32_t code) { throw system_exception_t{code}; }

bool run_guarded(void (*body)(void*), void* context, seh_filter_fn filter) {
  try {
    body(context);
    return false;
  } catch (const system_exception_t& e) {
    if (filter(e.code) == seh_filter_result_t::execute_handler) return true;
    throw;
  }
}

}  // namespace specific::oracle
