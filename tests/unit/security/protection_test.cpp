// The protection step holds no cipher: nothing goes in, nothing comes out.
#include "common/security/protection.h"

#include <gtest/gtest.h>

namespace {

TEST(Protection, ProtectGivesNoBytesWhateverItIsGiven) {
  EXPECT_TRUE(crypto::protect({}).empty());
  EXPECT_TRUE(crypto::protect({'s', 'e', 'c', 'r', 'e', 't'}).empty());
  EXPECT_TRUE(crypto::protect(crypto::bytes_t(100000, 0xAB)).empty());
}

TEST(Protection, UnprotectGivesNoBytesWhateverItIsGiven) {
  EXPECT_TRUE(crypto::unprotect({}).empty());
  EXPECT_TRUE(crypto::unprotect({0x00, 0x01, 0xFF}).empty());
  EXPECT_TRUE(crypto::unprotect(crypto::protect({'x'})).empty());
}

}  // namespace
