#include "common/win/handle.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

namespace {

using win::win_handle_t;

// Far above any real handle value: closing it can never close something of the test.
win_handle_t::native_t fake(uintptr_t n) { return reinterpret_cast<void*>(0x5EC000000000 + n); }

TEST(WinHandle, NewHandleHoldsMinusOneAndIsNotValid) {
  win_handle_t h;
  EXPECT_EQ(h.get(), win_handle_t::invalid_value());
  EXPECT_EQ(reinterpret_cast<intptr_t>(h.get()), -1);
  EXPECT_FALSE(h.valid());
  EXPECT_FALSE(static_cast<bool>(h));
}

TEST(WinHandle, ZeroIsNotValidEither) {
  win_handle_t h(nullptr);
  EXPECT_FALSE(h.valid());
  EXPECT_FALSE(win_handle_t::is_valid(nullptr));
  EXPECT_FALSE(win_handle_t::is_valid(win_handle_t::invalid_value()));
  EXPECT_TRUE(win_handle_t::is_valid(fake(4)));
}

TEST(WinHandle, MoveHandsTheValueOver) {
  win_handle_t a(fake(4));
  win_handle_t b(std::move(a));
  EXPECT_EQ(b.get(), fake(4));
  EXPECT_FALSE(a.valid());  // NOLINT: the moved-from state is specified
  win_handle_t c;
  c = std::move(b);
  EXPECT_EQ(c.get(), fake(4));
  EXPECT_FALSE(b.valid());  // NOLINT
}

TEST(WinHandle, ReleaseGivesTheValueUpAndLeavesMinusOne) {
  win_handle_t h(fake(8));
  EXPECT_EQ(h.release(), fake(8));
  EXPECT_EQ(h.get(), win_handle_t::invalid_value());
}

TEST(WinHandle, PutOffersTheSlotForAnOutParameter) {
  win_handle_t h;
  *h.put() = fake(12);
  EXPECT_EQ(h.get(), fake(12));
  h.reset();
  EXPECT_FALSE(h.valid());
}

}  // namespace
