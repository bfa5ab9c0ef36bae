// Splitting account names into domain and user.
#include "common/security/user_name.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct parsed_t {
  std::u16string domain = u"<untouched>";
  std::u16string user = u"<untouched>";
  bool is_upn = false;
};

parsed_t parse(const std::u16string& name) {
  parsed_t r;
  security::parse_user_name(name, r.domain, r.user, r.is_upn);
  return r;
}

TEST(UserName, BackslashSplitsDomainAndUser) {
  const parsed_t r = parse(u"CORP\\alice");
  EXPECT_EQ(r.domain, u"CORP");
  EXPECT_EQ(r.user, u"alice");
  EXPECT_FALSE(r.is_upn);
}

TEST(UserName, OnlyTheFirstBackslashSplits) {
  const parsed_t r = parse(u"A\\B\\c");
  EXPECT_EQ(r.domain, u"A");
  EXPECT_EQ(r.user, u"B\\c");
}

TEST(UserName, BackslashFormWinsOverAnAtSign) {
  const parsed_t r = parse(u"CORP\\alice@corp.example");
  EXPECT_EQ(r.domain, u"CORP");
  EXPECT_EQ(r.user, u"alice@corp.example");
  EXPECT_FALSE(r.is_upn);
}

TEST(UserName, AtSignAloneMakesAUpnAndLeavesDomainAndUser) {
  const parsed_t r = parse(u"alice@corp.example");
  EXPECT_TRUE(r.is_upn);
  EXPECT_EQ(r.domain, u"<untouched>");
  EXPECT_EQ(r.user, u"<untouched>");
}

TEST(UserName, PlainNameIsALocalAccount) {
  const parsed_t r = parse(u"a");
  EXPECT_EQ(r.domain, u".");
  EXPECT_EQ(r.user, u"a");
  EXPECT_FALSE(r.is_upn);
}

TEST(UserName, EdgesOfTheBackslashForm) {
  parsed_t r = parse(u"\\bob");
  EXPECT_EQ(r.domain, u"");
  EXPECT_EQ(r.user, u"bob");
  r = parse(u"CORP\\");
  EXPECT_EQ(r.domain, u"CORP");
  EXPECT_EQ(r.user, u"");
}

TEST(UserName, EmptyNameIsALocalAccountWithAnEmptyUser) {
  const parsed_t r = parse(u"");
  EXPECT_EQ(r.domain, u".");
  EXPECT_EQ(r.user, u"");
}

TEST(UserName, NonAsciiNamesSplitTheSame) {
  const parsed_t r = parse(u"D\u00d6M\\j\u00fcrgen");
  EXPECT_EQ(r.domain, u"D\u00d6M");
  EXPECT_EQ(r.user, u"j\u00fcrgen");
}

TEST(UserName, IsUpnIsNeverCleared) {
  parsed_t r;
  r.is_upn = true;
  security::parse_user_name(u"CORP\\alice", r.domain, r.user, r.is_upn);
  EXPECT_TRUE(r.is_upn);
}

}  // namespace
