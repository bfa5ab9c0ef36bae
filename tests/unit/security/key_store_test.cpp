// The runtime key store exists empty and stays so.
#include "common/security/key_store.h"

#include <gtest/gtest.h>

namespace {

TEST(KeyStore, IsBuiltEmpty) {
  const crypto::CRuntimeKeyStore store;
  EXPECT_TRUE(store.empty());
}

}  // namespace
