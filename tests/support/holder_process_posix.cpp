#include "support/holder_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <stdexcept>

#include "common/win/file.h"
#include "common/win/path_map_posix.h"
#include "support/ofd_lock_posix.h"

namespace dsl_test {

namespace {

void sleep_for_ms(uint32_t ms) {
  timespec t;
  t.tv_sec = ms / 1000;
  t.tv_nsec = static_cast<long>(ms % 1000) * 1000000L;
  while (::nanosleep(&t, &t) != 0) {
  }
}

// The child: takes the hold, says so on `ready`, keeps it for `hold_ms`.
[[noreturn]] void hold(hold_kind_t kind, const std::string& host_path,
                       const std::u16string& path, uint64_t offset, uint64_t length,
                       uint32_t hold_ms, int ready) {
  win::win_file_ptr_t file;
  if (kind == hold_kind_t::region_lock) {
    // An exclusive lock needs a descriptor open for writing here. The holder takes no share
    // markers: it stands for a process outside this library, as a backup reader would be.
    const int fd = ::open(host_path.c_str(), O_RDWR);
    if (fd < 0) ::_exit(2);
    if (!take_ofd_lock(fd, F_WRLCK, static_cast<off_t>(offset), static_cast<off_t>(length))) {
      ::_exit(3);
    }
  } else {
    try {
      file = win::win_file_t::create_or_open(path);
    } catch (...) {
      ::_exit(4);
    }
  }
  const char byte = 1;
  if (::write(ready, &byte, 1) != 1) ::_exit(5);
  sleep_for_ms(hold_ms);
  ::_exit(0);
}

}  // namespace

holder_process_t::holder_process_t(hold_kind_t kind, const std::u16string& path,
                                   uint64_t offset, uint64_t length, uint32_t hold_ms) {
  int pipe_fds[2];
  if (::pipe(pipe_fds) != 0) throw std::runtime_error("pipe failed");
  const std::string host_path = win::host::host_path(path);
  const pid_t pid = ::fork();
  if (pid < 0) throw std::runtime_error("fork failed");
  if (pid == 0) {
    ::close(pipe_fds[0]);
    hold(kind, host_path, path, offset, length, hold_ms, pipe_fds[1]);
  }
  ::close(pipe_fds[1]);
  process_ = pid;
  pollfd p = {pipe_fds[0], POLLIN, 0};
  if (::poll(&p, 1, 10000) == 1 && (p.revents & POLLIN)) {
    char byte = 0;
    holding_ = ::read(pipe_fds[0], &byte, 1) == 1;
  }
  ::close(pipe_fds[0]);
}

holder_process_t::~holder_process_t() { end(); }

void holder_process_t::end() {
  if (ended_ || process_ < 0) return;
  ::kill(static_cast<pid_t>(process_), SIGKILL);
  int status = 0;
  ::waitpid(static_cast<pid_t>(process_), &status, 0);
  ended_ = true;
}

int holder_process_t::wait() {
  if (ended_ || process_ < 0) return -1;
  int status = 0;
  ::waitpid(static_cast<pid_t>(process_), &status, 0);
  ended_ = true;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace dsl_test
