// The host build's registry store: where it comes from, what an absent or broken file means,
// and the reload that tests use.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/win/reg_api.h"
#include "common/win/reg_key.h"
#include "common/win/reg_store_posix.h"
#include "support/reg_machine.h"
#include "support/thrown.h"

namespace {

using dsl_test::lines_of;
using dsl_test::plain;

// Points DBSHADOWLINK_REGISTRY at `value` (or unsets it) for the span of a test.
class registry_variable_t {
 public:
  explicit registry_variable_t(const char* value) {
    if (const char* old = std::getenv(win::reg_store::kRegistryVariable)) previous_ = old;
    had_previous_ = std::getenv(win::reg_store::kRegistryVariable) != nullptr;
    if (value == nullptr) {
      ::unsetenv(win::reg_store::kRegistryVariable);
    } else {
      ::setenv(win::reg_store::kRegistryVariable, value, 1);
    }
    win::reg_store::reload();
  }
  ~registry_variable_t() {
    if (had_previous_) {
      ::setenv(win::reg_store::kRegistryVariable, previous_.c_str(), 1);
    } else {
      ::unsetenv(win::reg_store::kRegistryVariable);
    }
    win::reg_store::reload();
  }

 private:
  std::string previous_;
  bool had_previous_ = false;
};

TEST(RegStore, AnUnsetVariableIsAnEmptyRegistry) {
  registry_variable_t variable(nullptr);
  EXPECT_FALSE(win::open_subkey(nullptr, u"SOFTWARE"));
  const auto root = win::open_subkey(nullptr, u"");
  ASSERT_TRUE(root);
  EXPECT_TRUE(root->subkey_names().empty());
}

TEST(RegStore, AnEmptyVariableIsAnEmptyRegistry) {
  registry_variable_t variable("");
  EXPECT_FALSE(win::open_subkey(nullptr, u"SOFTWARE"));
}

TEST(RegStore, AFileThatDoesNotExistIsAnEmptyRegistry) {
  registry_variable_t variable("/nonexistent/dbshadowlink/registry.reg");
  EXPECT_FALSE(win::open_subkey(nullptr, u"SOFTWARE\\Trelo\\Trelo Safekeep"));
}

TEST(RegStore, ABrokenFileMakesEveryOpenFailNamingTheFileAndTheLine) {
  const std::string path = dsl_test::fixture_path("registry_broken_machine.reg");
  registry_variable_t variable(path.c_str());
  const std::string cause = "Failed to parse registry file [" + path +
                            "], line 6: a dword value needs 1 to 8 hexadecimal digits.";
  for (int attempt = 0; attempt < 2; ++attempt) {
    const auto e = dsl_test::thrown<exc::runtime_exc_t>(
        [] { (void)win::open_subkey(nullptr, u"SOFTWARE\\DbShadowLink Tests\\Broken Machine"); });
    ASSERT_TRUE(e);
    EXPECT_EQ(lines_of(*e),
              (std::vector<dsl_test::line_t>{
                  plain(cause), plain("Failed to open subkey. Path: [SOFTWARE\\DbShadowLink "
                                      "Tests\\Broken Machine].")}));
  }
  win::reg_handle_t key = nullptr;
  const auto raw = dsl_test::thrown<exc::runtime_exc_t>(
      [&] { (void)win::reg_api::open_key(nullptr, u"SOFTWARE", win::kKeyRead, key); });
  ASSERT_TRUE(raw);
  EXPECT_EQ(std::string(raw->what()), cause);
}

TEST(RegStore, AFolderInPlaceOfTheFileMakesEveryOpenFail) {
  const std::string folder = dsl_test::scratch_folder("reg-store-folder");
  {
    registry_variable_t variable(folder.c_str());
    const auto e =
        dsl_test::thrown<exc::runtime_exc_t>([] { (void)win::open_subkey(nullptr, u"SOFTWARE"); });
    ASSERT_TRUE(e);
    EXPECT_EQ(e->messages().front().text,
              "Failed to read registry file [" + folder + "]: it is a folder.");
  }
  dsl_test::remove_folder(folder);
}

TEST(RegStore, ReloadReadsTheVariableAgainWhileOpenKeysKeepTheirTree) {
  const std::string folder = dsl_test::scratch_folder("reg-store-reload");
  dsl_test::write_file(folder + "/first.reg",
                       "REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Machine]\n\"Which\"=\"first\"\n");
  dsl_test::write_file(folder + "/second.reg",
                       "REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Machine]\n\"Which\"=\"second\"\n");
  {
    registry_variable_t variable((folder + "/first.reg").c_str());
    const auto first = win::open_subkey(nullptr, u"SOFTWARE\\Machine");
    ASSERT_TRUE(first);
    ::setenv(win::reg_store::kRegistryVariable, (folder + "/second.reg").c_str(), 1);
    // Without a reload the store stays as loaded, as the registry of a running process does.
    EXPECT_EQ(win::open_subkey(nullptr, u"SOFTWARE\\Machine")->value_or(u"Which", u""), u"first");
    win::reg_store::reload();
    EXPECT_EQ(win::open_subkey(nullptr, u"SOFTWARE\\Machine")->value_or(u"Which", u""), u"second");
    EXPECT_EQ(first->value_or(u"Which", u""), u"first");
  }
  dsl_test::remove_folder(folder);
}

TEST(RegStore, OtherRootsOfTheFileAreNotTheMachineRoot) {
  const std::string folder = dsl_test::scratch_folder("reg-store-roots");
  dsl_test::write_file(folder + "/roots.reg", "REGEDIT4\n[HKEY_CURRENT_USER\\SOFTWARE\\Mine]\n");
  {
    registry_variable_t variable((folder + "/roots.reg").c_str());
    EXPECT_FALSE(win::open_subkey(nullptr, u"SOFTWARE\\Mine"));
  }
  dsl_test::remove_folder(folder);
}

TEST(RegStore, AHandleThatWasNeverGivenOutOrIsClosedIsInvalid) {
  registry_variable_t variable(nullptr);
  int not_a_key = 0;
  uint32_t count = 0;
  EXPECT_EQ(win::reg_api::query_subkey_count(&not_a_key, count), win::kErrorInvalidHandle);
  win::reg_handle_t key = nullptr;
  ASSERT_EQ(win::reg_api::open_key(nullptr, u"", win::kKeyRead, key), win::kErrorSuccess);
  EXPECT_EQ(win::reg_api::close_key(key), win::kErrorSuccess);
  EXPECT_EQ(win::reg_api::close_key(key), win::kErrorInvalidHandle);
  EXPECT_EQ(win::reg_api::query_subkey_count(key, count), win::kErrorInvalidHandle);
  win::reg_handle_t child = nullptr;
  EXPECT_EQ(win::reg_api::open_key(key, u"x", win::kKeyRead, child), win::kErrorInvalidHandle);
}

TEST(RegStore, TheStoreGrantsReadingAndRefusesWriting) {
  registry_variable_t variable(nullptr);
  win::reg_handle_t key = nullptr;
  EXPECT_EQ(win::reg_api::open_key(nullptr, u"", 0x80000000u /*GENERIC_READ*/, key),
            win::kErrorSuccess);
  uint32_t count = 7;
  EXPECT_EQ(win::reg_api::query_subkey_count(key, count), win::kErrorSuccess);
  EXPECT_EQ(count, 0u);
  win::reg_api::close_key(key);
  EXPECT_EQ(win::reg_api::open_key(nullptr, u"", 0xF003F /*KEY_ALL_ACCESS*/, key),
            win::kErrorAccessDenied);
}

}  // namespace
