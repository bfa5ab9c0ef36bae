// Test helpers for the exception family: catching a thrown exception as a value, and the
// message chain as a list that GoogleTest prints readably.
#pragma once
#include <gtest/gtest.h>

#include <exception>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/exc/exc_base.h"

namespace dsl_test {

// Runs `action` and returns a copy of the exception of type E it throws. Records a test
// failure and returns nothing when it throws nothing or something else.
template <typename E, typename F>
std::optional<E> thrown(F&& action) {
  try {
    action();
  } catch (const E& e) {
    return e;
  } catch (const std::exception& e) {
    ADD_FAILURE() << "another exception was thrown: " << e.what();
    return std::nullopt;
  } catch (...) {
    ADD_FAILURE() << "a non-standard exception was thrown";
    return std::nullopt;
  }
  ADD_FAILURE() << "nothing was thrown";
  return std::nullopt;
}

// The whole text (what()) of the exception `action` throws, or "" and a test failure when it
// throws none.
template <typename F>
std::string thrown_text(F&& action) {
  try {
    action();
  } catch (const std::exception& e) {
    return e.what();
  }
  ADD_FAILURE() << "nothing was thrown";
  return std::string();
}

using line_t = std::pair<std::string, bool>;  // text, is_trace

inline line_t plain(const std::string& text) { return {text, false}; }
inline line_t trace(const std::string& text) { return {text, true}; }

inline std::vector<line_t> lines_of(const exc::exc_base_t& e) {
  std::vector<line_t> result;
  for (const auto& m : e.messages()) result.emplace_back(m.text, m.is_trace);
  return result;
}

}  // namespace dsl_test
