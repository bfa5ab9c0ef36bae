// stdout_log_file_t: the receiver of a log that has no file, for a run at a console. Lines go
// to the standard output stream as they come, unflushed; a line of slashes opens and closes
// the run. Used under the log's lock.
#pragma once
#include <string>

#include "common/logging/receiver.h"

namespace logging::receiver {

// The frame line, without its line end.
extern const char kStdoutFrameLine[];  // 74 slashes

class stdout_log_file_t : public log_file_t {
 public:
  stdout_log_file_t();
  ~stdout_log_file_t() override;

  void write(const std::string& text) override;
  std::string path() const override { return path_; }
  std::string eol() const override { return eol_; }
  uint64_t size() const override { return 0; }
  // The console keeps what it was given: nothing to move, nothing to empty.
  void compress_into(zip_writer_t& zip) override {}

 private:
  std::string path_;
  std::string eol_ = "\n";
};

}  // namespace logging::receiver
