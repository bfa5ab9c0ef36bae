#include "platform.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "path_map.h"

namespace ocisim {

std::string env_value(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? std::string(value) : std::string();
}

unsigned long process_id() { return static_cast<unsigned long>(getpid()); }

unsigned long thread_id() { return static_cast<unsigned long>(syscall(SYS_gettid)); }

void sleep_ms(long long milliseconds) {
  if (milliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

namespace {

bool write_all(int fd, const std::string& data) {
  size_t done = 0;
  while (done < data.size()) {
    const ssize_t n = ::write(fd, data.data() + done, data.size() - done);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    done += static_cast<size_t>(n);
  }
  return true;
}

bool make_parents(const std::string& path) {
  for (size_t slash = path.find('/', 1); slash != std::string::npos;
       slash = path.find('/', slash + 1)) {
    const std::string folder = path.substr(0, slash);
    if (::mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST) return false;
  }
  return true;
}

}  // namespace

bool read_file(const std::string& path, std::string& content) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  content.clear();
  char buffer[65536];
  for (;;) {
    const ssize_t n = ::read(fd, buffer, sizeof buffer);
    if (n < 0) {
      if (errno == EINTR) continue;
      ::close(fd);
      return false;
    }
    if (n == 0) break;
    content.append(buffer, static_cast<size_t>(n));
  }
  ::close(fd);
  return true;
}

bool write_file(const std::string& path, const std::string& content) {
  const std::string temporary = path + ".tmp" + std::to_string(process_id()) + "-" +
                                std::to_string(thread_id());
  const int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return false;
  const bool written = write_all(fd, content);
  ::close(fd);
  if (!written || ::rename(temporary.c_str(), path.c_str()) != 0) {
    ::unlink(temporary.c_str());
    return false;
  }
  return true;
}

bool append_to_file(const std::string& path, const std::string& line) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (fd < 0) return false;
  const bool written = write_all(fd, line);
  ::close(fd);
  return written;
}

bool file_exists(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool create_file(const std::string& path, unsigned long long size) {
  if (!make_parents(path)) return false;
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (fd < 0) return false;
  const bool sized = ::ftruncate(fd, static_cast<off_t>(size)) == 0;
  ::close(fd);
  return sized;
}

bool remove_file(const std::string& path) { return ::unlink(path.c_str()) == 0; }

long long file_size(const std::string& path) {
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return -1;
  return static_cast<long long>(info.st_size);
}

file_identity_t file_identity(const std::string& path) {
  file_identity_t identity;
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0) return identity;
  identity.exists = true;
  identity.size = static_cast<long long>(info.st_size);
  identity.modified = static_cast<long long>(info.st_mtim.tv_sec) * 1000000000LL + info.st_mtim.tv_nsec;
  identity.id = (static_cast<unsigned long long>(info.st_dev) << 40) ^ static_cast<unsigned long long>(info.st_ino);
  return identity;
}

std::string native_path(const std::string& windows_path) {
  // Without a root the host build would write into the real file system's top; it refuses.
  const std::string root = env_value("DBSHADOWLINK_ROOT");
  if (root.empty()) return std::string();
  return map_windows_path(root, windows_path);
}

file_lock_t::file_lock_t(const std::string& path) {
  fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd_ < 0) return;
  // flock belongs to the open file description, so two threads of one process that each
  // open the file exclude each other as two processes do.
  while (::flock(fd_, LOCK_EX) != 0) {
    if (errno != EINTR) return;
  }
  locked_ = true;
}

file_lock_t::~file_lock_t() {
  if (fd_ >= 0) {
    if (locked_) ::flock(fd_, LOCK_UN);
    ::close(fd_);
  }
}

}  // namespace ocisim
