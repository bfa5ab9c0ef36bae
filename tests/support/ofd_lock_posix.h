// Byte-range locks as another program on the host takes them: open-file-description locks
// on a raw descriptor, outside the file layer under test. Host build only.
#pragma once
#include <fcntl.h>

namespace dsl_test {

// Takes a lock of `type` (F_RDLCK or F_WRLCK) over [start, start + length) at once, without
// waiting; a length of 0 runs to the end of the offset range. True when it is held.
bool take_ofd_lock(int fd, short type, off_t start, off_t length);

}  // namespace dsl_test
