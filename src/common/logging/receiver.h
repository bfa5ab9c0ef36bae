// Where finished log text goes. The log core hands a receiver whole messages, line ends
// included, under its lock; receivers are told in the log-file and start-up code.
#pragma once
#include <cstdint>
#include <string>

namespace logging::receiver {

class zip_writer_t;  // compressing writer of rotated logs

class log_file_t {
 public:
  virtual ~log_file_t() = default;
  virtual void write(const std::string& text) = 0;
  virtual std::string path() const = 0;
  virtual std::string eol() const = 0;
  virtual uint64_t size() const = 0;
  // Moves the contents into `zip` and empties the receiver.
  virtual void compress_into(zip_writer_t& zip) = 0;

  bool flush_each_write = false;
};

}  // namespace logging::receiver
