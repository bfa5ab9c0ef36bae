#include "common/monitoring/file_trace_config.h"

#include <gtest/gtest.h>

namespace {

TEST(FileTraceConfig, EveryFlagReadsAsOffAndNoRecorderIsSet) {
  const auto& config = monitoring::file_trace_config_t::instance();
  EXPECT_TRUE(config.flags().empty());
  EXPECT_EQ(config.recorder(), nullptr);
  EXPECT_FALSE(config.seek());
  EXPECT_FALSE(config.read());
  EXPECT_FALSE(config.write());
  EXPECT_FALSE(config.flush());
  EXPECT_FALSE(config.resize());
  EXPECT_FALSE(config.open_close());
  for (size_t word = 0; word < 4; ++word) {
    for (unsigned bit = 0; bit < 40; ++bit) EXPECT_FALSE(config.flag(word, bit));
  }
}

}  // namespace
