// The few operating-system services the simulated client needs: environment, process and
// thread ids, sleeping, whole-file reads and writes, appending a line, and a lock file that
// serialises every process that shares one machine. Any thread.
#pragma once
#include <string>

namespace ocisim {

// The value of an environment variable as UTF-8; empty when unset.
std::string env_value(const char* name);

unsigned long process_id();
unsigned long thread_id();

// Sleeps the calling thread; returns early never.
void sleep_ms(long long milliseconds);

// Files, named by native paths in UTF-8. read_file is false when the file cannot be read;
// write_file replaces the file as a whole (a temporary file renamed over it), so a reader in
// another process never sees half a file.
bool read_file(const std::string& path, std::string& content);
bool write_file(const std::string& path, const std::string& content);
// Appends one line, which must end with a line feed, in a single write.
bool append_to_file(const std::string& path, const std::string& line);
bool file_exists(const std::string& path);
// Creates the file with `size` zero bytes, making the missing folders above it.
bool create_file(const std::string& path, unsigned long long size);
bool remove_file(const std::string& path);
// Size of a file in bytes, or -1.
long long file_size(const std::string& path);

// What tells one version of a file from another: a replaced file (written and renamed over
// the old one) has another identity even within one clock tick.
struct file_identity_t {
  bool exists = false;
  long long size = 0;
  long long modified = 0;
  unsigned long long id = 0;
  bool operator==(const file_identity_t& other) const {
    return exists == other.exists && size == other.size && modified == other.modified && id == other.id;
  }
};
file_identity_t file_identity(const std::string& path);

// The native path of a Windows path from a scenario: the path itself on Windows, and on the
// host build the drive mapping of the library (see path_map.h) below DBSHADOWLINK_ROOT; empty
// on the host build when that variable is unset.
std::string native_path(const std::string& windows_path);

// Exclusive lock on a lock file, held by this object (between processes and between threads
// of one process alike). The file is created when missing.
class file_lock_t {
 public:
  explicit file_lock_t(const std::string& path);
  ~file_lock_t();
  file_lock_t(const file_lock_t&) = delete;
  file_lock_t& operator=(const file_lock_t&) = delete;
  bool locked() const { return locked_; }

 private:
  void* handle_ = nullptr;
  int fd_ = -1;
  bool locked_ = false;
};

}  // namespace ocisim
