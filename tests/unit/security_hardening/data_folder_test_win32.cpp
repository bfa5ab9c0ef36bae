// The data folder on Windows: the folders the library makes carry a protected access list that
// lets only SYSTEM, the Administrators and the process's own user write; a folder whose list
// lets Everyone write is repaired when its owner is one of those and refused otherwise; links
// planted inside are not followed. Wine does not enforce access lists for a process, and Wine 8
// keeps no descriptor of its own for a folder (it shows one made from the Unix mode), nor are its
// symbolic links reparse points; so the descriptor the library sets is tested as text and read
// back where the system keeps it, the check is tested on descriptors given as text, and the
// tests that need a kept descriptor or a reparse point say so and are skipped where there is
// none.
#include <gtest/gtest.h>

#include <windows.h>
#include <aclapi.h>
#include <sddl.h>

#include <algorithm>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/file.h"
#include "common/win/path_ops.h"
#include "common/win/safe_folder.h"
#include "common/win/safe_folder_sys.h"
#include "support/wide.h"

namespace {

const wchar_t* w(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

struct descriptor_t {
  bool read = false;
  bool is_protected = false;
  std::vector<std::string> allowed;  // SIDs of the allowed entries, as text
  std::string owner;
  std::string text;  // owner and list as SDDL
};

std::string sid_text(PSID sid) {
  wchar_t* text = nullptr;
  if (!::ConvertSidToStringSidW(sid, &text)) return "?";
  std::u16string wide(reinterpret_cast<const char16_t*>(text));
  ::LocalFree(text);
  return dsl_test::utf8(wide);
}

descriptor_t read_descriptor(const std::u16string& path) {
  descriptor_t d;
  PSID owner = nullptr;
  PACL dacl = nullptr;
  PSECURITY_DESCRIPTOR sd = nullptr;
  if (::GetNamedSecurityInfoW(const_cast<wchar_t*>(w(path)), SE_FILE_OBJECT,
                              OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner,
                              nullptr, &dacl, nullptr, &sd) != ERROR_SUCCESS) {
    return d;
  }
  d.read = true;
  wchar_t* text = nullptr;
  if (::ConvertSecurityDescriptorToStringSecurityDescriptorW(
          sd, SDDL_REVISION_1, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &text,
          nullptr)) {
    d.text = dsl_test::utf8(std::u16string(reinterpret_cast<const char16_t*>(text)));
    ::LocalFree(text);
  }
  SECURITY_DESCRIPTOR_CONTROL control = 0;
  DWORD revision = 0;
  ::GetSecurityDescriptorControl(sd, &control, &revision);
  d.is_protected = (control & SE_DACL_PROTECTED) != 0;
  if (owner != nullptr) d.owner = sid_text(owner);
  ACL_SIZE_INFORMATION info = {};
  if (dacl != nullptr && ::GetAclInformation(dacl, &info, sizeof info, AclSizeInformation)) {
    for (DWORD i = 0; i < info.AceCount; ++i) {
      void* ace = nullptr;
      if (!::GetAce(dacl, i, &ace)) continue;
      if (static_cast<ACE_HEADER*>(ace)->AceType != ACCESS_ALLOWED_ACE_TYPE) continue;
      d.allowed.push_back(sid_text(&static_cast<ACCESS_ALLOWED_ACE*>(ace)->SidStart));
    }
  }
  ::LocalFree(sd);
  return d;
}

std::string process_user() {
  HANDLE token = nullptr;
  ::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &token);
  DWORD size = 0;
  ::GetTokenInformation(token, TokenUser, nullptr, 0, &size);
  std::vector<BYTE> buffer(size);
  ::GetTokenInformation(token, TokenUser, buffer.data(), size, &size);
  ::CloseHandle(token);
  return sid_text(reinterpret_cast<TOKEN_USER*>(buffer.data())->User.Sid);
}

bool make_folder_with(const std::u16string& path, const wchar_t* sddl) {
  PSECURITY_DESCRIPTOR sd = nullptr;
  if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1, &sd, nullptr)) {
    return false;
  }
  SECURITY_ATTRIBUTES attributes = {sizeof attributes, sd, FALSE};
  const BOOL ok = ::CreateDirectoryW(w(path), &attributes);
  ::LocalFree(sd);
  return ok != FALSE;
}

bool exists(const std::u16string& path) { return ::GetFileAttributesW(w(path)) != INVALID_FILE_ATTRIBUTES; }

std::string read_all(const std::u16string& path) {
  HANDLE h = ::CreateFileW(w(path), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (h == INVALID_HANDLE_VALUE) return "<unreadable>";
  char buffer[64] = {};
  DWORD got = 0;
  ::ReadFile(h, buffer, sizeof buffer, &got, nullptr);
  ::CloseHandle(h);
  return std::string(buffer, got);
}

void write_all(const std::u16string& path, const std::string& text) {
  HANDLE h = ::CreateFileW(w(path), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(h, INVALID_HANDLE_VALUE);
  DWORD done = 0;
  ::WriteFile(h, text.data(), static_cast<DWORD>(text.size()), &done, nullptr);
  ::CloseHandle(h);
}

template <typename F>
std::string failure_of(F&& f) {
  try {
    f();
  } catch (const std::exception& e) {
    return e.what();
  }
  return "(no failure)";
}

// A folder of this test inside the machine's data folder, removed with what is in it.
class DataFolderWindows : public ::testing::Test {
 protected:
  void SetUp() override {
    data_ = win::data_folder();
    ASSERT_FALSE(data_.empty());
    win::create_directories(win::path_holder_t(data_ + u"\\"));
    sub_ = data_ + u"\\sec_" + dsl_test_id();
    victim_ = data_.substr(0, 3) + u"sec_victim_" + dsl_test_id() + u".txt";
    write_all(victim_, "precious");
  }
  void TearDown() override { remove_tree(sub_); ::DeleteFileW(w(victim_)); }

  static std::u16string dsl_test_id() {
    const std::string n = std::to_string(::GetCurrentProcessId());
    return std::u16string(n.begin(), n.end());
  }
  static void remove_tree(const std::u16string& path) {
    WIN32_FIND_DATAW data;
    HANDLE h = ::FindFirstFileW(w(path + u"\\*"), &data);
    if (h != INVALID_HANDLE_VALUE) {
      do {
        const std::u16string name(reinterpret_cast<const char16_t*>(data.cFileName));
        if (name == u"." || name == u"..") continue;
        const std::u16string full = path + u"\\" + name;
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) &&
            !(data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
          remove_tree(full);
        } else if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
          ::RemoveDirectoryW(w(full));
        } else {
          ::DeleteFileW(w(full));
        }
      } while (::FindNextFileW(h, &data));
      ::FindClose(h);
    }
    ::RemoveDirectoryW(w(path));
  }

  std::u16string data_, sub_, victim_;
};

std::string problem_of(const char16_t* sddl, bool& repairable) {
  return win::sys::descriptor_problem(sddl, repairable);
}

std::u16string wide(const std::string& text) { return std::u16string(text.begin(), text.end()); }

TEST(DataFolderDescriptor, TheLibraryGivesItsFoldersAProtectedListOfTrustedWritersOnly) {
  EXPECT_EQ(dsl_test::utf8(win::sys::safe_descriptor_text()),
            "D:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;FA;;;" + process_user() + ")");
  bool repairable = true;
  const std::u16string with_owner = u"O:" + wide(process_user()) + win::sys::safe_descriptor_text();
  EXPECT_EQ(win::sys::descriptor_problem(with_owner, repairable), "");
  EXPECT_FALSE(repairable);
}

TEST(DataFolderDescriptor, AListThatLetsOthersWriteIsRepairableUnderATrustedOwner) {
  bool repairable = false;
  EXPECT_EQ(problem_of(u"O:SYD:P(A;OICI;FA;;;WD)(A;OICI;FA;;;SY)", repairable),
            "users other than SYSTEM, the Administrators and accounts granted by name may write "
            "in it");
  EXPECT_TRUE(repairable);
  EXPECT_EQ(problem_of(u"O:BAD:(A;;GW;;;BU)", repairable),
            "users other than SYSTEM, the Administrators and accounts granted by name may write "
            "in it");
  EXPECT_TRUE(repairable);
  EXPECT_EQ(problem_of(u"O:BAD:(A;OICI;0x6;;;AU)", repairable),
            "users other than SYSTEM, the Administrators and accounts granted by name may write "
            "in it")
      << "creating files and folders is writing";
  EXPECT_EQ(problem_of(u"O:SY", repairable), "it has no access list, so everybody may write in it");
}

TEST(DataFolderDescriptor, AnAccountGrantedByNameMayWriteButADomainsUsersMayNot) {
  // The account an Oracle service runs as writes parameter files and ASM copies here; an
  // administrator grants it by name, and the check keeps such a grant.
  bool repairable = true;
  EXPECT_EQ(problem_of(u"O:SYD:P(A;OICI;FA;;;SY)(A;OICI;0x1301bf;;;S-1-5-80-1-2-3-4-5)",
                       repairable),
            "");
  EXPECT_EQ(problem_of(u"O:SYD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;S-1-5-21-1-2-3-1001)", repairable),
            "");
  EXPECT_NE(problem_of(u"O:SYD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;S-1-5-21-1-2-3-513)", repairable),
            "")
      << "Domain Users are users at large";
  EXPECT_TRUE(repairable);
}

TEST(DataFolderDescriptor, AFolderOfAnotherOwnerIsRefusedWhateverItsList) {
  bool repairable = true;
  EXPECT_EQ(problem_of(u"O:WDD:P(A;OICI;FA;;;SY)", repairable), "it belongs to another user");
  EXPECT_FALSE(repairable);
  EXPECT_EQ(problem_of(u"O:BUD:P(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)", repairable),
            "it belongs to another user");
  EXPECT_FALSE(repairable);
}

TEST(DataFolderDescriptor, ReadingDenyingAndCreatorEntriesAreAccepted) {
  bool repairable = true;
  EXPECT_EQ(problem_of(u"O:SYD:P(A;OICI;FA;;;SY)(A;OICI;FR;;;BU)(D;OICI;FA;;;WD)"
                       u"(A;OICIIO;FA;;;CO)",
                       repairable),
            "");
  EXPECT_EQ(problem_of(u"O:BAD:P(A;OICI;FA;;;CO)", repairable),
            "users other than SYSTEM, the Administrators and accounts granted by name may write "
            "in it")
      << "a creator entry that applies to the folder itself is somebody else's right";
}

TEST_F(DataFolderWindows, AFolderTheLibraryMakesGetsTheProtectedList) {
  win::create_directories(win::path_holder_t(sub_ + u"\\ORCL\\x.arc"));
  for (const std::u16string& folder : {sub_, sub_ + u"\\ORCL"}) {
    const descriptor_t d = read_descriptor(folder);
    ASSERT_TRUE(d.read) << dsl_test::utf8(folder);
    bool repairable = false;
    EXPECT_EQ(win::sys::descriptor_problem(wide(d.text), repairable), "") << d.text;
    if (!d.is_protected) {
      GTEST_SKIP() << "this system keeps no descriptor of its own for a folder (read back: "
                   << d.text << "); the descriptor the library gives is tested as text";
    }
    EXPECT_TRUE(d.is_protected) << "nothing is inherited from the common data folder";
    const std::vector<std::string> wanted = {"S-1-5-18", "S-1-5-32-544", process_user()};
    for (const std::string& sid : d.allowed) {
      EXPECT_TRUE(sid == wanted[0] || sid == wanted[1] || sid == wanted[2]) << sid;
    }
    EXPECT_NE(std::find(d.allowed.begin(), d.allowed.end(), "S-1-5-18"), d.allowed.end());
    EXPECT_NE(std::find(d.allowed.begin(), d.allowed.end(), "S-1-5-32-544"), d.allowed.end());
  }
}

TEST_F(DataFolderWindows, AFolderThatLetsEveryoneWriteIsRepairedWhenItsOwnerIsTrusted) {
  ASSERT_TRUE(make_folder_with(sub_, L"D:P(A;OICI;FA;;;WD)(A;OICI;FA;;;SY)"));
  // Set once more on the folder that now exists: a system that turns a list into file modes
  // passes the creation's through its mask, but not this one.
  PSECURITY_DESCRIPTOR wide_open = nullptr;
  ASSERT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorW(
      L"D:P(A;OICI;FA;;;WD)(A;OICI;FA;;;SY)", SDDL_REVISION_1, &wide_open, nullptr));
  BOOL present = FALSE, defaulted = FALSE;
  PACL list = nullptr;
  ::GetSecurityDescriptorDacl(wide_open, &present, &list, &defaulted);
  ::SetNamedSecurityInfoW(const_cast<wchar_t*>(w(sub_)), SE_FILE_OBJECT,
                          DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION, nullptr,
                          nullptr, list, nullptr);
  ::LocalFree(wide_open);
  const descriptor_t before = read_descriptor(sub_);
  ASSERT_TRUE(before.read);
  bool repairable = false;
  if (win::sys::descriptor_problem(wide(before.text), repairable).empty()) {
    GTEST_SKIP() << "this system did not keep the write right the test gave Everyone (read back: "
                 << before.text << "); the repair rule is tested on descriptors as text";
  }
  EXPECT_TRUE(repairable);
  win::win_file_t::create(win::path_holder_t(sub_ + u"\\OracleMeta.xml"))->write(2, "ok");
  // Read back: nobody but the trusted may write any more. (Whether the list shows itself as
  // protected depends on the system keeping a descriptor of its own; Wine shows the file mode.)
  const descriptor_t after = read_descriptor(sub_);
  EXPECT_EQ(win::sys::descriptor_problem(wide(after.text), repairable), "") << after.text;
  EXPECT_EQ(std::find(after.allowed.begin(), after.allowed.end(), "S-1-1-0"), after.allowed.end())
      << "Everyone's entry is gone: " << after.text;
}

TEST_F(DataFolderWindows, AFolderOfAnotherOwnerThatLetsEveryoneWriteIsRefused) {
  if (!make_folder_with(sub_, L"O:WDD:P(A;OICI;FA;;;WD)")) {
    GTEST_SKIP() << "this system does not let a folder be made for another owner";
  }
  const descriptor_t before = read_descriptor(sub_);
  if (before.owner != "S-1-1-0") {
    GTEST_SKIP() << "this system kept the owner " << before.owner << " instead of Everyone";
  }
  const std::u16string meta = sub_ + u"\\OracleMeta.xml";
  EXPECT_NE(failure_of([&] { win::win_file_t::create(win::path_holder_t(meta)); })
                .find("cannot hold the library's files: it belongs to another user."),
            std::string::npos);
  EXPECT_FALSE(exists(meta));
  EXPECT_NE(failure_of([&] { win::create_directories(win::path_holder_t(sub_ + u"\\a\\x")); })
                .find("it belongs to another user"),
            std::string::npos);
  EXPECT_FALSE(exists(sub_ + u"\\a"));
  const descriptor_t after = read_descriptor(sub_);
  EXPECT_NE(std::find(after.allowed.begin(), after.allowed.end(), "S-1-1-0"), after.allowed.end())
      << "a refused folder is left as it was";
}

TEST_F(DataFolderWindows, ASymbolicLinkPlantedWhereAFileGoesIsNotFollowed) {
  win::create_directories(win::path_holder_t(sub_ + u"\\"));
  const std::u16string link = sub_ + u"\\OracleVssInitLib";
  if (!::CreateSymbolicLinkW(w(link), w(victim_), 0)) {
    GTEST_SKIP() << "this system cannot make a symbolic link (error " << ::GetLastError() << ")";
  }
  const DWORD attributes = ::GetFileAttributesW(w(link));
  if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
    ::DeleteFileW(w(link));
    GTEST_SKIP() << "this system's symbolic links are no reparse points (attributes " << std::hex
                 << attributes << ")";
  }
  for (const auto& open : {+[](const win::path_holder_t& p) { win::win_file_t::create(p); },
                           +[](const win::path_holder_t& p) { win::win_file_t::create_or_open(p); }}) {
    EXPECT_NE(failure_of([&] { open(win::path_holder_t(link)); }).find("is a junction or a symbolic link"),
              std::string::npos);
  }
  EXPECT_NE(failure_of([&] { win::remove_file(win::path_holder_t(link)); })
                .find("is a junction or a symbolic link"),
            std::string::npos);
  EXPECT_EQ(read_all(victim_), "precious");
}

TEST_F(DataFolderWindows, AFolderLinkPlantedInsideIsRefused) {
  win::create_directories(win::path_holder_t(sub_ + u"\\"));
  const std::u16string elsewhere = data_.substr(0, 3) + u"sec_elsewhere_" + dsl_test_id();
  ASSERT_TRUE(::CreateDirectoryW(w(elsewhere), nullptr) || ::GetLastError() == ERROR_ALREADY_EXISTS);
  const std::u16string link = sub_ + u"\\OracleLogBackup";
  if (!::CreateSymbolicLinkW(w(link), w(elsewhere), SYMBOLIC_LINK_FLAG_DIRECTORY)) {
    ::RemoveDirectoryW(w(elsewhere));
    GTEST_SKIP() << "this system cannot make a folder link (error " << ::GetLastError() << ")";
  }
  const DWORD attributes = ::GetFileAttributesW(w(link));
  if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
    ::RemoveDirectoryW(w(link));
    ::DeleteFileW(w(link));
    ::RemoveDirectoryW(w(elsewhere));
    GTEST_SKIP() << "this system's folder links are no reparse points (attributes " << std::hex
                 << attributes << ")";
  }
  EXPECT_NE(failure_of([&] { win::win_file_t::create(win::path_holder_t(link + u"\\x.arc")); })
                .find("it is a junction or a symbolic link."),
            std::string::npos);
  EXPECT_FALSE(exists(elsewhere + u"\\x.arc"));
  ::RemoveDirectoryW(w(link));
  ::RemoveDirectoryW(w(elsewhere));
}

}  // namespace
