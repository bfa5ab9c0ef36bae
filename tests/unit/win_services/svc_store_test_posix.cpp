// Services on the host build: what the store file says about a service, and what a store that
// cannot be read does to the manager.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <unistd.h>

#include "common/exc/exc_base.h"
#include "common/exc/sys_text.h"
#include "common/win/svc_api.h"
#include "common/win/svc_manager.h"
#include "support/svc_machine.h"
#include "support/thrown.h"

namespace {

using dsl_test::lines_of;
using dsl_test::plain;
using dsl_test::thrown;
using dsl_test::trace;

// A store file written for one test, removed with it.
class store_file_t {
 public:
  explicit store_file_t(const std::string& text)
      : path_((std::filesystem::temp_directory_path() /
               ("dsl-svc-store-" + std::to_string(::getpid()) + ".reg"))
                  .string()) {
    std::ofstream(path_, std::ios::binary) << text;
    machine_ = std::make_unique<dsl_test::svc_machine_t>(path_);
  }
  ~store_file_t() {
    machine_.reset();
    std::filesystem::remove(path_);
  }
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::unique_ptr<dsl_test::svc_machine_t> machine_;
};

constexpr char kHeader[] =
    "Windows Registry Editor Version 5.00\n\n"
    "[HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\";

TEST(SvcStore, AStateThatIsNotADwordFailsTheQueryWithInvalidData) {
  store_file_t store(std::string(kHeader) + "Odd]\n\"CurrentState\"=\"4\"\n");
  win::win_svc_t service(std::make_shared<win::win_scm_t>());
  service.open(u"Odd");
  const auto e = thrown<exc::win_sys_exc_t>([&] { (void)service.state(); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorInvalidData);
  EXPECT_EQ(lines_of(*e),
            (std::vector<dsl_test::line_t>{plain(exc::system_error_text(13)),
                                           plain("Failed to query state of the service 'Odd'. "),
                                           trace("Error code: 0x0000000d")}));
}

TEST(SvcStore, AnyDwordStateIsReportedAsStored) {
  store_file_t store(std::string(kHeader) + "Starting]\n\"CurrentState\"=dword:00000002\n");
  win::win_svc_t service(std::make_shared<win::win_scm_t>());
  service.open(u"Starting");
  EXPECT_EQ(service.state(), win::kServiceStartPending);
}

TEST(SvcStore, AStoreWithoutAServicesKeyHasNoServices) {
  store_file_t store("REGEDIT4\n[HKEY_LOCAL_MACHINE\\SOFTWARE\\Other]\n");
  win::win_svc_t service(std::make_shared<win::win_scm_t>());
  const auto e = thrown<exc::win_sys_exc_t>([&] { service.open(u"Anything"); });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), win::kErrorServiceDoesNotExist);
}

TEST(SvcStore, AnEmptyRegistryHasNoServices) {
  store_file_t store("REGEDIT4\n");
  win::win_svc_t service(std::make_shared<win::win_scm_t>());
  EXPECT_TRUE(thrown<exc::win_sys_exc_t>([&] { service.open(u"OracleVssWriterORCL"); }));
}

TEST(SvcStore, ABrokenStoreFileMakesConnectingFailNamingTheFileAndTheLine) {
  store_file_t store(std::string(kHeader) + "Bad]\n\"CurrentState\"=dword:\n");
  const auto e = thrown<exc::runtime_exc_t>([] { win::win_scm_t scm; });
  ASSERT_TRUE(e);
  EXPECT_EQ(lines_of(*e),
            (std::vector<dsl_test::line_t>{
                plain("Failed to parse registry file [" + store.path() +
                      "], line 4: a dword value needs 1 to 8 hexadecimal digits."),
                plain("Cannot connect to service control manager. Host: 'localhost'.")}));
}

TEST(SvcStore, AnOpenServiceKeepsTheStoreItWasOpenedOn) {
  auto store = std::make_unique<store_file_t>(std::string(kHeader) +
                                              "Kept]\n\"CurrentState\"=dword:00000004\n");
  win::win_svc_t service(std::make_shared<win::win_scm_t>());
  service.open(u"Kept");
  store.reset();  // the variable goes back and the store is reloaded
  EXPECT_EQ(service.state(), win::kServiceRunning);
}

TEST(SvcStore, AServiceHandleNeedsTheRightToQueryItsState) {
  store_file_t store(std::string(kHeader) + "Guarded]\n");
  win::svc_handle_t manager = nullptr;
  ASSERT_EQ(win::svc_api::open_manager(win::kScManagerAllAccess, manager), 0u);
  win::svc_handle_t service = nullptr;
  ASSERT_EQ(win::svc_api::open_service(manager, u"Guarded", /*access=*/0x0010, service), 0u);
  uint32_t state = 0;
  EXPECT_EQ(win::svc_api::query_state(service, state), win::kErrorAccessDenied);
  EXPECT_EQ(win::svc_api::query_state(manager, state), win::kErrorInvalidHandle);
  EXPECT_EQ(win::svc_api::close_handle(service), 0u);
  EXPECT_EQ(win::svc_api::close_handle(service), win::kErrorInvalidHandle);
  EXPECT_EQ(win::svc_api::close_handle(manager), 0u);
}

}  // namespace
