#include "common/win/file_copy.h"

#include <memory>
#include <new>

#include "common/exc/exc_base.h"
#include "common/text/numbers.h"

namespace win {

namespace {

constexpr size_t kPageSize = 4096;

struct page_buffer_deleter_t {
  void operator()(uint8_t* p) const { ::operator delete[](p, std::align_val_t{kPageSize}); }
};

const char kShortRead[] = "Only %1 bytes were read from the file [%2] (requested %3 bytes)";

void copy_chunk(win_file_t& from, win_file_t& to, uint8_t* buffer, uint32_t count) {
  const uint32_t got = from.read(buffer, count);
  if (got != count) {
    throw exc::runtime_exc_t(kShortRead, util::to_str(got), from.path().narrow_or_empty(),
                             util::to_str(count));
  }
  to.write(count, buffer);
}

}  // namespace

void copy_file_contents(win_file_t& from, win_file_t& to) {
  const uint64_t total = from.size();
  // Page-aligned, as an unbuffered read on Windows requires and as the kernel copies fastest
  // into; not zero-filled, since every byte is read before it is written.
  const std::unique_ptr<uint8_t[], page_buffer_deleter_t> buffer(static_cast<uint8_t*>(
      ::operator new[](kCopyChunkSize, std::align_val_t{kPageSize})));
  const uint64_t chunks = total / kCopyChunkSize;
  for (uint64_t i = 0; i < chunks; ++i) copy_chunk(from, to, buffer.get(), kCopyChunkSize);
  const uint32_t rest = static_cast<uint32_t>(total % kCopyChunkSize);
  if (rest != 0) copy_chunk(from, to, buffer.get(), rest);
}

void copy_file(const path_holder_t& from, const path_holder_t& to) {
  const win_file_ptr_t source = win_file_t::open_read(from);
  const win_file_ptr_t target = win_file_t::create(to);
  copy_file_contents(*source, *target);
}

}  // namespace win
