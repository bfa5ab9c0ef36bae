// Adding a line to a caught exception and rethrowing it, and carrying an exception from the
// thread where it arose to another one.
#include "common/exc/rethrow.h"

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <typeinfo>

#include "common/win/thread_id.h"
#include "support/thrown.h"

namespace {

using dsl_test::lines_of;
using dsl_test::line_t;
using dsl_test::plain;
using dsl_test::trace;
using exc::exc_base_t;
using exc::exc_ptr_t;
using exc::file_locked_exc_t;
using exc::runtime_exc_t;
using exc::trace_info_t;
using exc::win_sys_exc_t;

// A foreign exception whose what() gives no text at all.
struct null_text_error_t : std::exception {
  const char* what() const noexcept override { return nullptr; }
};

// Throws `inner`, catches it as std::exception and hands it to `layer`, which must rethrow.
template <typename Inner, typename Layer>
void throw_through(const Inner& inner, Layer&& layer) {
  try {
    throw inner;
  } catch (const std::exception& caught) {
    layer(caught);
  }
}

// ---- members of the family -----------------------------------------------------------------

TEST(RethrowWithContext, AddsAPlainLineToAFamilyMemberAndKeepsItsClassAndCode) {
  auto e = dsl_test::thrown<runtime_exc_t>([] {
    throw_through(runtime_exc_t("inner cause.", 9), [](const std::exception& caught) {
      exc::rethrow_with_context("The backup failed.", caught);
    });
  });
  ASSERT_TRUE(e);
  const std::vector<line_t> expected = {plain("inner cause."), plain("The backup failed.")};
  EXPECT_EQ(lines_of(*e), expected);
  EXPECT_STREQ(e->what(), "inner cause.\nThe backup failed.");
  EXPECT_EQ(e->code(), 9u);
}

TEST(RethrowWithContext, RethrowsTheVeryObjectItAddedTheLineTo) {
  const void* inner_address = nullptr;
  const void* outer_address = nullptr;
  try {
    try {
      throw runtime_exc_t("inner.");
    } catch (const std::exception& caught) {
      inner_address = dynamic_cast<const void*>(&caught);
      exc::rethrow_with_context("outer.", caught);
    }
  } catch (const runtime_exc_t& e) {
    outer_address = dynamic_cast<const void*>(&e);
    EXPECT_STREQ(e.what(), "inner.\nouter.");
  }
  EXPECT_NE(inner_address, nullptr);
  EXPECT_EQ(outer_address, inner_address);
}

TEST(RethrowWithContext, KeepsTheClassOfALockedFileExceptionSoThatItsCatchStillMatches) {
  bool caught_as_locked = false;
  try {
    throw_through(file_locked_exc_t("C:\\logs\\a.log"), [](const std::exception& caught) {
      exc::rethrow_with_context("Failed to rotate the log.", caught);
    });
  } catch (const file_locked_exc_t& e) {
    caught_as_locked = true;
    EXPECT_EQ(typeid(e), typeid(file_locked_exc_t));
    EXPECT_EQ(e.path(), "C:\\logs\\a.log");
    EXPECT_STREQ(e.what(), "File [C:\\logs\\a.log] is locked.\nFailed to rotate the log.");
  } catch (...) {
  }
  EXPECT_TRUE(caught_as_locked);
}

TEST(RethrowWithContext, KeepsTheClassAndCodeOfASystemException) {
  auto e = dsl_test::thrown<win_sys_exc_t>([] {
    throw_through(win_sys_exc_t("Opening the key.", 5), [](const std::exception& caught) {
      exc::rethrow_with_context("Reading the homes failed.", caught);
    });
  });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), 5u);
  ASSERT_EQ(e->messages().size(), 4u);
  EXPECT_EQ(lines_of(*e)[2], trace("Error code: 0x00000005"));
  EXPECT_EQ(lines_of(*e)[3], plain("Reading the homes failed."));
}

TEST(RethrowWithContext, KeepsTheIdOfTheThreadWhereTheExceptionArose) {
  std::optional<runtime_exc_t> made;
  uint32_t worker_id = 0;
  std::thread worker([&] {
    worker_id = win::current_thread_id();
    made.emplace("arose in the worker.");
  });
  worker.join();
  ASSERT_TRUE(made);
  ASSERT_NE(worker_id, win::current_thread_id());

  auto e = dsl_test::thrown<runtime_exc_t>([&] {
    throw_through(*made, [](const std::exception& caught) {
      exc::rethrow_with_context("context.", caught);
    });
  });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->thread_id(), worker_id);
}

TEST(RethrowWithContext, MergesTheGivenTraceInfo) {
  runtime_exc_t inner("inner.");
  inner.trace_info().values = {{"a", "1"}, {"b", "2"}};
  inner.trace_info().events = {{1, "x"}};
  trace_info_t added;
  added.values = {{"b", "3"}, {"c", "4"}};
  added.events = {{2, "y"}};

  auto e = dsl_test::thrown<runtime_exc_t>([&] {
    throw_through(inner, [&](const std::exception& caught) {
      exc::rethrow_with_context("outer.", caught, added);
    });
  });
  ASSERT_TRUE(e);
  const std::map<std::string, std::string> values = {{"a", "1"}, {"b", "3"}, {"c", "4"}};
  EXPECT_EQ(e->trace_info().values, values);
  const std::vector<exc::trace_event_t> events = {{1, "x"}, {2, "y"}};
  EXPECT_EQ(e->trace_info().events, events);
}

TEST(RethrowWithTrace, AddsAMarkedTraceLine) {
  auto e = dsl_test::thrown<runtime_exc_t>([] {
    throw_through(runtime_exc_t("inner."), [](const std::exception& caught) {
      exc::rethrow_with_trace("OCIStmtExecute", caught);
    });
  });
  ASSERT_TRUE(e);
  const std::vector<line_t> expected = {plain("inner."), trace("OCIStmtExecute")};
  EXPECT_EQ(lines_of(*e), expected);
  EXPECT_STREQ(e->what(), "inner.\n--tr:OCIStmtExecute");
  EXPECT_EQ(e->plain_text(), "inner.\nOCIStmtExecute");
}

TEST(RethrowWithTrace, FormatsATemplateWithOneArgument) {
  auto e = dsl_test::thrown<runtime_exc_t>([] {
    throw_through(runtime_exc_t("inner."), [](const std::exception& caught) {
      exc::rethrow_with_trace("Reading [%1]", "C:\\x.ora", caught);
    });
  });
  ASSERT_TRUE(e);
  EXPECT_EQ(lines_of(*e).back(), trace("Reading [C:\\x.ora]"));
}

TEST(RethrowWithTrace, FormatsATemplateWithTwoArguments) {
  auto e = dsl_test::thrown<runtime_exc_t>([] {
    throw_through(runtime_exc_t("inner."), [](const std::exception& caught) {
      exc::rethrow_with_trace("Copy [%2] <- [%1]", "a", "b", caught);
    });
  });
  ASSERT_TRUE(e);
  EXPECT_EQ(lines_of(*e).back(), trace("Copy [b] <- [a]"));
  EXPECT_EQ(e->messages().size(), 2u);
}

TEST(RethrowWithTrace, MergesTheGivenTraceInfo) {
  trace_info_t added;
  added.values = {{"k", "v"}};
  added.events = {{3, "e"}};
  auto e = dsl_test::thrown<runtime_exc_t>([&] {
    throw_through(runtime_exc_t("inner."), [&](const std::exception& caught) {
      exc::rethrow_with_trace("step", caught, added);
    });
  });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->trace_info().values, added.values);
  EXPECT_EQ(e->trace_info().events, added.events);
}

// ---- foreign exceptions --------------------------------------------------------------------

TEST(RethrowWithContext, ReplacesAForeignExceptionByARuntimeExceptionWithItsText) {
  bool caught_as_runtime = false;
  try {
    throw_through(std::runtime_error("boom"), [](const std::exception& caught) {
      exc::rethrow_with_context("context.", caught);
    });
  } catch (const runtime_exc_t& e) {
    caught_as_runtime = true;
    EXPECT_EQ(typeid(e), typeid(runtime_exc_t));
    const std::vector<line_t> expected = {plain("boom"), plain("context.")};
    EXPECT_EQ(lines_of(e), expected);
    EXPECT_EQ(e.code(), 0u);
    EXPECT_EQ(e.thread_id(), win::current_thread_id());
  } catch (...) {
  }
  EXPECT_TRUE(caught_as_runtime);
}

TEST(RethrowWithContext, TurnsAForeignExceptionWithAnEmptyTextIntoAnEmptyFirstLine) {
  auto e = dsl_test::thrown<runtime_exc_t>([] {
    throw_through(std::runtime_error(""), [](const std::exception& caught) {
      exc::rethrow_with_context("context.", caught);
    });
  });
  ASSERT_TRUE(e);
  const std::vector<line_t> expected = {plain(""), plain("context.")};
  EXPECT_EQ(lines_of(*e), expected);
  EXPECT_STREQ(e->what(), "\ncontext.");
}

TEST(RethrowWithContext, TurnsAForeignExceptionWithANullTextIntoAnEmptyFirstLine) {
  auto e = dsl_test::thrown<runtime_exc_t>([] {
    throw_through(null_text_error_t(), [](const std::exception& caught) {
      exc::rethrow_with_context("context.", caught);
    });
  });
  ASSERT_TRUE(e);
  const std::vector<line_t> expected = {plain(""), plain("context.")};
  EXPECT_EQ(lines_of(*e), expected);
  EXPECT_STREQ(e->what(), "\ncontext.");
}

TEST(RethrowWithContext, TurnsASystemErrorIntoARuntimeExceptionWithItsCode) {
  const std::system_error foreign(std::error_code(5, std::system_category()), "opening");
  const std::string foreign_text = foreign.what();
  auto e = dsl_test::thrown<runtime_exc_t>([&] {
    throw_through(foreign, [](const std::exception& caught) {
      exc::rethrow_with_context("Reading the parameter file failed.", caught);
    });
  });
  ASSERT_TRUE(e);
  EXPECT_EQ(typeid(*e), typeid(runtime_exc_t));
  EXPECT_EQ(e->code(), 5u);
  const std::vector<line_t> expected = {plain(foreign_text),
                                        plain("Reading the parameter file failed.")};
  EXPECT_EQ(lines_of(*e), expected);
}

TEST(RethrowWithTrace, TurnsASystemErrorIntoARuntimeExceptionWithItsCode) {
  const std::system_error foreign(std::error_code(32, std::system_category()), "locked");
  auto e = dsl_test::thrown<runtime_exc_t>([&] {
    throw_through(foreign, [](const std::exception& caught) {
      exc::rethrow_with_trace("step", caught);
    });
  });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->code(), 32u);
  EXPECT_EQ(lines_of(*e).back(), trace("step"));
}

TEST(RethrowWithTrace, ReplacesAForeignExceptionAndMarksTheAddedLine) {
  auto e = dsl_test::thrown<runtime_exc_t>([] {
    throw_through(std::logic_error("bad state"), [](const std::exception& caught) {
      exc::rethrow_with_trace("Reading [%1]", "spfile", caught);
    });
  });
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), "bad state\n--tr:Reading [spfile]");
  EXPECT_EQ(e->code(), 0u);
}

TEST(RethrowWithContext, MergesTraceInfoIntoTheReplacementOfAForeignException) {
  trace_info_t added;
  added.values = {{"k", "v"}};
  added.events = {{6, "e"}};
  auto e = dsl_test::thrown<runtime_exc_t>([&] {
    throw_through(std::runtime_error("boom"), [&](const std::exception& caught) {
      exc::rethrow_with_context("context.", caught, added);
    });
  });
  ASSERT_TRUE(e);
  EXPECT_EQ(e->trace_info().values, added.values);
  EXPECT_EQ(e->trace_info().events, added.events);
}

// ---- capture and crossing threads ----------------------------------------------------------

TEST(Capture, OfAFamilyMemberIsACloneOfItsDynamicType) {
  file_locked_exc_t source("C:\\a.dbf");
  const std::exception& as_std = source;
  exc_ptr_t captured = exc::capture(as_std);
  ASSERT_TRUE(captured);
  EXPECT_NE(static_cast<const void*>(captured.get()), static_cast<const void*>(&source));
  auto* typed = dynamic_cast<file_locked_exc_t*>(captured.get());
  ASSERT_NE(typed, nullptr);
  EXPECT_EQ(typed->path(), "C:\\a.dbf");
  EXPECT_STREQ(captured->what(), source.what());
  EXPECT_EQ(captured->thread_id(), source.thread_id());
}

TEST(Capture, KeepsTheTraceInfoOfAFamilyMember) {
  runtime_exc_t source("cause.", 3);
  source.trace_info().values = {{"k", "v"}};
  source.trace_info().events = {{2, "e"}};
  exc_ptr_t captured = exc::capture(source);
  ASSERT_TRUE(captured);
  EXPECT_EQ(captured->trace_info().values, source.trace_info().values);
  EXPECT_EQ(captured->trace_info().events, source.trace_info().events);
}

TEST(Capture, OfAForeignExceptionIsARuntimeExceptionWithItsTextAndCodeZero) {
  const std::runtime_error source("foreign failure");
  exc_ptr_t captured = exc::capture(source);
  ASSERT_TRUE(captured);
  auto* typed = dynamic_cast<runtime_exc_t*>(captured.get());
  ASSERT_NE(typed, nullptr);
  EXPECT_EQ(typeid(*captured), typeid(runtime_exc_t));
  const std::vector<line_t> expected = {plain("foreign failure")};
  EXPECT_EQ(lines_of(*captured), expected);
  EXPECT_EQ(typed->code(), 0u);
}

TEST(Capture, OfASystemErrorKeepsItsTextButNotItsCode) {
  const std::system_error source(std::error_code(5, std::system_category()), "x");
  exc_ptr_t captured = exc::capture(source);
  auto* typed = dynamic_cast<runtime_exc_t*>(captured.get());
  ASSERT_NE(typed, nullptr);
  EXPECT_STREQ(captured->what(), source.what());
  EXPECT_EQ(typed->code(), 0u);
}

TEST(Capture, ThenThrowCopyInAnotherThreadKeepsTypeCodeAndTheOriginThreadId) {
  exc_ptr_t captured;
  uint32_t worker_id = 0;
  std::thread worker([&] {
    worker_id = win::current_thread_id();
    try {
      throw exc::win_sys_exc_t("Logon to the instance failed.", 1326);
    } catch (const std::exception& e) {
      captured = exc::capture(e);
    }
  });
  worker.join();
  ASSERT_TRUE(captured);
  ASSERT_NE(worker_id, win::current_thread_id());

  bool caught = false;
  try {
    captured->throw_copy();
  } catch (const win_sys_exc_t& e) {
    caught = true;
    EXPECT_EQ(typeid(e), typeid(win_sys_exc_t));
    EXPECT_EQ(e.code(), 1326u);
    EXPECT_EQ(e.thread_id(), worker_id);
    EXPECT_STREQ(e.what(), captured->what());
    ASSERT_EQ(e.messages().size(), 3u);
    EXPECT_EQ(e.messages()[1].text, "Logon to the instance failed.");
  } catch (...) {
  }
  EXPECT_TRUE(caught);
}

TEST(Capture, ThenThrowCopyInAnotherThreadKeepsALockedFileException) {
  exc_ptr_t captured;
  uint32_t worker_id = 0;
  std::thread worker([&] {
    worker_id = win::current_thread_id();
    try {
      throw file_locked_exc_t("C:\\x.arc");
    } catch (const std::exception& e) {
      captured = exc::capture(e);
    }
  });
  worker.join();
  ASSERT_TRUE(captured);

  bool caught = false;
  try {
    captured->throw_copy();
  } catch (const file_locked_exc_t& e) {
    caught = true;
    EXPECT_EQ(e.path(), "C:\\x.arc");
    EXPECT_EQ(e.thread_id(), worker_id);
  } catch (...) {
  }
  EXPECT_TRUE(caught);
}

TEST(Capture, OfAForeignExceptionInAWorkerNamesTheWorkerThread) {
  exc_ptr_t captured;
  uint32_t worker_id = 0;
  std::thread worker([&] {
    worker_id = win::current_thread_id();
    try {
      throw std::runtime_error("worker failed");
    } catch (const std::exception& e) {
      captured = exc::capture(e);
    }
  });
  worker.join();
  ASSERT_TRUE(captured);
  auto e = dsl_test::thrown<runtime_exc_t>([&] { captured->throw_copy(); });
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), "worker failed");
  EXPECT_EQ(e->thread_id(), worker_id);
  EXPECT_EQ(e->code(), 0u);
}

TEST(Capture, ThenRethrowWithContextInTheReceivingThreadKeepsTheOrigin) {
  exc_ptr_t captured;
  uint32_t worker_id = 0;
  std::thread worker([&] {
    worker_id = win::current_thread_id();
    captured = exc::capture(runtime_exc_t("worker cause.", 17));
  });
  worker.join();
  ASSERT_TRUE(captured);

  auto e = dsl_test::thrown<runtime_exc_t>([&] {
    try {
      captured->throw_copy();
    } catch (const std::exception& caught) {
      exc::rethrow_with_context("The session could not be created.", caught);
    }
  });
  ASSERT_TRUE(e);
  EXPECT_STREQ(e->what(), "worker cause.\nThe session could not be created.");
  EXPECT_EQ(e->code(), 17u);
  EXPECT_EQ(e->thread_id(), worker_id);
  // The captured original is a separate object and stays as it was.
  EXPECT_STREQ(captured->what(), "worker cause.");
}

}  // namespace
