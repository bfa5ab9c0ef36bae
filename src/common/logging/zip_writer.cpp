#include "common/logging/zip_writer.h"

#include <climits>

#include <zlib.h>

#include "common/exc/exc_base.h"
#include "common/logging/log_file_blank.h"
#include "common/logging/zip_writer_sys.h"
#include "common/text/fmt.h"

namespace logging::receiver {

namespace {

const char kOpenFailed[] = "Failed to open GZ archive [%1].";
const char kWriteFailed[] = "Cannot add data to the GZ archive [%1].";
const char kCloseFailed[] = "Cannot close GZ archive [%1].";

// zlib's own buffer between the compressor and the file: large enough that a rotated log
// leaves in a few big writes rather than many small ones.
constexpr unsigned kGzBufferSize = 0x40000;

gzFile as_gz(void* gz) { return static_cast<gzFile>(gz); }

}  // namespace

zip_writer_t::zip_writer_t(const std::string& path) : path_(path), gz_(nullptr) {
  uint32_t error = 0;
  gzFile gz = zip_sys::open(path_, kGzOpenMode, error);
  if (gz == nullptr) throw exc::win_sys_exc_t(kOpenFailed, path_, error);
  ::gzbuffer(gz, kGzBufferSize);
  gz_ = gz;
}

zip_writer_t::~zip_writer_t() {
  const int result = ::gzclose(as_gz(gz_));
  if (result == Z_OK) return;
  try {
    const exc::runtime_exc_t failure("Error code: %1", std::to_string(result));
    write_blank_error(util::fmt_t::format(kCloseFailed, path_));
    write_blank_error(failure.what());
  } catch (...) {
  }
}

void zip_writer_t::write(const void* bytes, size_t size) {
  const char* at = static_cast<const char*>(bytes);
  while (size > 0) {
    const unsigned part = size > UINT_MAX / 2 ? UINT_MAX / 2 : static_cast<unsigned>(size);
    const int written = ::gzwrite(as_gz(gz_), at, part);
    if (written == 0) {
      // Taken before anything else can touch the thread's error.
      const uint32_t system_error = zip_sys::last_error();
      int code = Z_OK;
      ::gzerror(as_gz(gz_), &code);
      if (code == Z_ERRNO) throw exc::win_sys_exc_t(kWriteFailed, path_, system_error);
      return;
    }
    at += written;
    size -= static_cast<size_t>(written);
  }
}

}  // namespace logging::receiver
