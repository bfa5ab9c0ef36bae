// A log receiver for tests: keeps every text handed to it, so that a test can read the lines
// the library wrote. Thread-safe; install it with capture_log_t for the span of a test.
#pragma once
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/logging/log.h"
#include "common/logging/receiver.h"

namespace dsl_test {

class capture_receiver_t : public logging::receiver::log_file_t {
 public:
  void write(const std::string& text) override;
  std::string path() const override { return "<capture>"; }
  std::string eol() const override { return "\n"; }
  uint64_t size() const override;
  void compress_into(logging::receiver::zip_writer_t& zip) override;

  // Each write call as it came.
  std::vector<std::string> writes() const;
  // Every physical line, without line ends.
  std::vector<std::string> lines() const;
  // Lines with the stamp and thread columns removed: "prefix mark indent text".
  std::vector<std::string> bodies() const;
  void clear();

 private:
  mutable std::mutex lock_;
  std::vector<std::string> writes_;
};

// Attaches a fresh capture receiver to the singleton log and restores the previous receiver
// when it goes out of scope.
class capture_log_t {
 public:
  capture_log_t();
  ~capture_log_t();
  capture_receiver_t& receiver() { return *receiver_; }
  std::vector<std::string> bodies() const { return receiver_->bodies(); }

 private:
  std::shared_ptr<capture_receiver_t> receiver_;
  std::shared_ptr<logging::receiver::log_file_t> previous_;
};

// Strips "[dd.mm.yyyy hh:mm:ss] <tttttt> " from a physical line; returns it unchanged when it
// does not start so.
std::string strip_stamp_and_thread(const std::string& line);

// A body of the "oralib" channel without its prefix and indent: "text", "WARN|text",
// "ERR |text" or ">>  |text".
std::string plain_body(const std::string& body);
// plain_body of every line the log caught.
std::vector<std::string> plain_log(const capture_log_t& log);

}  // namespace dsl_test
