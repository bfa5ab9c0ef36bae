// Many threads log while the file rotates: afterwards every message stands exactly once and
// whole, in the live file or in one of the archives.
#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_file.h"
#include "common/logging/log_file_rotation.h"
#include "common/text/convert.h"
#include "log_files_env.h"

namespace {

constexpr int kThreads = 8;
constexpr int kMessages = 200000;
constexpr int kPerThread = kMessages / kThreads;

// The body of message `id`: its number, then filler that depends on the number, so that a
// message cut or mixed with another does not read as whole.
std::string body_of(int id) {
  std::string text = "msg " + std::to_string(id) + " ";
  const size_t length = 300 + static_cast<size_t>(id % 97);
  for (size_t i = 0; text.size() < length; ++i) {
    text += static_cast<char>('a' + (id + static_cast<int>(i)) % 26);
  }
  return text + " end";
}

TEST(LogStress, EightThreadsWhileTheFileRotatesLoseNothingAndCutNothing) {
  dsl_test::test_folder_t folder;
  auto file = std::make_shared<logging::receiver::win_log_file_t>(folder.path8("S.log"));
  auto log = std::make_shared<logging::log_t>(file);
  logging::install_rotation(*log);
  log->set_rotate_enabled(true);
  const logging::log_channel_t channel(log, "oralib");

  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&channel, t] {
      for (int n = 0; n < kPerThread; ++n) channel.info(body_of(t * kPerThread + n));
    });
  }
  for (auto& thread : threads) thread.join();

  std::vector<std::string> texts = {folder.raw_read(u"S.log")};
  int archives = 0;
  for (int age = 0; age <= logging::kArchiveAgeLimit; ++age) {
    const std::u16string name =
        age == 0 ? u"S.log.gz" : u"S." + util::from_utf8(std::to_string(age)) + u".log.gz";
    if (!folder.raw_exists(name)) continue;
    texts.push_back(dsl_test::read_gz(folder.path(name)));
    ++archives;
  }
  EXPECT_GE(archives, 3) << "the test must rotate several times";
  EXPECT_LT(archives, 11) << "an archive may have been aged out";

  std::vector<int> seen(kMessages, 0);
  int other_lines = 0;
  for (const std::string& text : texts) {
    if (!text.empty()) {
      EXPECT_EQ(text.substr(text.size() - 2), "\r\n") << "a file ends in the middle of a line";
    }
    for (const std::string& line : dsl_test::crlf_lines(text)) {
      const size_t at = line.find("oralib| msg ");
      if (at == std::string::npos) {
        ++other_lines;
        continue;
      }
      const std::string body = line.substr(at + 8);
      const int id = std::atoi(body.c_str() + 4);
      ASSERT_GE(id, 0);
      ASSERT_LT(id, kMessages);
      EXPECT_EQ(body, body_of(id)) << "message " << id << " is not whole";
      ++seen[static_cast<size_t>(id)];
    }
  }
  EXPECT_EQ(other_lines, 0);
  int missing = 0, doubled = 0;
  for (int id = 0; id < kMessages; ++id) {
    if (seen[static_cast<size_t>(id)] == 0) ++missing;
    if (seen[static_cast<size_t>(id)] > 1) ++doubled;
  }
  EXPECT_EQ(missing, 0);
  EXPECT_EQ(doubled, 0);
}

}  // namespace
