// The exception family: the chain of lines and its two texts, the classes and their
// constructors, copies across threads, translation and the binary form.
#include "common/exc/exc_base.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <thread>
#include <typeinfo>

#include "common/exc/buf_reader.h"
#include "common/exc/sys_text.h"
#include "common/win/thread_id.h"
#include "support/capture_receiver.h"
#include "support/thrown.h"

namespace {

using dsl_test::lines_of;
using dsl_test::line_t;
using dsl_test::plain;
using dsl_test::trace;
using exc::byte_buffer_t;
using exc::byte_writer_t;
using exc::CBufReader;
using exc::com_exc_t;
using exc::exc_base_t;
using exc::exc_ptr_t;
using exc::file_locked_exc_t;
using exc::runtime_exc_t;
using exc::win_sys_exc_t;

constexpr size_t kMaxString = 65536;

// ---- the chain and its texts ---------------------------------------------------------------

TEST(ExcBase, WithNoLinesHasAnEmptyWhatThatIsNotNull) {
  exc_base_t e;
  ASSERT_NE(e.what(), nullptr);
  EXPECT_STREQ(e.what(), "");
  EXPECT_EQ(e.plain_text(), "");
  EXPECT_TRUE(e.messages().empty());
  EXPECT_TRUE(e.trace_info().empty());
}

TEST(ExcBase, TakesTheIdOfTheThreadThatConstructsIt) {
  exc_base_t e;
  EXPECT_EQ(e.thread_id(), win::current_thread_id());
  EXPECT_NE(e.thread_id(), 0u);
}

TEST(ExcBase, MadeInAnotherThreadCarriesThatThreadsId) {
  uint32_t worker_id = 0;
  std::optional<runtime_exc_t> made;
  std::thread worker([&] {
    worker_id = win::current_thread_id();
    made.emplace("made in the worker");
  });
  worker.join();
  ASSERT_TRUE(made);
  EXPECT_EQ(made->thread_id(), worker_id);
  EXPECT_NE(made->thread_id(), win::current_thread_id());
}

TEST(ExcBase, WithOneTextHasThatTextAsItsOnlyPlainLine) {
  exc_base_t e("Something failed.");
  const std::vector<line_t> expected = {plain("Something failed.")};
  EXPECT_EQ(lines_of(e), expected);
  EXPECT_STREQ(e.what(), "Something failed.");
  EXPECT_EQ(e.plain_text(), "Something failed.");
}

TEST(ExcBase, IsAStandardException) {
  try {
    throw runtime_exc_t("seen through the standard base");
  } catch (const std::exception& e) {
    EXPECT_STREQ(e.what(), "seen through the standard base");
  }
}

TEST(ExcBase, JoinsItsLinesWithLineFeedsInnermostFirst) {
  exc_base_t e("inner cause.");
  e.add_message("middle layer.");
  e.add_message("outer layer.");
  EXPECT_STREQ(e.what(), "inner cause.\nmiddle layer.\nouter layer.");
  EXPECT_EQ(e.plain_text(), "inner cause.\nmiddle layer.\nouter layer.");
}

TEST(ExcBase, MarksTraceLinesInWhatButNotInThePlainText) {
  exc_base_t e("inner cause.");
  e.add_trace("Reading the control file");
  e.add_message("The backup failed.");
  EXPECT_STREQ(e.what(), "inner cause.\n--tr:Reading the control file\nThe backup failed.");
  EXPECT_EQ(e.plain_text(), "inner cause.\nReading the control file\nThe backup failed.");
  const std::vector<line_t> expected = {plain("inner cause."), trace("Reading the control file"),
                                        plain("The backup failed.")};
  EXPECT_EQ(lines_of(e), expected);
}

TEST(ExcBase, TraceMarkIsTheFiveCharacterPrefix) { EXPECT_STREQ(exc::kTraceMark, "--tr:"); }

TEST(ExcBase, MarksATraceLineAsTheFirstLineOfAnEmptyChain) {
  exc_base_t e;
  e.add_trace("only trace");
  EXPECT_STREQ(e.what(), "--tr:only trace");
  EXPECT_EQ(e.plain_text(), "only trace");
}

TEST(ExcBase, MarksOnlyTheFirstLineOfATraceEntryThatHoldsLineFeeds) {
  exc_base_t e("cause.");
  e.add_trace("first\nsecond");
  EXPECT_STREQ(e.what(), "cause.\n--tr:first\nsecond");
  EXPECT_EQ(e.plain_text(), "cause.\nfirst\nsecond");
}

TEST(ExcBase, KeepsAnEmptyLineAsALineOfItsOwn) {
  exc_base_t e("");
  e.add_message("context.");
  EXPECT_STREQ(e.what(), "\ncontext.");
  EXPECT_EQ(e.messages().size(), 2u);
}

TEST(ExcBase, CopiesKeepTheChainAndTheTexts) {
  runtime_exc_t e("cause.", 12);
  e.add_trace("step");
  e.trace_info().values["k"] = "v";
  const runtime_exc_t copy = e;
  EXPECT_STREQ(copy.what(), e.what());
  EXPECT_EQ(copy.plain_text(), e.plain_text());
  EXPECT_EQ(lines_of(copy), lines_of(e));
  EXPECT_EQ(copy.trace_info().values, e.trace_info().values);
  EXPECT_EQ(copy.code(), 12u);
  EXPECT_EQ(copy.thread_id(), e.thread_id());
}

// ---- constructors of the classes -----------------------------------------------------------

TEST(RuntimeExc, WithATextHasCodeZero) {
  runtime_exc_t e("Generic failure.");
  EXPECT_STREQ(e.what(), "Generic failure.");
  EXPECT_EQ(e.code(), 0u);
}

TEST(RuntimeExc, WithATextAndACodeKeepsBoth) {
  runtime_exc_t e("Generic failure.", 0x80004005u);
  EXPECT_STREQ(e.what(), "Generic failure.");
  EXPECT_EQ(e.code(), 0x80004005u);
  EXPECT_EQ(e.messages().size(), 1u);
}

TEST(RuntimeExc, FormatsATemplateWithOneArgument) {
  runtime_exc_t e("Failed to create or open file [%1].", "C:\\data\\x.log");
  const std::vector<line_t> expected = {plain("Failed to create or open file [C:\\data\\x.log].")};
  EXPECT_EQ(lines_of(e), expected);
  EXPECT_EQ(e.code(), 0u);
}

TEST(RuntimeExc, FormatsATemplateWithThreeArguments) {
  runtime_exc_t e("Copy of [%1] to [%2] failed: %3.", "a", "b", "disk full");
  EXPECT_STREQ(e.what(), "Copy of [a] to [b] failed: disk full.");
  EXPECT_EQ(e.code(), 0u);
}

TEST(RuntimeExc, DoesNotScanAFormattedArgumentAgain) {
  runtime_exc_t one("Value [%1].", "%1");
  EXPECT_STREQ(one.what(), "Value [%1].");
  runtime_exc_t three("Value [%1] of [%2] in [%3].", "%2", "name", "%3");
  EXPECT_STREQ(three.what(), "Value [%2] of [name] in [%3].");
}

TEST(RuntimeExc, DefaultConstructedHasAnEmptyChain) {
  runtime_exc_t e;
  EXPECT_TRUE(e.messages().empty());
  EXPECT_STREQ(e.what(), "");
  EXPECT_EQ(e.code(), 0u);
}

TEST(ErrorCodeLine, ShowsTheCodeAsEightLowerCaseHexDigits) {
  EXPECT_EQ(exc::error_code_line(5), "Error code: 0x00000005");
  EXPECT_EQ(exc::error_code_line(0xABCDEF01u), "Error code: 0xabcdef01");
  EXPECT_EQ(exc::error_code_line(0), "Error code: 0x00000000");
  EXPECT_EQ(exc::error_code_line(0xFFFFFFFFu), "Error code: 0xffffffff");
}

TEST(WinSysExc, WithACodeOnlyShowsTheSystemTextAndTheCodeTraceLine) {
  win_sys_exc_t e(5);
  const std::vector<line_t> expected = {plain(exc::system_error_text(5)),
                                        trace("Error code: 0x00000005")};
  EXPECT_EQ(lines_of(e), expected);
  EXPECT_EQ(e.code(), 5u);
}

TEST(WinSysExc, WithATextShowsSystemTextThenTextThenTheCode) {
  win_sys_exc_t e("Failed to open the registry key.", 5);
  const std::string sys = exc::system_error_text(5);
  ASSERT_FALSE(sys.empty());
  const std::vector<line_t> expected = {plain(sys), plain("Failed to open the registry key."),
                                        trace("Error code: 0x00000005")};
  EXPECT_EQ(lines_of(e), expected);
  EXPECT_EQ(std::string(e.what()),
            sys + "\nFailed to open the registry key.\n--tr:Error code: 0x00000005");
  EXPECT_EQ(e.plain_text(), sys + "\nFailed to open the registry key.\nError code: 0x00000005");
  EXPECT_EQ(e.code(), 5u);
}

TEST(WinSysExc, FormatsATemplateWithOneArgumentBetweenSystemTextAndCode) {
  win_sys_exc_t e("Failed to create or open file [%1].", "C:\\a.txt", 2);
  const std::vector<line_t> expected = {plain(exc::system_error_text(2)),
                                        plain("Failed to create or open file [C:\\a.txt]."),
                                        trace("Error code: 0x00000002")};
  EXPECT_EQ(lines_of(e), expected);
  EXPECT_EQ(e.code(), 2u);
}

TEST(WinSysExc, FormatsATemplateWithTwoArguments) {
  win_sys_exc_t e("Failed to move [%1] to [%2].", "a", "b", 32);
  const std::vector<line_t> expected = {plain(exc::system_error_text(32)),
                                        plain("Failed to move [a] to [b]."),
                                        trace("Error code: 0x00000020")};
  EXPECT_EQ(lines_of(e), expected);
}

TEST(WinSysExc, FormatsATemplateWithThreeArguments) {
  win_sys_exc_t e("[%3] [%2] [%1]", "a", "b", "c", 0xC0000005u);
  ASSERT_EQ(e.messages().size(), 3u);
  EXPECT_EQ(e.messages()[1].text, "[c] [b] [a]");
  EXPECT_EQ(lines_of(e).back(), trace("Error code: 0xc0000005"));
  EXPECT_EQ(e.code(), 0xC0000005u);
}

TEST(WinSysExc, WithAnUnknownCodeStillBuildsItsLines) {
  const uint32_t unknown = 0x2000ABCDu;  // customer bit set: no system owns this code
  win_sys_exc_t e("Something failed.", unknown);
  ASSERT_EQ(e.messages().size(), 3u);
  EXPECT_EQ(e.messages()[0].text, exc::system_error_text(unknown));
  EXPECT_EQ(lines_of(e).back(), trace("Error code: 0x2000abcd"));
}

TEST(ComExc, ShowsTheCodeLineWithItsLeadingBlankThenTheText) {
  // No COM error object is set in this thread, so no description stands in front.
  com_exc_t e(0x80004005u, "Creating the snapshot set failed.");
  const std::vector<line_t> expected = {plain(" Error code: 0x80004005"),
                                        plain("Creating the snapshot set failed.")};
  EXPECT_EQ(lines_of(e), expected);
  EXPECT_STREQ(e.what(), " Error code: 0x80004005\nCreating the snapshot set failed.");
  EXPECT_EQ(e.code(), 0x80004005u);
}

TEST(ComExc, ShowsTheCodeInLowerCaseHex) {
  com_exc_t e(0x8000FFFFu, "x");
  ASSERT_FALSE(e.messages().empty());
  EXPECT_EQ(e.messages()[0].text, " Error code: 0x8000ffff");
}

TEST(FileLockedExc, SaysTheFileIsLockedAndKeepsThePath) {
  file_locked_exc_t e("C:\\oracle\\alert.log");
  const std::vector<line_t> expected = {plain("File [C:\\oracle\\alert.log] is locked.")};
  EXPECT_EQ(lines_of(e), expected);
  EXPECT_EQ(e.path(), "C:\\oracle\\alert.log");
}

// ---- clone and throw_copy ------------------------------------------------------------------

TEST(ExcClone, KeepsTheDynamicTypeAndTheCodeOfARuntimeException) {
  runtime_exc_t source("cause.", 77);
  source.add_trace("step");
  source.trace_info().values["k"] = "v";
  source.trace_info().events.push_back({2, "e"});
  const exc_base_t& as_base = source;

  exc_ptr_t copy = as_base.clone();

  ASSERT_TRUE(copy);
  EXPECT_NE(copy.get(), &source);
  auto* typed = dynamic_cast<runtime_exc_t*>(copy.get());
  ASSERT_NE(typed, nullptr);
  EXPECT_EQ(typeid(*copy), typeid(runtime_exc_t));
  EXPECT_EQ(typed->code(), 77u);
  EXPECT_STREQ(copy->what(), source.what());
  EXPECT_EQ(lines_of(*copy), lines_of(source));
  EXPECT_EQ(copy->trace_info().values, source.trace_info().values);
  EXPECT_EQ(copy->trace_info().events, source.trace_info().events);
  EXPECT_EQ(copy->thread_id(), source.thread_id());
}

TEST(ExcClone, KeepsTheDynamicTypeAndTheCodeOfASystemException) {
  win_sys_exc_t source("ctx.", 5);
  exc_ptr_t copy = static_cast<const exc_base_t&>(source).clone();
  auto* typed = dynamic_cast<win_sys_exc_t*>(copy.get());
  ASSERT_NE(typed, nullptr);
  EXPECT_EQ(typeid(*copy), typeid(win_sys_exc_t));
  EXPECT_EQ(typed->code(), 5u);
  EXPECT_STREQ(copy->what(), source.what());
}

TEST(ExcClone, KeepsTheDynamicTypeAndTheCodeOfAComException) {
  com_exc_t source(0x80070005u, "ctx.");
  exc_ptr_t copy = static_cast<const exc_base_t&>(source).clone();
  auto* typed = dynamic_cast<com_exc_t*>(copy.get());
  ASSERT_NE(typed, nullptr);
  EXPECT_EQ(typeid(*copy), typeid(com_exc_t));
  EXPECT_EQ(typed->code(), 0x80070005u);
  EXPECT_STREQ(copy->what(), source.what());
}

TEST(ExcClone, KeepsTheDynamicTypeAndThePathOfALockedFileException) {
  file_locked_exc_t source("C:\\x.log");
  exc_ptr_t copy = static_cast<const exc_base_t&>(source).clone();
  auto* typed = dynamic_cast<file_locked_exc_t*>(copy.get());
  ASSERT_NE(typed, nullptr);
  EXPECT_EQ(typeid(*copy), typeid(file_locked_exc_t));
  EXPECT_EQ(typed->path(), "C:\\x.log");
  EXPECT_STREQ(copy->what(), source.what());
}

TEST(ExcClone, OfTheBaseClassIsTheBaseClass) {
  exc_base_t source("base.");
  exc_ptr_t copy = source.clone();
  ASSERT_TRUE(copy);
  EXPECT_EQ(typeid(*copy), typeid(exc_base_t));
  EXPECT_STREQ(copy->what(), "base.");
}

TEST(ExcClone, MadeInAnotherThreadKeepsTheIdOfTheSourceThread) {
  runtime_exc_t source("cause.");
  exc_ptr_t copy;
  uint32_t cloning_thread = 0;
  std::thread worker([&] {
    cloning_thread = win::current_thread_id();
    copy = source.clone();
  });
  worker.join();
  ASSERT_TRUE(copy);
  ASSERT_NE(cloning_thread, source.thread_id());
  EXPECT_EQ(copy->thread_id(), source.thread_id());
}

TEST(ExcClone, IsIndependentOfItsSource) {
  runtime_exc_t source("cause.");
  exc_ptr_t copy = source.clone();
  copy->add_message("added to the copy only.");
  EXPECT_STREQ(source.what(), "cause.");
  EXPECT_STREQ(copy->what(), "cause.\nadded to the copy only.");
}

template <typename E>
void expect_throw_copy_keeps_type(const exc_base_t& source) {
  try {
    source.throw_copy();
  } catch (const E& e) {
    EXPECT_EQ(typeid(e), typeid(E));
    EXPECT_NE(static_cast<const void*>(&e), static_cast<const void*>(&source));
    EXPECT_STREQ(e.what(), source.what());
    EXPECT_EQ(e.thread_id(), source.thread_id());
    return;
  } catch (...) {
    ADD_FAILURE() << "throw_copy threw another type than " << typeid(E).name();
    return;
  }
}

TEST(ExcThrowCopy, ThrowsTheBaseClassAsItself) {
  exc_base_t e("base.");
  expect_throw_copy_keeps_type<exc_base_t>(e);
}

TEST(ExcThrowCopy, ThrowsARuntimeExceptionAsItsDynamicTypeWithItsCode) {
  runtime_exc_t e("cause.", 31);
  expect_throw_copy_keeps_type<runtime_exc_t>(e);
  try {
    static_cast<const exc_base_t&>(e).throw_copy();
  } catch (const runtime_exc_t& c) {
    EXPECT_EQ(c.code(), 31u);
  }
}

TEST(ExcThrowCopy, ThrowsASystemExceptionAsItsDynamicTypeWithItsCode) {
  win_sys_exc_t e("ctx.", 3);
  expect_throw_copy_keeps_type<win_sys_exc_t>(e);
  try {
    static_cast<const exc_base_t&>(e).throw_copy();
  } catch (const win_sys_exc_t& c) {
    EXPECT_EQ(c.code(), 3u);
  }
}

TEST(ExcThrowCopy, ThrowsAComExceptionAsItsDynamicTypeWithItsCode) {
  com_exc_t e(0x8000FFFFu, "ctx.");
  expect_throw_copy_keeps_type<com_exc_t>(e);
  try {
    static_cast<const exc_base_t&>(e).throw_copy();
  } catch (const com_exc_t& c) {
    EXPECT_EQ(c.code(), 0x8000FFFFu);
  }
}

TEST(ExcThrowCopy, ThrowsALockedFileExceptionAsItsDynamicTypeWithItsPath) {
  file_locked_exc_t e("C:\\y.log");
  expect_throw_copy_keeps_type<file_locked_exc_t>(e);
  try {
    static_cast<const exc_base_t&>(e).throw_copy();
  } catch (const file_locked_exc_t& c) {
    EXPECT_EQ(c.path(), "C:\\y.log");
  }
}

// ---- translate -----------------------------------------------------------------------------

class upper_translator_t : public exc::text_translator_t {
 public:
  std::string translate(const std::string& text) override {
    ++calls;
    std::string r = text;
    std::transform(r.begin(), r.end(), r.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return r;
  }
  int calls = 0;
};

TEST(ExcTranslate, ReplacesEveryLineAndRecomposesKeepingTheTraceMarks) {
  runtime_exc_t e("inner cause.", 4);
  e.add_trace("step name");
  e.add_message("outer context.");
  auto translator = std::make_shared<upper_translator_t>();

  e.translate(translator);

  EXPECT_EQ(translator->calls, 3);
  const std::vector<line_t> expected = {plain("INNER CAUSE."), trace("STEP NAME"),
                                        plain("OUTER CONTEXT.")};
  EXPECT_EQ(lines_of(e), expected);
  EXPECT_STREQ(e.what(), "INNER CAUSE.\n--tr:STEP NAME\nOUTER CONTEXT.");
  EXPECT_EQ(e.plain_text(), "INNER CAUSE.\nSTEP NAME\nOUTER CONTEXT.");
  EXPECT_EQ(e.code(), 4u);
}

// ---- binary form ---------------------------------------------------------------------------

struct saved_t {
  std::shared_ptr<byte_buffer_t> buffer;
  size_t end = 0;
};

saved_t save(const exc_base_t& e) {
  saved_t s;
  s.buffer = std::make_shared<byte_buffer_t>();
  byte_writer_t writer(s.buffer);
  e.save(writer);
  s.end = writer.position();
  return s;
}

// Loads into `target` and checks that the reader stopped exactly where the writer did.
void load(exc_base_t& target, const saved_t& s, size_t max_string = kMaxString) {
  CBufReader reader(max_string, s.buffer);
  target.load(reader);
  EXPECT_EQ(reader.position(), s.end);
}

void put_u32(byte_buffer_t& b, uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(static_cast<uint8_t>(v >> (8 * i)));
}

void put_text(byte_buffer_t& b, const std::string& s) {
  put_u32(b, static_cast<uint32_t>(s.size()));
  b.insert(b.end(), s.begin(), s.end());
}

exc::trace_info_t sample_trace_info() {
  exc::trace_info_t info;
  info.values = {{"host", "db01"}, {"sid", "ORCL"}};
  info.events = {{1, "started"}, {6, "finished"}};
  return info;
}

TEST(ExcBinaryForm, WritesTheChainValuesAndEventsInTheirLayout) {
  exc_base_t e("ab");
  e.add_trace("c");
  e.trace_info().values["k"] = "v";
  e.trace_info().events.push_back({3, "i"});

  const saved_t s = save(e);

  byte_buffer_t expected;
  put_u32(expected, 2);
  put_text(expected, "ab");
  expected.push_back(0);
  put_text(expected, "c");
  expected.push_back(1);
  put_u32(expected, 1);
  put_text(expected, "k");
  put_text(expected, "v");
  put_u32(expected, 1);
  put_u32(expected, 3);
  put_text(expected, "i");
  ASSERT_EQ(s.end, expected.size());
  EXPECT_EQ(byte_buffer_t(s.buffer->begin(), s.buffer->begin() + s.end), expected);
}

TEST(ExcBinaryForm, AppendsTheCodeBehindTheBaseFormForClassesWithACode) {
  runtime_exc_t e("x", 0x01020304u);
  const saved_t base = save(exc_base_t("x"));
  const saved_t s = save(e);
  ASSERT_EQ(s.end, base.end + 4);
  EXPECT_TRUE(std::equal(base.buffer->begin(), base.buffer->begin() + base.end,
                         s.buffer->begin()));
  const byte_buffer_t code = {0x04, 0x03, 0x02, 0x01};
  EXPECT_EQ(byte_buffer_t(s.buffer->begin() + base.end, s.buffer->begin() + s.end), code);
}

TEST(ExcBinaryForm, WritesNoPathForALockedFileException) {
  file_locked_exc_t e("C:\\locked.dat");
  exc_base_t same_chain("File [C:\\locked.dat] is locked.");
  const saved_t s = save(e);
  const saved_t base = save(same_chain);
  ASSERT_EQ(s.end, base.end);
  EXPECT_TRUE(std::equal(base.buffer->begin(), base.buffer->begin() + base.end,
                         s.buffer->begin()));
}

TEST(ExcBinaryForm, RoundTripsTheBaseClass) {
  exc_base_t source("first.");
  source.add_trace("second");
  source.trace_info() = sample_trace_info();
  exc_base_t target;
  load(target, save(source));
  EXPECT_STREQ(target.what(), source.what());
  EXPECT_EQ(target.plain_text(), source.plain_text());
  EXPECT_EQ(lines_of(target), lines_of(source));
  EXPECT_EQ(target.trace_info().values, source.trace_info().values);
  EXPECT_EQ(target.trace_info().events, source.trace_info().events);
}

TEST(ExcBinaryForm, RoundTripsARuntimeExceptionWithItsCode) {
  runtime_exc_t source("cause.", 0xFEDCBA98u);
  source.add_trace("step");
  source.add_message("context.");
  source.trace_info() = sample_trace_info();
  runtime_exc_t target;
  load(target, save(source));
  EXPECT_STREQ(target.what(), source.what());
  EXPECT_EQ(target.code(), source.code());
  EXPECT_EQ(target.trace_info().values, source.trace_info().values);
  EXPECT_EQ(target.trace_info().events, source.trace_info().events);
}

TEST(ExcBinaryForm, RoundTripsThroughTheBaseInterface) {
  runtime_exc_t source("cause.", 44);
  runtime_exc_t target;
  exc_base_t& as_base = target;
  const exc_base_t& source_as_base = source;
  load(as_base, save(source_as_base));
  EXPECT_STREQ(target.what(), "cause.");
  EXPECT_EQ(target.code(), 44u);
}

TEST(ExcBinaryForm, RoundTripsAComExceptionWithItsCode) {
  com_exc_t source(0x80070057u, "The parameter is wrong.");
  source.add_trace("step");
  com_exc_t target;
  load(target, save(source));
  EXPECT_STREQ(target.what(), source.what());
  EXPECT_EQ(lines_of(target), lines_of(source));
  EXPECT_EQ(target.code(), 0x80070057u);
}

TEST(ExcBinaryForm, RoundTripsASystemExceptionWithItsCode) {
  win_sys_exc_t source("Failed to open [%1].", "C:\\x", 5);
  source.trace_info() = sample_trace_info();
  // A system exception is never empty; its loaded lines follow its own.
  win_sys_exc_t target(2);
  const std::vector<line_t> own = lines_of(target);
  load(target, save(source));
  std::vector<line_t> expected = own;
  for (const auto& l : lines_of(source)) expected.push_back(l);
  EXPECT_EQ(lines_of(target), expected);
  EXPECT_EQ(target.code(), 5u);
  EXPECT_EQ(target.trace_info().values, source.trace_info().values);
  EXPECT_EQ(target.trace_info().events, source.trace_info().events);
}

TEST(ExcBinaryForm, KeepsTheMessageButLosesThePathOfALockedFileException) {
  file_locked_exc_t source("C:\\oracle\\redo01.log");
  file_locked_exc_t target;
  load(target, save(source));
  EXPECT_STREQ(target.what(), "File [C:\\oracle\\redo01.log] is locked.");
  EXPECT_EQ(target.path(), "");
}

TEST(ExcBinaryForm, LoadAppendsToTheChainAndReplacesTheTraceInfo) {
  runtime_exc_t source("loaded.", 1);
  source.add_trace("loaded trace");
  source.trace_info().values = {{"new", "1"}};
  source.trace_info().events = {{5, "new event"}};

  runtime_exc_t target("already here.");
  target.trace_info().values = {{"old", "x"}};
  target.trace_info().events = {{4, "old event"}};
  load(target, save(source));

  EXPECT_STREQ(target.what(), "already here.\nloaded.\n--tr:loaded trace");
  const std::map<std::string, std::string> values = {{"new", "1"}};
  EXPECT_EQ(target.trace_info().values, values);
  const std::vector<exc::trace_event_t> events = {{5, "new event"}};
  EXPECT_EQ(target.trace_info().events, events);
  EXPECT_EQ(target.code(), 1u);
}

TEST(ExcBinaryForm, RoundTripsAnEmptyChain) {
  runtime_exc_t source;
  runtime_exc_t target;
  load(target, save(source));
  EXPECT_STREQ(target.what(), "");
  EXPECT_TRUE(target.messages().empty());
}

TEST(ExcBinaryForm, DropsEventsZeroAndSevenWithAWarningAndGoesOnLoading) {
  dsl_test::capture_log_t log;
  auto buffer = std::make_shared<byte_buffer_t>();
  put_u32(*buffer, 1);
  put_text(*buffer, "message.");
  buffer->push_back(0);
  put_u32(*buffer, 1);
  put_text(*buffer, "key");
  put_text(*buffer, "value");
  put_u32(*buffer, 4);
  put_u32(*buffer, 0);
  put_text(*buffer, "zero");
  put_u32(*buffer, 1);
  put_text(*buffer, "one");
  put_u32(*buffer, 7);
  put_text(*buffer, "seven");
  put_u32(*buffer, 6);
  put_text(*buffer, "six");
  put_u32(*buffer, 99);  // code
  const size_t end = buffer->size();

  runtime_exc_t target;
  CBufReader reader(kMaxString, buffer);
  ASSERT_NO_THROW(target.load(reader));

  EXPECT_EQ(reader.position(), end);
  EXPECT_STREQ(target.what(), "message.");
  EXPECT_EQ(target.code(), 99u);
  const std::vector<exc::trace_event_t> kept = {{1, "one"}, {6, "six"}};
  EXPECT_EQ(target.trace_info().events, kept);
  EXPECT_EQ(target.trace_info().values.at("key"), "value");

  const auto bodies = log.bodies();
  auto has = [&](const std::string& line) {
    return std::find(bodies.begin(), bodies.end(), line) != bodies.end();
  };
  EXPECT_TRUE(has("WARN|Unexpected trace event: [0]. Info: zero."))
      << ::testing::PrintToString(bodies);
  EXPECT_TRUE(has("WARN|Unexpected trace event: [7]. Info: seven."))
      << ::testing::PrintToString(bodies);
}

TEST(ExcBinaryForm, RejectsABufferThatEndsBeforeTheCode) {
  runtime_exc_t source("cause.", 5);
  saved_t s = save(source);
  auto cut = std::make_shared<byte_buffer_t>(s.buffer->begin(), s.buffer->begin() + s.end - 2);
  runtime_exc_t target;
  CBufReader reader(kMaxString, cut);
  auto e = dsl_test::thrown<runtime_exc_t>([&] { target.load(reader); });
  ASSERT_TRUE(e);
  ASSERT_FALSE(e->messages().empty());
  EXPECT_EQ(e->messages()[0].text, "Out of the buffer, buffer size '" +
                                       std::to_string(s.end - 2) + "', struct size '4', " +
                                       "buffer pointer '" + std::to_string(s.end - 4) + "'.");
}

TEST(ExcBinaryForm, RejectsAnEmptyBuffer) {
  runtime_exc_t target;
  CBufReader reader(kMaxString, std::make_shared<byte_buffer_t>());
  auto e = dsl_test::thrown<runtime_exc_t>([&] { target.load(reader); });
  ASSERT_TRUE(e);
  ASSERT_FALSE(e->messages().empty());
  EXPECT_EQ(e->messages()[0].text,
            "Out of the buffer, buffer size '0', struct size '4', buffer pointer '0'.");
}

TEST(ExcBinaryForm, RejectsAMessageLongerThanTheReadersMaximum) {
  runtime_exc_t source("hello");
  runtime_exc_t target;
  const saved_t s = save(source);
  CBufReader reader(4, s.buffer);
  auto e = dsl_test::thrown<runtime_exc_t>([&] { target.load(reader); });
  ASSERT_TRUE(e);
  ASSERT_GE(e->messages().size(), 2u);
  EXPECT_EQ(lines_of(*e)[0], plain("Invalid length of the string '5'."));
  EXPECT_EQ(lines_of(*e)[1], trace("Failed to extract multi-byte string from buffer ."));
}

}  // namespace
