#include "call.h"

namespace ocisim {

void set_error(error_record_t* record, const ora_error_t& error) {
  if (record == nullptr) return;
  std::lock_guard<std::mutex> guard(record->lock);
  record->set = true;
  record->code = error.code();
  record->message = error.message();
}

void clear_error(error_record_t* record) {
  if (record == nullptr) return;
  std::lock_guard<std::mutex> guard(record->lock);
  record->set = false;
  record->code = 0;
  record->message.clear();
}

call_t& call_t::arg(const std::string& name, const std::string& value) {
  args_.emplace_back(name, value);
  return *this;
}

call_t& call_t::handle(const std::string& name, const void* pointer) {
  arg(name, handle_label(pointer));
  if (args_.size() == leading_handles_ + 1) ++leading_handles_;
  return *this;
}

bool call_t::use_error_handle(const void* errhp) {
  // The error handle is written after the call's other handles, before its plain arguments.
  args_.insert(args_.begin() + static_cast<std::ptrdiff_t>(leading_handles_), {"err", handle_label(errhp)});
  ++leading_handles_;
  if (errhp == nullptr) return true;
  error_handle_ = find<error_handle_t>(errhp, OCI_HTYPE_ERROR);
  if (!error_handle_) return false;
  record_ = &error_handle_->error;
  // Each call starts with a clean error handle, so a success leaves nothing stale behind.
  clear_error(record_);
  return true;
}

sword call_t::finish(sword code, const std::string& outcome) {
  journal_call(function_, args_, outcome);
  return code;
}

sword call_t::ok(const std::string& note) {
  return finish(OCI_SUCCESS, note.empty() ? "OK" : "OK " + note);
}

sword call_t::no_data(const std::string& note) {
  return finish(OCI_NO_DATA, note.empty() ? "NO_DATA" : "NO_DATA " + note);
}

sword call_t::invalid_handle() { return finish(OCI_INVALID_HANDLE, "INVALID_HANDLE"); }

sword call_t::error(const ora_error_t& failure) {
  set_error(record_, failure);
  return finish(OCI_ERROR, "ERROR " + error_code_text(failure.code()));
}

sword call_t::with_info(const ora_error_t& warning) {
  set_error(record_, warning);
  return finish(OCI_SUCCESS_WITH_INFO, "SUCCESS_WITH_INFO " + error_code_text(warning.code()));
}

}  // namespace ocisim
