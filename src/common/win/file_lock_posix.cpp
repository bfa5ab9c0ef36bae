#include "common/win/file_lock_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <limits>

#include "common/win/errno_codes_posix.h"
#include "common/win/file_codes.h"

namespace win::host {

namespace {

// The markers sit at the far end of the offset range, where no data region of a real file
// reaches, so that they neither meet the region test nor real region locks.
constexpr off_t kMarkerBase = std::numeric_limits<off_t>::max() - 64;
constexpr off_t kAccessRead = kMarkerBase + 0;
constexpr off_t kAccessWrite = kMarkerBase + 1;
constexpr off_t kDenyRead = kMarkerBase + 2;
constexpr off_t kDenyWrite = kMarkerBase + 3;
constexpr off_t kDenyDelete = kMarkerBase + 4;

// The lock record of one range; l_pid 0, as open-file-description locks require.
struct flock range_of(short type, off_t start, off_t length, short whence = SEEK_SET) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = whence;
  lock.l_start = start;
  lock.l_len = length;
  lock.l_pid = 0;
  return lock;
}

int set_lock(int fd, short type, off_t start, off_t length) {
  struct flock lock = range_of(type, start, length);
  while (::fcntl(fd, F_OFD_SETLK, &lock) != 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
}

// The lock that another open description holds over the range, as F_OFD_GETLK reports it
// (l_type F_UNLCK when none); false when the question cannot be asked.
bool first_lock_of_other(int fd, short type, off_t start, off_t length, short whence,
                         struct flock& found) {
  found = range_of(type, start, length, whence);
  return ::fcntl(fd, F_OFD_GETLK, &found) == 0;
}

// True when another open description holds a lock of a kind that clashes with `type` over
// the range; false also when the question cannot be asked.
bool held_by_other(int fd, short type, off_t start, off_t length) {
  struct flock found;
  return first_lock_of_other(fd, type, start, length, SEEK_SET, found) &&
         found.l_type != F_UNLCK;
}

bool marker_held(int fd, off_t marker) { return held_by_other(fd, F_WRLCK, marker, 1); }

}  // namespace

uint32_t take_share_markers(int fd, uint32_t access, uint32_t share) {
  const bool reads = (access & kGenericRead) != 0;
  const bool writes = (access & kGenericWrite) != 0;
  const bool shares_read = (share & kFileShareRead) != 0;
  const bool shares_write = (share & kFileShareWrite) != 0;
  const bool shares_delete = (share & kFileShareDelete) != 0;
  // Markers first, then the test: two opens that clash and race both see the other and both
  // fail, rather than both succeed.
  const off_t mine[] = {reads ? kAccessRead : -1, writes ? kAccessWrite : -1,
                        shares_read ? -1 : kDenyRead, shares_write ? -1 : kDenyWrite,
                        shares_delete ? -1 : kDenyDelete};
  for (off_t marker : mine) {
    if (marker < 0) continue;
    if (const int error = set_lock(fd, F_RDLCK, marker, 1)) {
      set_lock(fd, F_UNLCK, kMarkerBase, 8);
      return error_from_errno(error);
    }
  }
  const bool clash = (reads && marker_held(fd, kDenyRead)) ||
                     (writes && marker_held(fd, kDenyWrite)) ||
                     (!shares_read && marker_held(fd, kAccessRead)) ||
                     (!shares_write && marker_held(fd, kAccessWrite));
  if (clash) {
    set_lock(fd, F_UNLCK, kMarkerBase, 8);
    return kErrorSharingViolation;
  }
  return 0;
}

bool region_locked_by_other(int fd, bool for_write, off_t start, uint64_t length) {
  if (length == 0 || start < 0) return false;
  const uint64_t room = static_cast<uint64_t>(kMarkerBase - start);
  const off_t span = static_cast<off_t>(length < room ? length : room);
  if (span <= 0) return false;
  return held_by_other(fd, for_write ? F_WRLCK : F_RDLCK, start, span);
}

bool region_at_position_locked_by_other(int fd, bool for_write, uint32_t length) {
  if (length == 0) return false;
  // One call for the usual case: the kernel takes the range from the file position itself,
  // which spares every read and write an lseek of its own.
  struct flock found;
  if (!first_lock_of_other(fd, for_write ? F_WRLCK : F_RDLCK, 0, static_cast<off_t>(length),
                           SEEK_CUR, found)) {
    return false;
  }
  if (found.l_type == F_UNLCK) return false;
  if (found.l_start < kMarkerBase) return true;
  // The range ran into the share markers, which only a position at the far end of the offset
  // range can do: ask again with the range cut short of them.
  const off_t position = ::lseek(fd, 0, SEEK_CUR);
  return position >= 0 && region_locked_by_other(fd, for_write, position, length);
}

bool delete_withheld(const std::string& host_path) {
  const int fd = ::open(host_path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY);
  if (fd < 0) return false;
  struct stat st;
  const bool regular = ::fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
  const bool held = regular && marker_held(fd, kDenyDelete);
  ::close(fd);
  return held;
}

}  // namespace win::host
