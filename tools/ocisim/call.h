// One entry point call as the simulated client handles it: its journal line (arguments
// gathered on the way, the outcome at the end), the error handle it reports into, and the
// guard that turns every failure into an OCI return code, since nothing may leave a C entry
// point as an exception. One call on one thread.
#pragma once
#include <exception>
#include <string>

#include "errors.h"
#include "handles.h"
#include "journal.h"

namespace ocisim {

void set_error(error_record_t* record, const ora_error_t& error);
void clear_error(error_record_t* record);

class call_t {
 public:
  explicit call_t(const char* function) : function_(function) {}

  call_t& arg(const std::string& name, const std::string& value);
  call_t& handle(const std::string& name, const void* pointer);

  // The error handle of the call; false (and the call should answer invalid_handle) when
  // `errhp` is set but no live error handle. A null error handle is allowed: errors then go
  // nowhere, as with Oracle.
  bool use_error_handle(const void* errhp);
  error_record_t* record() const { return record_; }

  sword ok(const std::string& note = std::string());
  sword no_data(const std::string& note = std::string());
  sword invalid_handle();
  sword error(const ora_error_t& failure);
  sword with_info(const ora_error_t& warning);

  // Runs `body` (which returns the sword of the call) and converts what it throws.
  template <typename F>
  sword guarded(F body) {
    try {
      return body();
    } catch (const ora_error_t& failure) {
      return error(failure);
    } catch (const std::exception& failure) {
      return error(ora(600, {"ocisim", function_, failure.what()}));
    } catch (...) {
      return error(ora(600, {"ocisim", function_, "unknown exception"}));
    }
  }

 private:
  sword finish(sword code, const std::string& outcome);

  const char* function_;
  journal_args_t args_;
  std::size_t leading_handles_ = 0;  // handle arguments given before any other
  std::shared_ptr<error_handle_t> error_handle_;
  error_record_t* record_ = nullptr;
};

}  // namespace ocisim
