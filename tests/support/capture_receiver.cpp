#include "support/capture_receiver.h"

#include <regex>
#include <stdexcept>

namespace dsl_test {

void capture_receiver_t::write(const std::string& text) {
  std::lock_guard<std::mutex> guard(lock_);
  writes_.push_back(text);
}

uint64_t capture_receiver_t::size() const {
  std::lock_guard<std::mutex> guard(lock_);
  uint64_t total = 0;
  for (const auto& w : writes_) total += w.size();
  return total;
}

void capture_receiver_t::compress_into(logging::receiver::zip_writer_t&) {
  throw std::logic_error("the capture receiver does not rotate");
}

std::vector<std::string> capture_receiver_t::writes() const {
  std::lock_guard<std::mutex> guard(lock_);
  return writes_;
}

std::vector<std::string> capture_receiver_t::lines() const {
  std::vector<std::string> result;
  for (const auto& w : writes()) {
    size_t start = 0;
    while (start < w.size()) {
      size_t end = w.find('\n', start);
      if (end == std::string::npos) end = w.size();
      result.push_back(w.substr(start, end - start));
      start = end + 1;
    }
  }
  return result;
}

std::vector<std::string> capture_receiver_t::bodies() const {
  std::vector<std::string> result;
  for (const auto& l : lines()) result.push_back(strip_stamp_and_thread(l));
  return result;
}

void capture_receiver_t::clear() {
  std::lock_guard<std::mutex> guard(lock_);
  writes_.clear();
}

std::string strip_stamp_and_thread(const std::string& line) {
  static const std::regex head(R"(^(\[\d\d\.\d\d\.\d{4} \d\d:\d\d:\d\d\] |TIME ---)< {0,5}\d+> )");
  std::smatch m;
  if (std::regex_search(line, m, head)) return line.substr(m.length(0));
  return line;
}

capture_log_t::capture_log_t() : receiver_(std::make_shared<capture_receiver_t>()) {
  previous_ = logging::log_t::instance()->file();
  logging::log_t::instance()->set_file(receiver_);
}

capture_log_t::~capture_log_t() { logging::log_t::instance()->set_file(previous_); }

std::string plain_body(const std::string& body) {
  std::string text = body;
  const std::string prefix = "oralib| ";
  if (text.rfind(prefix, 0) == 0) text = text.substr(prefix.size());
  if (text.rfind("WARN|", 0) == 0 || text.rfind("ERR |", 0) == 0 || text.rfind(">>  |", 0) == 0) {
    return text;
  }
  const size_t first = text.find_first_not_of(' ');
  return first == std::string::npos ? std::string() : text.substr(first);
}

std::vector<std::string> plain_log(const capture_log_t& log) {
  std::vector<std::string> result;
  for (const auto& b : log.bodies()) result.push_back(plain_body(b));
  return result;
}

}  // namespace dsl_test
