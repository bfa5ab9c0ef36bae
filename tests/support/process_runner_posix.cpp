#include "support/process_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <stdexcept>

namespace console_test {

namespace {

void write_all(int fd, const std::string& bytes) {
  size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) throw std::runtime_error("cannot write the child's input");
    done += static_cast<size_t>(n);
  }
}

}  // namespace

process_result_t run_process(const std::string& program, const std::vector<std::string>& args,
                             const std::string& input, const environment_t& environment,
                             int timeout_seconds) {
  // The input goes through an unlinked temporary file, so a child that never reads it cannot
  // block the parent.
  FILE* input_file = tmpfile();
  if (input_file == nullptr) throw std::runtime_error("cannot create the child's input file");
  write_all(fileno(input_file), input);
  lseek(fileno(input_file), 0, SEEK_SET);

  int out_pipe[2];
  int err_pipe[2];
  if (pipe(out_pipe) != 0 || pipe(err_pipe) != 0) throw std::runtime_error("cannot create pipes");

  std::vector<std::string> argv_text{program};
  argv_text.insert(argv_text.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& arg : argv_text) argv.push_back(arg.data());
  argv.push_back(nullptr);

  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("cannot fork");
  if (child == 0) {
    dup2(fileno(input_file), STDIN_FILENO);
    dup2(out_pipe[1], STDOUT_FILENO);
    dup2(err_pipe[1], STDERR_FILENO);
    close(out_pipe[0]);
    close(err_pipe[0]);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    execv(program.c_str(), argv.data());
    const std::string why = "exec failed: " + program + "\n";
    (void)!write(STDERR_FILENO, why.data(), why.size());
    _exit(127);
  }
  close(out_pipe[1]);
  close(err_pipe[1]);
  fclose(input_file);

  process_result_t result;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeout_seconds);
  pollfd fds[2] = {{out_pipe[0], POLLIN, 0}, {err_pipe[0], POLLIN, 0}};
  std::string* sinks[2] = {&result.out, &result.err};
  int open_streams = 2;
  while (open_streams > 0) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) {
      result.timed_out = true;
      kill(child, SIGKILL);
      break;
    }
    const int ready = poll(fds, 2, static_cast<int>(left.count()));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) break;
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || fds[i].revents == 0) continue;
      char buffer[65536];
      const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
      if (n > 0) {
        sinks[i]->append(buffer, static_cast<size_t>(n));
      } else if (n == 0 || errno != EINTR) {
        close(fds[i].fd);
        fds[i].fd = -1;
        --open_streams;
      }
    }
  }
  for (auto& fd : fds) {
    if (fd.fd >= 0) close(fd.fd);
  }
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(status)) result.exit_code = WEXITSTATUS(status);
  else if (WIFSIGNALED(status)) result.exit_code = 128 + WTERMSIG(status);
  return result;
}

}  // namespace console_test
