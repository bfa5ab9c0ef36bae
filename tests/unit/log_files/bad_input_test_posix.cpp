// Hostile conditions on the host build: a full disk (a file-size limit in a child process), a
// log file deleted while open, a log name the code page cannot hold.
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <string>

#include "common/exc/exc_base.h"
#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_file.h"
#include "common/logging/log_file_rotation.h"
#include "common/logging/log_start.h"
#include "common/logging/zip_writer.h"
#include "common/text/convert.h"
#include "common/win/path_map_posix.h"
#include "common/win/path_ops.h"
#include "log_files_env.h"
#include "support/capture_receiver.h"

namespace {

using dsl_test::test_folder_t;

// Runs `body` in a child process whose files may not grow beyond `limit` bytes, as on a disk
// that is full; a write past the limit fails with EFBIG instead of killing the process. The
// child's answer is its exit code: 0 when all its checks held.
int run_with_file_size_limit(rlim_t limit, const std::function<int()>& body) {
  std::fflush(nullptr);
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::signal(SIGXFSZ, SIG_IGN);
    rlimit r;
    r.rlim_cur = limit;
    r.rlim_max = limit;
    if (::setrlimit(RLIMIT_FSIZE, &r) != 0) ::_exit(90);
    int code = 91;
    try {
      code = body();
    } catch (...) {
      code = 92;
    }
    std::fflush(nullptr);
    ::_exit(code);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 100 + WTERMSIG(status);
}

TEST(FullDisk, TheLibraryStartsAndGoesOnWhenLinesNoLongerFit) {
  test_folder_t folder;
  const std::u16string path = folder.path(u"full.log");
  const int code = run_with_file_size_limit(16384, [&] {
    auto log = std::make_shared<logging::log_t>();
    logging::log_channel_t channel(log, "oralib");
    if (logging::log_start(channel, u"full.log", {u"-log", path}) != path) return 1;
    if (!log->file()) return 2;
    // The work the lines report on goes on, though most of them find no room.
    long work = 0;
    for (int i = 0; i < 5000; ++i) {
      channel.info("line " + std::to_string(i) + " of work that keeps going");
      work += i;
    }
    return work == 5000L * 4999 / 2 ? 0 : 3;
  });
  EXPECT_EQ(code, 0);
  const std::string text = folder.raw_read(u"full.log");
  EXPECT_LE(text.size(), 16384u);
  EXPECT_NE(text.find("Process Id: "), std::string::npos);
  EXPECT_NE(text.find("oralib| line 0 of work"), std::string::npos);
}

TEST(FullDisk, ARotationThatFindsNoRoomLeavesTheLogAsItWasAndSaysWhy) {
  test_folder_t folder;
  // Text that does not compress much, so that the archive needs room.
  std::string contents(logging::kLogSizeLimit, ' ');
  uint32_t x = 12345;
  for (auto& c : contents) {
    x = x * 1103515245u + 12345u;
    c = static_cast<char>(' ' + (x >> 16) % 90);
  }
  folder.raw_write(u"R.log", contents);
  const std::string log_path = folder.path8("R.log");
  std::string failure_text;
  int pipe_fds[2];
  ASSERT_EQ(::pipe(pipe_fds), 0);
  const int code = run_with_file_size_limit(1 << 20, [&] {
    ::close(pipe_fds[0]);
    logging::receiver::win_log_file_t file(log_path);
    try {
      logging::check_log_size(file);
      return 1;
    } catch (const exc::exc_base_t& e) {
      const std::string what = e.what();
      if (::write(pipe_fds[1], what.data(), what.size()) < 0) return 2;
    }
    return file.size() == logging::kLogSizeLimit ? 0 : 3;
  });
  ::close(pipe_fds[1]);
  char buffer[4096];
  ssize_t got;
  while ((got = ::read(pipe_fds[0], buffer, sizeof buffer)) > 0) {
    failure_text.append(buffer, static_cast<size_t>(got));
  }
  ::close(pipe_fds[0]);
  EXPECT_EQ(code, 0);
  EXPECT_NE(failure_text.find("Cannot add data to the GZ archive [" + log_path + ".gz]."),
            std::string::npos)
      << failure_text;
  EXPECT_NE(failure_text.find("--tr:Cannot compress log file. Log: [" + log_path + "]."),
            std::string::npos)
      << failure_text;
  EXPECT_NE(failure_text.find("Error code: 0x00000070"), std::string::npos) << failure_text;
  EXPECT_EQ(folder.raw_read(u"R.log"), contents);
}

TEST(FullDisk, AnArchiveThatCannotBeClosedIsReportedInTheLog) {
  test_folder_t folder;
  const std::string archive = folder.path8("C.gz");
  int pipe_fds[2];
  ASSERT_EQ(::pipe(pipe_fds), 0);
  const int code = run_with_file_size_limit(4096, [&] {
    ::close(pipe_fds[0]);
    dsl_test::capture_log_t capture;
    {
      logging::receiver::zip_writer_t zip(archive);
      // Held in the compressor's buffer until the end: the room runs out while closing.
      std::string bytes(60000, ' ');
      uint32_t x = 7;
      for (auto& c : bytes) {
        x = x * 1103515245u + 12345u;
        c = static_cast<char>(x >> 24);
      }
      zip.write(bytes.data(), bytes.size());
    }
    std::string lines;
    for (const auto& body : capture.bodies()) lines += body + "\n";
    return ::write(pipe_fds[1], lines.data(), lines.size()) < 0 ? 1 : 0;
  });
  ::close(pipe_fds[1]);
  std::string reported;
  char buffer[4096];
  ssize_t got;
  while ((got = ::read(pipe_fds[0], buffer, sizeof buffer)) > 0) {
    reported.append(buffer, static_cast<size_t>(got));
  }
  ::close(pipe_fds[0]);
  EXPECT_EQ(code, 0);
  EXPECT_EQ(reported.rfind("     ERR |Cannot close GZ archive [" + archive + "].\n"
                           "     ERR |Error code: -1\n",
                           0),
            0u)
      << reported;
}

TEST(DeletedLogFile, LinesGoOnAndReachTheNextArchive) {
  test_folder_t folder;
  folder.raw_write(u"D.log", std::string(logging::kLogSizeLimit - 2000, 'd'));
  auto file = std::make_shared<logging::receiver::win_log_file_t>(folder.path8("D.log"));
  auto log = std::make_shared<logging::log_t>(file);
  logging::install_rotation(*log);
  log->set_rotate_enabled(true);
  logging::log_channel_t channel(log, "");
  channel.info("before the deletion");
  // Another program removes the file under the open handle.
  ASSERT_EQ(::unlink(win::host::host_path(folder.path(u"D.log")).c_str()), 0);
  for (int i = 0; i < 999; ++i) channel.info("after the deletion " + std::to_string(i));
  ASSERT_TRUE(folder.raw_exists(u"D.log.gz"));
  const std::string archived = dsl_test::read_gz(folder.path(u"D.log.gz"));
  EXPECT_NE(archived.find("> before the deletion\r\n"), std::string::npos);
  EXPECT_NE(archived.find("> after the deletion 998\r\n"), std::string::npos);
  EXPECT_EQ(file->size(), 0u);
  channel.info("the log keeps working");
  EXPECT_GT(file->size(), 0u);
  EXPECT_LT(file->size(), 100u);
}

TEST(DeletedLogFile, TheFileLayerRefusesToDeleteTheOpenLog) {
  test_folder_t folder;
  logging::receiver::win_log_file_t file(folder.path8("K.log"));
  try {
    win::remove_file(folder.path(u"K.log"));
    FAIL() << "the open log was deleted";
  } catch (const exc::win_sys_exc_t& e) {
    EXPECT_EQ(e.code(), 32u);
  }
  EXPECT_TRUE(folder.raw_exists(u"K.log"));
}

// The host's code page is UTF-8, which holds every character; what it cannot hold is text that
// is not a character at all, such as half a surrogate pair. It becomes U+FFFD, and the log
// lies under that name.
TEST(UnrepresentableLogName, ALoneSurrogateBecomesTheReplacementCharacter) {
  test_folder_t folder;
  dsl_test::machine_settings_t machine({dsl_test::log_directory_key(folder.path8("logs"))});
  auto log = std::make_shared<logging::log_t>();
  logging::log_channel_t channel(log, "");
  std::u16string name = u"agent-";
  name += static_cast<char16_t>(0xD800);
  name += u".log";
  EXPECT_EQ(logging::log_start(channel, name, {}), folder.path(u"logs\\") + name);
  ASSERT_NE(log->file(), nullptr);
  EXPECT_TRUE(folder.raw_exists(u"logs\\agent-\uFFFD.log"));
  EXPECT_NE(folder.raw_read(u"logs\\agent-\uFFFD.log").find("Process Id: "), std::string::npos);
}

}  // namespace
