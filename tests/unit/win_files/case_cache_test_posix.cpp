#include "common/win/case_cache_posix.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "common/text/convert.h"
#include "common/win/file_codes.h"
#include "common/win/file_sys.h"
#include "common/win/path_map_posix.h"

namespace {

namespace fs = std::filesystem;
using win::host::host_path;

class CaseCache : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/dsl-case-XXXXXX";
    root_ = ::mkdtemp(pattern);
    if (const char* old = std::getenv("DBSHADOWLINK_ROOT")) saved_ = old;
    ::setenv("DBSHADOWLINK_ROOT", root_.c_str(), 1);
    fs::create_directories(root_ + "/c/Logs");
  }
  void TearDown() override {
    fs::remove_all(root_);
    if (saved_.empty()) {
      ::unsetenv("DBSHADOWLINK_ROOT");
    } else {
      ::setenv("DBSHADOWLINK_ROOT", saved_.c_str(), 1);
    }
  }
  // Creates a file with the system call itself, past the file layer.
  static void make_file(const std::string& path) {
    const int fd = ::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0666);
    ASSERT_GE(fd, 0) << path;
    ::close(fd);
  }
  // Creates a file through the file layer, as the library does.
  static void create_through_layer(const std::u16string& path) {
    win::native_handle_t handle{};
    ASSERT_EQ(win::sys::open(path, win::kGenericWrite, 0, win::kCreateNew, 0, handle), 0u)
        << util::to_utf8(path);
    win::sys::close(handle);
  }
  std::string root_;
  std::string saved_;
};

TEST_F(CaseCache, FoldKeyFoldsAsciiAndLatin1LettersAndNothingElse) {
  EXPECT_EQ(win::host::case_fold_key("Arch_1.log"), "ARCH_1.LOG");
  EXPECT_EQ(win::host::case_fold_key("caf\xc3\xa9"), "CAF\xc3\x89");  // é to É
  EXPECT_EQ(win::host::case_fold_key("\xce\xb1"), "\xce\xb1");        // Greek alpha stays
  EXPECT_NE(win::host::case_fold_key("a\xc3\xa9"), win::host::case_fold_key("A\xc3\xa8"));
}

TEST_F(CaseCache, ManyNewFilesInOneFolderListItOnlyOnce) {
  // The first new file lists the drive folder (for "LOGS") and the logs folder, once each.
  create_through_layer(u"C:\\LOGS\\first.log");
  const uint64_t before = win::host::case_cache_listings();
  for (int i = 0; i < 200; ++i) {
    create_through_layer(u"C:\\LOGS\\new_" + util::from_utf8(std::to_string(i)) + u".log");
  }
  EXPECT_EQ(win::host::case_cache_listings(), before);
  EXPECT_TRUE(fs::exists(root_ + "/c/Logs/new_199.log"));
  EXPECT_EQ(host_path(u"C:\\logs\\NEW_7.LOG"), root_ + "/c/Logs/new_7.log");
}

TEST_F(CaseCache, FileMadePastTheLayerAfterALookupIsFoundInAnyCase) {
  EXPECT_EQ(host_path(u"C:\\Logs\\made.here"), root_ + "/c/Logs/made.here");
  make_file(root_ + "/c/Logs/Made.Here");
  EXPECT_EQ(host_path(u"C:\\Logs\\made.here"), root_ + "/c/Logs/Made.Here");
}

TEST_F(CaseCache, FileWrittenByAStreamAfterALookupIsFoundInAnyCase) {
  EXPECT_EQ(host_path(u"C:\\Logs\\x.xml"), root_ + "/c/Logs/x.xml");
  std::ofstream(root_ + "/c/Logs/X.XML") << "<x/>";
  EXPECT_EQ(host_path(u"C:\\logs\\x.xml"), root_ + "/c/Logs/X.XML");
}

TEST_F(CaseCache, FileMadeByAnotherProcessAfterALookupIsFoundInAnyCase) {
  EXPECT_EQ(host_path(u"C:\\Logs\\other.log"), root_ + "/c/Logs/other.log");
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const std::string path = root_ + "/c/Logs/OTHER.LOG";
    ::execlp("touch", "touch", path.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(host_path(u"C:\\Logs\\other.log"), root_ + "/c/Logs/OTHER.LOG");
}

TEST_F(CaseCache, ChildProcessMadeByForkLooksUpFromItsOwnListing) {
  EXPECT_EQ(host_path(u"C:\\Logs\\kid.log"), root_ + "/c/Logs/kid.log");
  const pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    // The child makes the file past the layer and must find it; it exits 0 only if it does.
    const std::string made = root_ + "/c/Logs/Kid.Log";
    const int fd = ::open(made.c_str(), O_CREAT | O_WRONLY, 0666);
    if (fd < 0) ::_exit(2);
    ::close(fd);
    ::_exit(host_path(u"C:\\Logs\\KID.LOG") == made ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
  // The parent still sees the child's file.
  EXPECT_EQ(host_path(u"C:\\logs\\kid.log"), root_ + "/c/Logs/Kid.Log");
}

TEST_F(CaseCache, RemovedFileIsNoLongerFound) {
  make_file(root_ + "/c/Logs/Gone.log");
  EXPECT_EQ(host_path(u"C:\\Logs\\GONE.LOG"), root_ + "/c/Logs/Gone.log");
  ::unlink((root_ + "/c/Logs/Gone.log").c_str());
  EXPECT_EQ(host_path(u"C:\\Logs\\GONE.LOG"), root_ + "/c/Logs/GONE.LOG");
}

TEST_F(CaseCache, RenamedFileIsFoundUnderItsNewNameOnly) {
  make_file(root_ + "/c/Logs/Old.txt");
  EXPECT_EQ(host_path(u"C:\\Logs\\OLD.TXT"), root_ + "/c/Logs/Old.txt");
  ASSERT_EQ(::rename((root_ + "/c/Logs/Old.txt").c_str(), (root_ + "/c/Logs/New.txt").c_str()), 0);
  EXPECT_EQ(host_path(u"C:\\Logs\\old.txt"), root_ + "/c/Logs/old.txt");
  EXPECT_EQ(host_path(u"C:\\Logs\\NEW.TXT"), root_ + "/c/Logs/New.txt");
}

TEST_F(CaseCache, RenameThroughTheLayerIsSeenByTheNextLookup) {
  create_through_layer(u"C:\\Logs\\Before.log");
  EXPECT_EQ(host_path(u"C:\\logs\\after.log"), root_ + "/c/Logs/after.log");
  ASSERT_EQ(win::sys::rename(u"C:\\LOGS\\before.log", u"C:\\Logs\\After.LOG"), 0u);
  EXPECT_TRUE(fs::exists(root_ + "/c/Logs/After.LOG"));
  EXPECT_EQ(host_path(u"C:\\logs\\after.log"), root_ + "/c/Logs/After.LOG");
  EXPECT_EQ(host_path(u"C:\\logs\\BEFORE.log"), root_ + "/c/Logs/BEFORE.log");
}

TEST_F(CaseCache, FolderRemovedAndMadeAgainIsListedAfresh) {
  make_file(root_ + "/c/Logs/Alpha");
  EXPECT_EQ(host_path(u"C:\\Logs\\ALPHA"), root_ + "/c/Logs/Alpha");
  fs::remove_all(root_ + "/c/Logs");
  fs::create_directories(root_ + "/c/Logs");
  make_file(root_ + "/c/Logs/Beta");
  EXPECT_EQ(host_path(u"C:\\Logs\\alpha"), root_ + "/c/Logs/alpha");
  EXPECT_EQ(host_path(u"C:\\Logs\\BETA"), root_ + "/c/Logs/Beta");
}

TEST_F(CaseCache, FolderReplacedByARenameIsListedAfresh) {
  fs::create_directories(root_ + "/c/Other");
  make_file(root_ + "/c/Other/Gamma");
  make_file(root_ + "/c/Logs/Delta");
  EXPECT_EQ(host_path(u"C:\\Logs\\DELTA"), root_ + "/c/Logs/Delta");
  fs::remove_all(root_ + "/c/Logs");
  ASSERT_EQ(::rename((root_ + "/c/Other").c_str(), (root_ + "/c/Logs").c_str()), 0);
  EXPECT_EQ(host_path(u"C:\\Logs\\delta"), root_ + "/c/Logs/delta");
  EXPECT_EQ(host_path(u"C:\\Logs\\GAMMA"), root_ + "/c/Logs/Gamma");
}

TEST_F(CaseCache, ParentRenamedAwayAndMadeAgainIsListedAfresh) {
  fs::create_directories(root_ + "/c/A/Sub");
  make_file(root_ + "/c/A/Sub/File");
  EXPECT_EQ(host_path(u"C:\\a\\sub\\FILE"), root_ + "/c/A/Sub/File");
  ASSERT_EQ(::rename((root_ + "/c/A").c_str(), (root_ + "/c/A2").c_str()), 0);
  fs::create_directories(root_ + "/c/A/Sub");
  make_file(root_ + "/c/A/Sub/Other");
  EXPECT_EQ(host_path(u"C:\\a\\sub\\file"), root_ + "/c/A/Sub/file");
  EXPECT_EQ(host_path(u"C:\\a\\sub\\OTHER"), root_ + "/c/A/Sub/Other");
}

TEST_F(CaseCache, LinkIsAnsweredAsTheLinkItselfNotItsTarget) {
  make_file(root_ + "/c/Target.txt");
  ASSERT_EQ(::symlink((root_ + "/c/Target.txt").c_str(), (root_ + "/c/Logs/Link.txt").c_str()), 0);
  EXPECT_EQ(host_path(u"C:\\Logs\\nothing"), root_ + "/c/Logs/nothing");  // lists the folder
  EXPECT_EQ(host_path(u"C:\\logs\\LINK.TXT"), root_ + "/c/Logs/Link.txt");
  struct stat st;
  ASSERT_EQ(::lstat(host_path(u"C:\\logs\\link.TXT").c_str(), &st), 0);
  EXPECT_TRUE(S_ISLNK(st.st_mode));
}

TEST_F(CaseCache, FolderReachedThroughALinkSeesChangesMadeThroughItsRealPath) {
  fs::create_directories(root_ + "/c/Real");
  ASSERT_EQ(::symlink((root_ + "/c/Real").c_str(), (root_ + "/c/Logs/Via").c_str()), 0);
  EXPECT_EQ(host_path(u"C:\\Logs\\Via\\one"), root_ + "/c/Logs/Via/one");
  EXPECT_EQ(host_path(u"C:\\Real\\two"), root_ + "/c/Real/two");
  make_file(root_ + "/c/Real/One");
  make_file(root_ + "/c/Real/Two");
  EXPECT_EQ(host_path(u"C:\\Logs\\Via\\one"), root_ + "/c/Logs/Via/One");
  EXPECT_EQ(host_path(u"C:\\Real\\two"), root_ + "/c/Real/Two");
}

TEST_F(CaseCache, LookupsInMoreFoldersThanTheCacheHoldsStayRight) {
  for (int i = 0; i < 300; ++i) {
    const std::string n = std::to_string(i);
    fs::create_directories(root_ + "/c/Logs/D" + n);
    EXPECT_EQ(host_path(u"C:\\Logs\\d" + util::from_utf8(n) + u"\\f"),
              root_ + "/c/Logs/D" + n + "/f");
  }
  make_file(root_ + "/c/Logs/D0/F");
  make_file(root_ + "/c/Logs/D299/F");
  EXPECT_EQ(host_path(u"C:\\Logs\\d0\\f"), root_ + "/c/Logs/D0/F");
  EXPECT_EQ(host_path(u"C:\\Logs\\d299\\f"), root_ + "/c/Logs/D299/F");
}

TEST_F(CaseCache, SeveralThreadsFindEachOthersNewFiles) {
  constexpr int kThreads = 6;
  constexpr int kFiles = 60;
  std::atomic<int> wrong{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < kFiles; ++i) {
        const std::string name = "T" + std::to_string(t) + "_" + std::to_string(i) + ".Log";
        // Half made past the layer, half through it.
        if (i % 2 == 0) {
          const int fd = ::open((root_ + "/c/Logs/" + name).c_str(), O_CREAT | O_WRONLY, 0666);
          if (fd >= 0) ::close(fd);
        } else {
          win::native_handle_t handle{};
          if (win::sys::open(u"C:\\Logs\\" + util::from_utf8(name), win::kGenericWrite, 0,
                             win::kCreateNew, 0, handle) == 0) {
            win::sys::close(handle);
          }
        }
        // Our own file, and one of the thread before, in another case.
        std::string upper = name;
        for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        if (host_path(u"C:\\logs\\" + util::from_utf8(upper)) != root_ + "/c/Logs/" + name) {
          ++wrong;
        }
        const std::string other = "t" + std::to_string((t + 1) % kThreads) + "_0.log";
        const std::string got = host_path(u"C:\\LOGS\\" + util::from_utf8(other));
        if (got != root_ + "/c/Logs/" + other &&
            got != root_ + "/c/Logs/T" + std::to_string((t + 1) % kThreads) + "_0.Log") {
          ++wrong;
        }
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(wrong.load(), 0);
  for (int t = 0; t < kThreads; ++t) {
    const std::string name = "T" + std::to_string(t) + "_0.Log";
    std::string lower = name;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_EQ(host_path(u"C:\\Logs\\" + util::from_utf8(lower)), root_ + "/c/Logs/" + name);
  }
}

}  // namespace
