// Finding and loading the library: the default beside the host, --lib, and the ways a library
// can be unusable. Each of those exits 1 with a message that names the file.
#include <gtest/gtest.h>

#include <filesystem>

#include "console_fixture.h"
#include "test_platform.h"

namespace console_test {
namespace {

namespace fs = std::filesystem;

using LibraryLoadingTest = console_test_t;

TEST_F(LibraryLoadingTest, HostLoadsTheLibraryBesideItselfByDefault) {
  const outcome_t direct = reference_t::instance().logs_folder();
  expect_run(host({"logs-folder"}), expected_text_run("logs-folder", "OracleGetLogsFolder", direct));
}

TEST_F(LibraryLoadingTest, HostLoadsTheLibraryNamedByLib) {
  const outcome_t direct = reference_t::instance().logs_folder();
  expect_run(host({"--lib", library_path(), "logs-folder"}),
             expected_text_run("logs-folder", "OracleGetLogsFolder", direct));
}

TEST_F(LibraryLoadingTest, LibOptionMayFollowTheCommand) {
  const outcome_t direct = reference_t::instance().logs_folder();
  expect_run(host({"logs-folder", "--lib", library_path()}),
             expected_text_run("logs-folder", "OracleGetLogsFolder", direct));
}

TEST_F(LibraryLoadingTest, MissingLibraryFileExitsOneAndNamesIt) {
  const std::string missing = path_in_test_folder("no-such-library.bin");
  const process_result_t run = host({"--lib", missing, "logs-folder"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err.rfind("dbshadowlink: cannot load the library '" + missing + "': ", 0), 0u)
      << run.err;
}

TEST_F(LibraryLoadingTest, FileThatIsNoLibraryExitsOneAndNamesIt) {
  const std::string file = write_file("not-a-library.bin", "this is plain text, not code\n");
  const process_result_t run = host({"--lib", file, "enum-logs"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err.rfind("dbshadowlink: cannot load the library '" + file + "': ", 0), 0u)
      << run.err;
}

TEST_F(LibraryLoadingTest, LibraryWithoutTheExportsExitsOneAndNamesEveryMissingOne) {
  const std::string other = library_without_exports();
  const process_result_t run = host({"--lib", other, "logs-folder"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("does not export OracleVssInitLib, OracleVssStopLib, OracleLibStrFree, "
                         "OracleGetLogsFolder\n"),
            std::string::npos)
      << run.err;
}

TEST_F(LibraryLoadingTest, HostWithoutALibraryBesideItExitsOneAndNamesThePathItTried) {
  const fs::path copy = fs::u8path(path_in_test_folder(host_file_name()));
  fs::copy_file(fs::u8path(host_path()), copy);
  const process_result_t run = run_process(copy.u8string(), {"logs-folder"});
  EXPECT_EQ(run.exit_code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("cannot load the library"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find(path_in_test_folder(library_file_name())), std::string::npos) << run.err;
}

TEST_F(LibraryLoadingTest, HostCopiedBesideTheLibraryLoadsThatCopy) {
  fs::copy_file(fs::u8path(host_path()), fs::u8path(path_in_test_folder(host_file_name())));
  fs::copy_file(fs::u8path(library_path()), fs::u8path(path_in_test_folder(library_file_name())));
  const outcome_t direct = reference_t::instance().logs_folder();
  expect_run(run_process(path_in_test_folder(host_file_name()), {"logs-folder"}),
             expected_text_run("logs-folder", "OracleGetLogsFolder", direct));
}

}  // namespace
}  // namespace console_test
