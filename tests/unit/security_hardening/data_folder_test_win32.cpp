// The data folder on Windows: the folders the library makes carry a protected access list that
// lets only SYSTEM, the Administrators and the process's own user write; a folder whose list
// lets Everyone write is repaired when its owner is one of those and refused otherwise; links
// planted inside are not followed. Wine does not enforce access lists for a process, so what is
// tested is the descriptor the library set or read, read back with the system's own calls.
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
#include "support/wide.h"

namespace {

const wchar_t* w(const std::u16string& text) { return reinterpret_cast<const wchar_t*>(text.c_str()); }

struct descriptor_t {
  bool read = false;
  bool is_protected = false;
  std::vector<std::string> allowed;  // SIDs of the allowed entries, as text
  std::string owner;
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

TEST_F(DataFolderWindows, AFolderTheLibraryMakesGetsTheProtectedList) {
  win::create_directories(win::path_holder_t(sub_ + u"\\ORCL\\x.arc"));
  for (const std::u16string& folder : {sub_, sub_ + u"\\ORCL"}) {
    const descriptor_t d = read_descriptor(folder);
    ASSERT_TRUE(d.read) << dsl_test::utf8(folder);
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
  const descriptor_t before = read_descriptor(sub_);
  ASSERT_TRUE(before.read);
  ASSERT_NE(std::find(before.allowed.begin(), before.allowed.end(), "S-1-1-0"), before.allowed.end())
      << "the folder is made to let Everyone write";
  win::win_file_t::create(win::path_holder_t(sub_ + u"\\OracleMeta.xml"))->write(2, "ok");
  const descriptor_t after = read_descriptor(sub_);
  EXPECT_TRUE(after.is_protected);
  EXPECT_EQ(std::find(after.allowed.begin(), after.allowed.end(), "S-1-1-0"), after.allowed.end())
      << "Everyone's entry is gone";
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
  EXPECT_NE(failure_of([&] { win::win_file_t::create(win::path_holder_t(link + u"\\x.arc")); })
                .find("it is a junction or a symbolic link."),
            std::string::npos);
  EXPECT_FALSE(exists(elsewhere + u"\\x.arc"));
  ::RemoveDirectoryW(w(link));
  ::RemoveDirectoryW(w(elsewhere));
}

}  // namespace
