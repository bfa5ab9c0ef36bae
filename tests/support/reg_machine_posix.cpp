#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include <unistd.h>

#include <gtest/gtest.h>

#include "common/win/reg_store_posix.h"
#include "support/reg_machine.h"

namespace dsl_test {

std::string fixture_path(const std::string& name) {
  const char* source = std::getenv("DSL_SOURCE_DIR");
  const std::string root = (source != nullptr && *source != '\0') ? source : ".";
  return root + "/tests/fixtures/" + name;
}

std::string scratch_folder(const std::string& name) {
  const auto path =
      std::filesystem::temp_directory_path() / ("dsl-" + name + "-" + std::to_string(::getpid()));
  std::filesystem::remove_all(path);
  std::filesystem::create_directories(path);
  return path.string();
}

void remove_folder(const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

void write_file(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(out.good()) << path;
}

struct reg_machine_t::state_t {
  std::optional<std::string> previous;
};

reg_machine_t::reg_machine_t(const std::string& reg_file_path) : state_(new state_t) {
  if (const char* value = std::getenv(win::reg_store::kRegistryVariable)) state_->previous = value;
  ::setenv(win::reg_store::kRegistryVariable, reg_file_path.c_str(), 1);
  win::reg_store::reload();
}

reg_machine_t::~reg_machine_t() {
  if (state_->previous) {
    ::setenv(win::reg_store::kRegistryVariable, state_->previous->c_str(), 1);
  } else {
    ::unsetenv(win::reg_store::kRegistryVariable);
  }
  win::reg_store::reload();
  delete state_;
}

void reg_machine_t::make_read_only(const std::u16string&) {}

void reg_machine_t::make_unreadable(const std::u16string&) {}

}  // namespace dsl_test
