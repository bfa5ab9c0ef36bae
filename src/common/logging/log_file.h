// win_log_file_t: the library's log file as a receiver of the process-wide log. It holds one
// handle for its whole life, opened so that other writers are kept out and readers let in,
// and appends each message with one system write. Rotation empties it in place
// (compress_into); the handle is never closed and reopened. Used under the log's lock.
#pragma once
#include <cstdint>
#include <string>

#include "common/logging/receiver.h"
#include "common/win/file.h"

namespace logging::receiver {

// What compression moves from the log into the archive per read.
constexpr uint32_t kCompressBufferSize = 0x100000;

class win_log_file_t : public log_file_t {
 public:
  // Opens `path` (UTF-8) for reading and writing, sharing reading only, creating it when
  // missing, and goes to its end. A file another open holds (sharing or lock violation)
  // throws file_locked_exc_t with the path; any other failure win_sys_exc_t
  // "Failed to create or open file [%1].".
  explicit win_log_file_t(const std::string& path);
  ~win_log_file_t() override;

  // One write of the whole text, with the file layer's retry of locked regions. A message
  // the log writes while this one is being written (the retry's own warnings) follows it
  // once it is through; if it does not get through those are dropped.
  void write(const std::string& text) override;
  std::string path() const override;
  std::string eol() const override { return eol_; }
  uint64_t size() const override;
  // Reads the file from its start in pieces of kCompressBufferSize into `zip`, then cuts it
  // to nothing and goes back to its start. A failure gets the trace line "Cannot compress log
  // file. Log: [%1]."; if it strikes before the file is cut, the contents stay and new lines
  // go on at the end.
  void compress_into(zip_writer_t& zip) override;

  // The open file, for whoever must see that rotation keeps the same handle.
  const win::win_file_ptr_t& file() const { return file_; }

 private:
  void write_through(const std::string& text);

  std::string eol_ = "\r\n";
  win::win_file_ptr_t file_;
  bool writing_ = false;
  std::string pending_;
};

}  // namespace logging::receiver
