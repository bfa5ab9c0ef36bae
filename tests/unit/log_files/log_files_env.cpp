#include "log_files_env.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>

#include "common/logging/log_path.h"
#include "common/product.h"
#include "common/text/convert.h"

namespace dsl_test {

namespace {

std::string reg_escape(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (c == '\\' || c == '"') out += '\\';
    out += c;
  }
  return out;
}

}  // namespace

machine_settings_t::machine_settings_t(const std::vector<key_t>& keys) {
  static std::atomic<int> counter{0};
  folder_ = scratch_folder("log-files-reg-" + std::to_string(counter++));
  std::string text = "REGEDIT4\r\n";
  for (const auto& key : keys) {
    text += "\r\n[HKEY_LOCAL_MACHINE\\" + key.path + "]\r\n";
    for (const auto& value : key.values) {
      text += "\"" + reg_escape(value.name) + "\"=";
      if (value.is_dword) {
        char number[16];
        std::snprintf(number, sizeof number, "%08x", static_cast<unsigned>(value.dword));
        text += std::string("dword:") + number;
      } else {
        text += "\"" + reg_escape(value.text) + "\"";
      }
      text += "\r\n";
    }
  }
  const std::string file = folder_ + (folder_.find('\\') != std::string::npos ? "\\" : "/") +
                           "machine.reg";
  write_file(file, text);
  machine_ = std::make_unique<reg_machine_t>(file);
}

machine_settings_t::~machine_settings_t() {
  machine_.reset();
  remove_folder(folder_);
}

machine_settings_t::key_t log_directory_key(const std::string& dir) {
  machine_settings_t::key_t key;
  key.path = util::to_utf8(product::kSettingsKey);
  reg_value_t value;
  value.name = logging::kLogDirectoryValue;
  value.text = dir;
  key.values.push_back(value);
  return key;
}

std::vector<std::string> crlf_lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find("\r\n", start);
    if (end == std::string::npos) {
      lines.push_back(text.substr(start));
      break;
    }
    lines.push_back(text.substr(start, end - start));
    start = end + 2;
  }
  return lines;
}

standard_folder_file_t::standard_folder_file_t(const std::u16string& name)
    : path_(logging::default_log_dir() + name) {}

console_capture_t::console_capture_t(stream_t stream) : stream_(stream) {
  if (stream_ == standard_output) {
    testing::internal::CaptureStdout();
  } else {
    testing::internal::CaptureStderr();
  }
}

console_capture_t::~console_capture_t() { take(); }

std::string console_capture_t::take() {
  if (taken_) return std::string();
  taken_ = true;
  std::fflush(nullptr);
  return stream_ == standard_output ? testing::internal::GetCapturedStdout()
                                    : testing::internal::GetCapturedStderr();
}

std::string read_gz(const std::u16string& path) {
  gzFile gz = open_gz(path, "rb");
  if (gz == nullptr) {
    ADD_FAILURE() << "cannot open " << util::to_utf8(path);
    return std::string();
  }
  std::string out;
  char buffer[65536];
  for (;;) {
    const int got = ::gzread(gz, buffer, sizeof buffer);
    if (got < 0) {
      ADD_FAILURE() << "cannot read " << util::to_utf8(path);
      break;
    }
    if (got == 0) break;
    out.append(buffer, static_cast<size_t>(got));
  }
  ::gzclose(gz);
  return out;
}

void write_gz(const std::u16string& path, const std::string& bytes) {
  gzFile gz = open_gz(path, "wb");
  ASSERT_NE(gz, nullptr) << util::to_utf8(path);
  if (!bytes.empty()) {
    ASSERT_EQ(::gzwrite(gz, bytes.data(), static_cast<unsigned>(bytes.size())),
              static_cast<int>(bytes.size()));
  }
  ASSERT_EQ(::gzclose(gz), Z_OK);
}

}  // namespace dsl_test
