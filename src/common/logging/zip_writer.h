// zip_writer_t: a gzip file being written, where a rotated log's contents go. Made and dropped
// by the rotation step under the log's lock, on the thread that happened to write; one thread
// at a time. The file is complete only once the writer is destroyed.
#pragma once
#include <cstddef>
#include <string>

namespace logging::receiver {

// Best compression: the archive is written once and kept for a long time.
constexpr char kGzOpenMode[] = "wb9";

class zip_writer_t {
 public:
  // Opens `path` (UTF-8, a Windows path) for writing, replacing what stands there. Failure:
  // win_sys_exc_t "Failed to open GZ archive [%1]." with the system's code.
  explicit zip_writer_t(const std::string& path);
  // Finishes the stream (final block, checksum, length) and closes the file. A failure is
  // written to the log as two error lines; it is never thrown.
  ~zip_writer_t();
  zip_writer_t(const zip_writer_t&) = delete;
  zip_writer_t& operator=(const zip_writer_t&) = delete;

  // Compresses `size` bytes. A failure of the file system throws win_sys_exc_t "Cannot add
  // data to the GZ archive [%1]." with the system's code; a failure of the compressor itself
  // passes in silence and shows when the archive is closed.
  void write(const void* bytes, size_t size);

  const std::string& path() const { return path_; }

 private:
  std::string path_;
  void* gz_;  // zlib's gzFile, kept opaque so that this header needs no zlib
};

}  // namespace logging::receiver
