#include <windows.h>

#include <exception>

#include "oracle/client/system_exception.h"

namespace specific::oracle {

namespace {

// What one run_guarded call keeps in its guard's frame.
struct guard_frame_t {
  seh_filter_fn filter;
};

// The exception a frame of this thread accepted, and which frame: the landing throws the code,
// and only the run_guarded of that frame takes it.
thread_local uint32_t t_accepted_code = 0;
thread_local const guard_frame_t* t_accepting_frame = nullptr;

// Where the guard keeps its guard_frame_t: the slot above the callee's shadow space.
constexpr size_t kFrameSlotOffset = 32;

// GCC's own exceptions travel as system exceptions with these codes: a throw, and the two
// internal unwinding passes. They are C++ exceptions and always pass.
constexpr DWORD kGccUnwindCode = 0x21474343;
constexpr DWORD kGccForcedUnwindCode = 0x22474343;

bool is_gcc_internal(DWORD code) {
  return code == kGccCppExceptionCode || code == kGccUnwindCode || code == kGccForcedUnwindCode;
}

}  // namespace

}  // namespace specific::oracle

extern "C" {

void dsl_oci_seh_landing();
void dsl_oci_seh_guard(void (*body)(void*), void* context,
                       const void* frame);  // a guard_frame_t

// Called by the landing, on the faulting thread's stack just below the faulting frame: from
// here the exception goes on as a C++ exception, unwinding the frames between.
[[noreturn]] void dsl_oci_seh_throw() {
  throw specific::oracle::system_exception_t{specific::oracle::t_accepted_code};
}

// The language-specific handler of dsl_oci_seh_guard's frame. The dispatcher calls it for
// exceptions that the frames below did not handle, and again while unwinding through it.
EXCEPTION_DISPOSITION dsl_oci_seh_handler(PEXCEPTION_RECORD record, void* establisher,
                                          PCONTEXT context, void* /*dispatcher*/) {
  using namespace specific::oracle;
  if (record->ExceptionFlags & (EXCEPTION_UNWINDING | EXCEPTION_EXIT_UNWIND)) {
    return ExceptionContinueSearch;
  }
  const DWORD code = record->ExceptionCode;
  if (is_gcc_internal(code)) return ExceptionContinueSearch;
  const auto* frame = *reinterpret_cast<const guard_frame_t* const*>(
      static_cast<const char*>(establisher) + kFrameSlotOffset);
  if (!frame || !frame->filter || frame->filter(code) != seh_filter_result_t::execute_handler) {
    return ExceptionContinueSearch;
  }

  // Resume at the landing as if the faulting instruction had called it: the return address it
  // finds is the faulting address, so the unwinder walks on from the faulting frame. The
  // exception is not resumed where it happened, so whether it was continuable does not matter.
  t_accepted_code = code;
  t_accepting_frame = frame;
  record->ExceptionFlags &= ~static_cast<DWORD>(EXCEPTION_NONCONTINUABLE);
  context->Rsp -= sizeof(DWORD64);
  *reinterpret_cast<DWORD64*>(context->Rsp) = context->Rip;
  context->Rip = reinterpret_cast<DWORD64>(&dsl_oci_seh_landing);
  return ExceptionContinueExecution;
}

}  // extern "C"

// The two pieces that need exact unwind information, written out by hand:
// - the landing keeps a frame pointer, so it may realign the stack (a fault in a leaf function
//   leaves it misaligned) and still be unwound, then calls the throwing function;
// - the guard is an ordinary frame that names dsl_oci_seh_handler as its handler and keeps a
//   pointer to its guard_frame_t in its frame (the establisher frame the handler is given is
//   the guard's stack pointer after its prologue), so nested guards each answer for
//   themselves.
asm(R"(
  .text
  .globl dsl_oci_seh_landing
  .def dsl_oci_seh_landing; .scl 2; .type 32; .endef
  .seh_proc dsl_oci_seh_landing
dsl_oci_seh_landing:
  push %rbp
  .seh_pushreg %rbp
  mov %rsp, %rbp
  .seh_setframe %rbp, 0
  .seh_endprologue
  and $-16, %rsp
  sub $32, %rsp
  call dsl_oci_seh_throw
  int3
  .seh_endproc

  .globl dsl_oci_seh_guard
  .def dsl_oci_seh_guard; .scl 2; .type 32; .endef
  .seh_proc dsl_oci_seh_guard
dsl_oci_seh_guard:
  sub $40, %rsp
  .seh_stackalloc 40
  .seh_endprologue
  mov %r8, 32(%rsp)
  mov %rcx, %rax
  mov %rdx, %rcx
  call *%rax
  nop
  add $40, %rsp
  ret
  .seh_handler dsl_oci_seh_handler, @except
  .seh_endproc
)");

namespace specific::oracle {

void raise_system_exception(uint32_t code) {
  ::RaiseException(code, /*flags=*/0, /*argument_count=*/0, /*arguments=*/nullptr);
  // Only a handler that resumes at the raise gets here; there is nothing to go on with.
  std::terminate();
}

bool run_guarded(void (*body)(void*), void* context, seh_filter_fn filter) {
  const guard_frame_t frame{filter};
  try {
    dsl_oci_seh_guard(body, context, &frame);
  } catch (const system_exception_t&) {
    // Only the landing throws it on this platform; an outer frame's catch goes on.
    if (t_accepting_frame != &frame) throw;
    t_accepting_frame = nullptr;
    return true;
  }
  return false;
}

}  // namespace specific::oracle
