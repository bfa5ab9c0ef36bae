#include "common/logging/log_file.h"

#include <memory>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/exc/rethrow.h"
#include "common/logging/zip_writer.h"
#include "common/win/file_codes.h"

namespace logging::receiver {

namespace {

const char kCreateFailed[] = "Failed to create or open file [%1].";
const char kCompressFailed[] = "Cannot compress log file. Log: [%1].";

}  // namespace

win_log_file_t::win_log_file_t(const std::string& path) {
  flush_each_write = false;
  win::open_mode_t mode;
  mode.access = win::kGenericRead | win::kGenericWrite;
  mode.share = win::kFileShareRead;
  mode.disposition = win::kOpenAlways;
  mode.flags = win::kFileAttributeNormal;
  uint32_t error = 0;
  file_ = win::win_file_t::try_open(win::path_holder_t(path), mode, error);
  if (!file_) {
    if (error == win::kErrorSharingViolation || error == win::kErrorLockViolation) {
      throw exc::file_locked_exc_t(path);
    }
    throw exc::win_sys_exc_t(kCreateFailed, path, error);
  }
  file_->seek_end(0);
}

win_log_file_t::~win_log_file_t() = default;

void win_log_file_t::write(const std::string& text) {
  if (writing_) {
    // Only the file layer's own reports about this very write can arrive here: writing them
    // now would recurse into the same locked region.
    pending_ += text;
    return;
  }
  writing_ = true;
  try {
    write_through(text);
  } catch (...) {
    writing_ = false;
    pending_.clear();
    throw;
  }
  if (!pending_.empty()) {
    std::string reports;
    reports.swap(pending_);
    try {
      write_through(reports);
    } catch (const std::exception&) {
      // Reports about the log file that cannot reach the log file are lost with it.
    }
    pending_.clear();
  }
  writing_ = false;
}

void win_log_file_t::write_through(const std::string& text) {
  if (text.empty()) return;
  file_->write(static_cast<uint32_t>(text.size()), text.data());
  if (flush_each_write) file_->flush();
}

std::string win_log_file_t::path() const { return file_->path_narrow(); }

uint64_t win_log_file_t::size() const { return file_->size(); }

void win_log_file_t::compress_into(zip_writer_t& zip) {
  bool cut = false;
  try {
    file_->seek_set(0);
    std::vector<char> buffer(kCompressBufferSize);
    for (;;) {
      const uint32_t got = file_->read(buffer.data(), kCompressBufferSize);
      if (got == 0) break;
      zip.write(buffer.data(), got);
    }
    file_->reset_size(0);
    cut = true;
    file_->seek_set(0);
  } catch (const std::exception& failure) {
    if (!cut) {
      // The lines stay where they are; new ones must follow them, not overwrite them.
      try {
        file_->seek_end(0);
      } catch (const std::exception&) {
      }
    }
    exc::rethrow_with_trace(kCompressFailed, path(), failure);
  }
}

}  // namespace logging::receiver
