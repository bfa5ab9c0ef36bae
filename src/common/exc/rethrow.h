// Adding one line to a caught exception and letting it go on, and carrying an exception from
// one thread to another. A foreign exception (not of the family) is replaced by a
// runtime_exc_t that keeps its text and, for std::system_error, its code.
#pragma once
#include <string>

#include "common/exc/exc_base.h"

namespace exc {

[[noreturn]] void rethrow_with_context(const std::string& text, const std::exception& caught,
                                       const trace_info_t& info = {});
[[noreturn]] void rethrow_with_trace(const std::string& text, const std::exception& caught,
                                     const trace_info_t& info = {});
[[noreturn]] void rethrow_with_trace(const std::string& tmpl, const std::string& a1,
                                     const std::exception& caught);
[[noreturn]] void rethrow_with_trace(const std::string& tmpl, const std::string& a1,
                                     const std::string& a2, const std::exception& caught);

// A shared copy of `caught` that may cross threads; the receiver calls throw_copy() on it.
exc_ptr_t capture(const std::exception& caught);

}  // namespace exc
