// The whole text of the library exception an action throws, or "" (with a test failure) when it
// throws none.
#pragma once
#include <string>

#include "support/thrown.h"

namespace logs_test {

template <typename F>
std::string thrown_text(F&& action) {
  const auto e = dsl_test::thrown<exc::exc_base_t>(action);
  return e ? std::string(e->what()) : std::string();
}

}  // namespace logs_test
