// Share modes and byte-range locks on the host build. Windows refuses an open that clashes
// with the share mode of another open of the same file, and a read or write that touches a
// region another open has locked; POSIX has advisory locks only. Open-file-description locks
// (F_OFD_SETLK) stand in for both, since they belong to one open of a file, as a Windows
// handle does, and are seen within one process as well as across processes:
//  - each open holds read locks on marker bytes at the far end of the offset range, one per
//    access right it has and one per share right it withholds, and an open is refused with
//    ERROR_SHARING_VIOLATION when another open holds a marker that clashes with it;
//  - a read or write first asks whether another open holds a lock over its region, and is
//    refused with ERROR_LOCK_VIOLATION if so.
// Only opens made through this layer hold markers; a lock taken with plain fcntl by any
// process counts for the region test. For the _posix files of the file layer only.
#pragma once
#include <sys/types.h>

#include <cstdint>
#include <string>

namespace win::host {

// The markers for an open with this access and share mode, after which the open is checked
// against those of other opens. 0, or ERROR_SHARING_VIOLATION (the markers are then dropped
// again), or the error of the lock call.
uint32_t take_share_markers(int fd, uint32_t access, uint32_t share);

// Whether another open description holds a lock that a read (`for_write` false: only write
// locks count) or a write (any lock counts) of `length` bytes at `start` would meet.
bool region_locked_by_other(int fd, bool for_write, off_t start, uint64_t length);

// The same for `length` bytes from the file position of `fd`, without moving or reading it
// first: one fcntl call for the region that every read and write tests.
bool region_at_position_locked_by_other(int fd, bool for_write, uint32_t length);

// Whether an open of the file at `host_path` withholds the right to delete or rename it, as
// every open of this layer does unless it shares FILE_SHARE_DELETE.
bool delete_withheld(const std::string& host_path);

}  // namespace win::host
