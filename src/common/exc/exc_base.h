// The exception family of the library. An exception is a chain of lines, innermost cause first;
// each layer that catches it adds one line (a plain context line or a "--tr:" trace line) and
// lets it go on. Exceptions are thrown by value, caught by reference, and cross threads only
// through capture() and throw_copy().
#pragma once
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "common/exc/trace_info.h"

namespace exc {

class CBufReader;
class byte_writer_t;
class exc_base_t;

using exc_ptr_t = std::shared_ptr<exc_base_t>;

// An outside object that turns a message line into another language.
class text_translator_t {
 public:
  virtual ~text_translator_t() = default;
  virtual std::string translate(const std::string& text) = 0;
};

struct message_t {
  std::string text;
  bool is_trace = false;
};

// The mark that precedes trace lines in what().
extern const char kTraceMark[];  // "--tr:"

class exc_base_t : public std::exception {
 public:
  exc_base_t();
  explicit exc_base_t(const std::string& text);
  ~exc_base_t() override;

  const char* what() const noexcept override { return marked_text_.c_str(); }
  virtual exc_ptr_t clone() const;
  [[noreturn]] virtual void throw_copy() const;
  virtual void load(CBufReader& reader);
  virtual void save(byte_writer_t& writer) const;
  virtual void translate(const std::shared_ptr<text_translator_t>& translator);

  void add_message(const std::string& text);
  void add_trace(const std::string& text);
  void merge_trace_info(const trace_info_t& info) { trace_info_.merge(info); }

  const std::vector<message_t>& messages() const { return messages_; }
  const std::string& plain_text() const { return plain_text_; }
  const trace_info_t& trace_info() const { return trace_info_; }
  trace_info_t& trace_info() { return trace_info_; }
  uint32_t thread_id() const { return thread_id_; }

 protected:
  void recompose();

 private:
  std::vector<message_t> messages_;
  std::string marked_text_;
  std::string plain_text_;
  trace_info_t trace_info_;
  uint32_t thread_id_;
};

// Generic failure; by far the most common.
class runtime_exc_t : public exc_base_t {
 public:
  explicit runtime_exc_t(const std::string& text, uint32_t code = 0);
  runtime_exc_t(const std::string& tmpl, const std::string& a1);
  runtime_exc_t(const std::string& tmpl, const std::string& a1, const std::string& a2,
                const std::string& a3);
  runtime_exc_t() = default;  // an empty chain, to be filled by load()
  uint32_t code() const { return code_; }

  exc_ptr_t clone() const override;
  [[noreturn]] void throw_copy() const override;
  void load(CBufReader& reader) override;
  void save(byte_writer_t& writer) const override;

 private:
  uint32_t code_ = 0;
};

// Failure of a system call: the system's own text first, the caller's sentence, then a trace
// line "Error code: 0x%08x".
class win_sys_exc_t : public exc_base_t {
 public:
  explicit win_sys_exc_t(uint32_t code);
  win_sys_exc_t(const std::string& text, uint32_t code);
  win_sys_exc_t(const std::string& tmpl, const std::string& a1, uint32_t code);
  win_sys_exc_t(const std::string& tmpl, const std::string& a1, const std::string& a2,
                uint32_t code);
  win_sys_exc_t(const std::string& tmpl, const std::string& a1, const std::string& a2,
                const std::string& a3, uint32_t code);
  uint32_t code() const { return code_; }

  exc_ptr_t clone() const override;
  [[noreturn]] void throw_copy() const override;
  void load(CBufReader& reader) override;
  void save(byte_writer_t& writer) const override;

 private:
  win_sys_exc_t() = default;
  void init(const std::string* text, uint32_t code);
  uint32_t code_ = 0;
};

// Failure of a COM-style call, with the HRESULT and the COM error description when one exists.
class com_exc_t : public exc_base_t {
 public:
  com_exc_t(uint32_t code, const std::string& text);
  com_exc_t() = default;  // an empty chain, to be filled by load()
  uint32_t code() const { return code_; }

  exc_ptr_t clone() const override;
  [[noreturn]] void throw_copy() const override;
  void load(CBufReader& reader) override;
  void save(byte_writer_t& writer) const override;

 private:
  uint32_t code_ = 0;
};

// A file could not be opened because another holder locks it. The path does not survive the
// binary form; the message line does.
class file_locked_exc_t : public exc_base_t {
 public:
  explicit file_locked_exc_t(const std::string& path);
  file_locked_exc_t() = default;  // an empty chain, to be filled by load()
  const std::string& path() const { return path_; }

  exc_ptr_t clone() const override;
  [[noreturn]] void throw_copy() const override;

 private:
  std::string path_;
};

// "Error code: 0x0000abcd": the trace line of a system failure.
std::string error_code_line(uint32_t code);

}  // namespace exc
