// The stand-in for a structured exception frame around the session worker's work. The Oracle
// client is foreign code: it may fail with a system exception (an access violation, or the
// delay-load failure that a missing client library stands for) instead of a return code, and
// such a failure must end the worker's attempt, not the process. MinGW's GCC has no
// __try/__except, so each platform provides the frame its own way:
//   Windows: a frame of our own with a language-specific handler. It is consulted only for a
//     system exception that no inner frame handled, exactly as an __except filter is; when the
//     filter accepts, the faulting context is redirected to a landing that throws
//     system_exception_t, and the ordinary C++ unwinding runs the destructors on the way out.
//   Host: system exceptions are simulated: raise_system_exception throws system_exception_t,
//     which the frame shows to the filter.
// C++ exceptions pass through the frame untouched on both platforms. Any thread; the frame
// belongs to the thread that runs it.
#pragma once
#include <cstdint>

namespace specific::oracle {

// The codes the frame's filter tells apart.
constexpr uint32_t kDelayLoadModuleNotFound = 0xC06D007E;  // a module could not be loaded
constexpr uint32_t kDelayLoadProcNotFound = 0xC06D007F;    // an entry point is missing
constexpr uint32_t kMsvcCppExceptionCode = 0xE06D7363;     // a C++ exception of MSVC's runtime
constexpr uint32_t kGccCppExceptionCode = 0x20474343;      // a C++ exception of GCC's runtime

// A system exception on its way out of the frame that accepted it. Deliberately no
// std::exception: the handlers for C++ failures on the way must let it pass, as they would let
// a structured exception pass.
struct system_exception_t {
  uint32_t code;
};

enum class seh_filter_result_t { execute_handler, continue_search };
using seh_filter_fn = seh_filter_result_t (*)(uint32_t code);

// Raises a system exception with `code` on the calling thread: RaiseException on Windows, a
// throw of system_exception_t on the host.
[[noreturn]] void raise_system_exception(uint32_t code);

// Runs body(context) inside the frame. A system exception that reaches the frame is shown to
// `filter` with its code, on the faulting thread and before anything is unwound, as a filter
// expression is; execute_handler unwinds to the frame and run_guarded returns true;
// continue_search lets the exception go on. Returns false when body returned normally.
bool run_guarded(void (*body)(void*), void* context, seh_filter_fn filter);

}  // namespace specific::oracle
