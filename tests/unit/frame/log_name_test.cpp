// The agent's log name becomes a file in the data folder, so OracleVssInitLib and OracleTest take
// it only as one bare file name: anything else is refused with a clear text before a file or a
// folder is touched. The start-up is tried in a process of its own (a death-test child), since a
// library already started in this process answers a second start with success, as it must.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "DbShadowLink.h"
#include "common/win/path_ops.h"
#include "frame/library_state.h"
#include "support/wide.h"

using dsl_test::take_text;
using dsl_test::utf8;
using dsl_test::W;

namespace {

struct refused_name_t {
  std::u16string name;
  std::string reason;
};

std::vector<refused_name_t> refused_names() {
  return {
      {u"..\\x", "it contains a path separator"},
      {u"C:\\x", "it names a drive or a stream"},
      {u"a/b", "it contains a path separator"},
      {u"NUL", "it names a device"},
      {u"nul.txt", "it names a device"},
      {u"x:y", "it names a drive or a stream"},
      {u"..", "it names a folder"},
      {u"a|b", "it contains a character that Windows does not allow in a file name"},
      {std::u16string(300, u'a'), "it is longer than 255 characters"},
  };
}

// Where a refused name would have led had it been joined to the data folder.
int traces_of_the_names() {
  int found = 0;
  for (const char16_t* path :
       {u"C:\\ProgramData\\Trelo\\x", u"C:\\x", u"C:\\ProgramData\\Trelo\\Backup\\a\\b",
        u"C:\\ProgramData\\Trelo\\Backup\\a", u"C:\\ProgramData\\Trelo\\Backup\\x"}) {
    if (win::file_exists(win::path_holder_t(std::u16string(path)))) {
      std::fprintf(stderr, "found %s\n", utf8(path).c_str());
      ++found;
    }
  }
  return found;
}

// Calls `start` with each refused name; counts the answers that are not the refusal with its
// text, telling each on the standard error.
template <typename Start>
int wrong_answers(Start start) {
  int wrong = 0;
  for (const refused_name_t& c : refused_names()) {
    DSL_WCHAR* error = nullptr;
    const DSL_RESULT rc = start(W(c.name.c_str()), &error);
    const std::string text = error != nullptr ? utf8(take_text(error)) : std::string();
    const std::string wanted =
        "Log name [" + utf8(c.name) + "] is not a valid file name: " + c.reason + ".";
    if (rc != DSL_E_FAIL || text.find(wanted) == std::string::npos) {
      std::fprintf(stderr, "name %s: rc %08x, text: %s\n", utf8(c.name).c_str(),
                   static_cast<unsigned>(rc), text.c_str());
      ++wrong;
    }
  }
  return wrong;
}

TEST(LogNameDeathTest, InitLibRefusesANameThatIsNoBareFileNameAndMakesNoFile) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(
      {
        int wrong = 0;
        if (specific::oracle::frame::CLibraryState::instance().initialised()) ++wrong;
        wrong += wrong_answers([](const DSL_WCHAR* name, DSL_WCHAR** error) {
          return OracleVssInitLib(name, error);
        });
        if (specific::oracle::frame::CLibraryState::instance().initialised()) ++wrong;
        wrong += traces_of_the_names();
        std::exit(wrong == 0 ? 0 : 1);
      },
      ::testing::ExitedWithCode(0), "");
}

TEST(LogName, OracleTestRefusesTheSameNamesWithTheSameText) {
  EXPECT_EQ(wrong_answers([](const DSL_WCHAR* name, DSL_WCHAR** error) {
              return OracleTest(nullptr, nullptr, name, error);
            }),
            0);
  EXPECT_EQ(traces_of_the_names(), 0);
}

}  // namespace
