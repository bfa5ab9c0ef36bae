// A second process that holds a file, so that tests meet another process's lock or share mode
// as the library meets it in the field. On Windows it is this test program started again with
// "--dsl-hold" (the request is carried out before the tests would start); on the host build a
// forked child.
#pragma once
#include <cstdint>
#include <string>

namespace dsl_test {

enum class hold_kind_t {
  // The file opened for reading, sharing reading and writing (so that it lets a writer in),
  // with an exclusive lock on [offset, offset + length): LockFileEx on Windows, an
  // open-file-description lock on the host build.
  region_lock,
  // The file opened for writing with others allowed to read only, as a live log is held.
  write_open,
};

class holder_process_t {
 public:
  // Starts the holder and waits up to ten seconds until it holds the file. It lets go after
  // `hold_ms`, or when end() is called or this object goes.
  holder_process_t(hold_kind_t kind, const std::u16string& path, uint64_t offset,
                   uint64_t length, uint32_t hold_ms);
  ~holder_process_t();
  holder_process_t(const holder_process_t&) = delete;
  holder_process_t& operator=(const holder_process_t&) = delete;

  // Whether the holder reported that it holds the file.
  bool holding() const { return holding_; }
  // Ends the holder at once; its hold goes with it.
  void end();
  // Waits for the holder to let go by itself; answers its exit code.
  int wait();

 private:
  bool holding_ = false;
  bool ended_ = false;
  std::intptr_t process_ = -1;
};

}  // namespace dsl_test
