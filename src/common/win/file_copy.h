// The whole-file copy: everything of one open file into another, in chunks of 512 KiB, each
// read required to deliver its full count. Used where a file must be copied byte for byte (an
// archived log on its way to the backup), on the calling thread.
#pragma once
#include <cstdint>

#include "common/win/file.h"

namespace win {

constexpr uint32_t kCopyChunkSize = 0x80000;

// Copies size() bytes of `from`, read from its current position, to `to` at its current
// position. A short read fails with runtime_exc_t
// "Only %1 bytes were read from the file [%2] (requested %3 bytes)"; read and write failures
// are those of win_file_t.
void copy_file_contents(win_file_t& from, win_file_t& to);

// Opens `from` for reading (open_read), creates `to` (create, overwriting), and copies.
void copy_file(const path_holder_t& from, const path_holder_t& to);

}  // namespace win
