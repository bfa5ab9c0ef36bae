#include "common/exc/exc_base.h"

#include "common/exc/buf_reader.h"
#include "common/exc/sys_text.h"
#include "common/logging/log_channel.h"
#include "common/text/fmt.h"
#include "common/text/numbers.h"
#include "common/win/thread_id.h"

namespace exc {

const char kTraceMark[] = "--tr:";

namespace {

constexpr uint32_t kFirstTraceEvent = 1;
constexpr uint32_t kLastTraceEvent = 6;

void save_chain(const exc_base_t& e, byte_writer_t& writer) {
  writer.write_u32(static_cast<uint32_t>(e.messages().size()));
  for (const auto& m : e.messages()) {
    writer.write_string(m.text);
    writer.write_bool(m.is_trace);
  }
  const auto& info = e.trace_info();
  writer.write_u32(static_cast<uint32_t>(info.values.size()));
  for (const auto& [key, value] : info.values) {
    writer.write_string(key);
    writer.write_string(value);
  }
  writer.write_u32(static_cast<uint32_t>(info.events.size()));
  for (const auto& ev : info.events) {
    writer.write_u32(ev.event);
    writer.write_string(ev.info);
  }
}

}  // namespace

exc_base_t::exc_base_t() : thread_id_(win::current_thread_id()) {}

exc_base_t::exc_base_t(const std::string& text) : exc_base_t() { add_message(text); }

exc_base_t::~exc_base_t() = default;

exc_ptr_t exc_base_t::clone() const { return std::make_shared<exc_base_t>(*this); }

void exc_base_t::throw_copy() const { throw exc_base_t(*this); }

void exc_base_t::load(CBufReader& reader) {
  const uint32_t count = reader.read_u32();
  for (uint32_t i = 0; i < count; ++i) {
    message_t m;
    m.text = reader.read_string();
    m.is_trace = reader.read_bool();
    messages_.push_back(std::move(m));
  }
  trace_info_t info;
  const uint32_t value_count = reader.read_u32();
  for (uint32_t i = 0; i < value_count; ++i) {
    std::string key = reader.read_string();
    info.values[key] = reader.read_string();
  }
  const uint32_t event_count = reader.read_u32();
  for (uint32_t i = 0; i < event_count; ++i) {
    trace_event_t ev;
    ev.event = reader.read_u32();
    ev.info = reader.read_string();
    if (ev.event < kFirstTraceEvent || ev.event > kLastTraceEvent) {
      // An unknown event is somebody else's newer format, not a broken buffer: keep reading.
      logging::default_channel().warn("Unexpected trace event: [%1]. Info: %2.",
                                      util::to_str(ev.event), ev.info);
      continue;
    }
    info.events.push_back(std::move(ev));
  }
  trace_info_ = std::move(info);
  recompose();
}

void exc_base_t::save(byte_writer_t& writer) const { save_chain(*this, writer); }

void exc_base_t::translate(const std::shared_ptr<text_translator_t>& translator) {
  if (!translator) return;
  for (auto& m : messages_) m.text = translator->translate(m.text);
  recompose();
}

void exc_base_t::add_message(const std::string& text) {
  messages_.push_back({text, false});
  recompose();
}

void exc_base_t::add_trace(const std::string& text) {
  messages_.push_back({text, true});
  recompose();
}

void exc_base_t::recompose() {
  marked_text_.clear();
  plain_text_.clear();
  for (size_t i = 0; i < messages_.size(); ++i) {
    if (i != 0) {
      marked_text_ += '\n';
      plain_text_ += '\n';
    }
    plain_text_ += messages_[i].text;
    if (messages_[i].is_trace) marked_text_ += kTraceMark;
    marked_text_ += messages_[i].text;
  }
}

std::string error_code_line(uint32_t code) { return "Error code: " + util::to_hex(code); }

// runtime_exc_t ---------------------------------------------------------------------------

runtime_exc_t::runtime_exc_t(const std::string& text, uint32_t code)
    : exc_base_t(text), code_(code) {}

runtime_exc_t::runtime_exc_t(const std::string& tmpl, const std::string& a1)
    : exc_base_t(util::fmt_t::format(tmpl, a1)) {}

runtime_exc_t::runtime_exc_t(const std::string& tmpl, const std::string& a1,
                             const std::string& a2, const std::string& a3)
    : exc_base_t(util::fmt_t::format(tmpl, a1, a2, a3)) {}

exc_ptr_t runtime_exc_t::clone() const { return std::make_shared<runtime_exc_t>(*this); }
void runtime_exc_t::throw_copy() const { throw runtime_exc_t(*this); }

void runtime_exc_t::load(CBufReader& reader) {
  exc_base_t::load(reader);
  code_ = reader.read_u32();
}

void runtime_exc_t::save(byte_writer_t& writer) const {
  exc_base_t::save(writer);
  writer.write_u32(code_);
}

// win_sys_exc_t ---------------------------------------------------------------------------

void win_sys_exc_t::init(const std::string* text, uint32_t code) {
  code_ = code;
  add_message(system_error_text(code));
  if (text) add_message(*text);
  add_trace(error_code_line(code));
}

win_sys_exc_t::win_sys_exc_t(uint32_t code) { init(nullptr, code); }

win_sys_exc_t::win_sys_exc_t(const std::string& text, uint32_t code) { init(&text, code); }

win_sys_exc_t::win_sys_exc_t(const std::string& tmpl, const std::string& a1, uint32_t code) {
  const std::string text = util::fmt_t::format(tmpl, a1);
  init(&text, code);
}

win_sys_exc_t::win_sys_exc_t(const std::string& tmpl, const std::string& a1,
                             const std::string& a2, uint32_t code) {
  const std::string text = util::fmt_t::format(tmpl, a1, a2);
  init(&text, code);
}

win_sys_exc_t::win_sys_exc_t(const std::string& tmpl, const std::string& a1,
                             const std::string& a2, const std::string& a3, uint32_t code) {
  const std::string text = util::fmt_t::format(tmpl, a1, a2, a3);
  init(&text, code);
}

exc_ptr_t win_sys_exc_t::clone() const { return std::make_shared<win_sys_exc_t>(*this); }
void win_sys_exc_t::throw_copy() const { throw win_sys_exc_t(*this); }

void win_sys_exc_t::load(CBufReader& reader) {
  exc_base_t::load(reader);
  code_ = reader.read_u32();
}

void win_sys_exc_t::save(byte_writer_t& writer) const {
  exc_base_t::save(writer);
  writer.write_u32(code_);
}

// com_exc_t -------------------------------------------------------------------------------

com_exc_t::com_exc_t(uint32_t code, const std::string& text) : code_(code) {
  add_message(com_error_description() + " " + error_code_line(code));
  // The error object may hold a second description after the first has been taken.
  const std::string further = com_error_description();
  if (!further.empty()) add_message(further);
  add_message(text);
}

exc_ptr_t com_exc_t::clone() const { return std::make_shared<com_exc_t>(*this); }
void com_exc_t::throw_copy() const { throw com_exc_t(*this); }

void com_exc_t::load(CBufReader& reader) {
  exc_base_t::load(reader);
  code_ = reader.read_u32();
}

void com_exc_t::save(byte_writer_t& writer) const {
  exc_base_t::save(writer);
  writer.write_u32(code_);
}

// file_locked_exc_t -----------------------------------------------------------------------

file_locked_exc_t::file_locked_exc_t(const std::string& path) : path_(path) {
  add_message(util::fmt_t::format("File [%1] is locked.", path));
}

exc_ptr_t file_locked_exc_t::clone() const { return std::make_shared<file_locked_exc_t>(*this); }
void file_locked_exc_t::throw_copy() const { throw file_locked_exc_t(*this); }

}  // namespace exc
