#include "support/ofd_lock_posix.h"

namespace dsl_test {

bool take_ofd_lock(int fd, short type, off_t start, off_t length) {
  struct flock lock = {};
  lock.l_type = type;
  lock.l_whence = SEEK_SET;
  lock.l_start = start;
  lock.l_len = length;
  lock.l_pid = 0;  // required by open-file-description locks
  return ::fcntl(fd, F_OFD_SETLK, &lock) == 0;
}

}  // namespace dsl_test
