// The debug receiver: every message to the debugger's output, and as one UDP datagram when
// the machine's settings enable the side channel.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "common/logging/receiver_debug.h"
#include "log_files_env.h"

namespace {

using dsl_test::machine_settings_t;
using dsl_test::reg_value_t;
using logging::receiver::COutputDebugStringLog;

machine_settings_t::key_t nfs_key(const std::vector<reg_value_t>& values) {
  machine_settings_t::key_t key;
  key.path = "SOFTWARE\\TrelO\\Trelo NFS";
  key.values = values;
  return key;
}

bool ends_with(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

reg_value_t dword(const std::string& name, uint32_t value) { return {name, "", true, value}; }
reg_value_t text(const std::string& name, const std::string& value) {
  return {name, value, false, 0};
}

TEST(OutputDebugStringLog, StartsSilentWithTheDefaultCollector) {
  COutputDebugStringLog receiver;
  EXPECT_FALSE(receiver.ext_log_enabled());
  EXPECT_EQ(receiver.path(), "");
  EXPECT_EQ(receiver.eol(), "\n");
  EXPECT_EQ(receiver.size(), 0u);
  const unsigned char* address = reinterpret_cast<const unsigned char*>(&receiver.address().address);
  EXPECT_EQ(address[0], 127);
  EXPECT_EQ(address[1], 0);
  EXPECT_EQ(address[2], 0);
  EXPECT_EQ(address[3], 1);
  const unsigned char* port = reinterpret_cast<const unsigned char*>(&receiver.address().port);
  EXPECT_EQ(port[0] * 256 + port[1], 37183);
}

TEST(OutputDebugStringLog, SendsEachMessageAsOneDatagram) {
  dsl_test::test_folder_t folder;
  dsl_test::udp_receiver_t collector;
  ASSERT_TRUE(collector.bound());
  machine_settings_t machine({nfs_key({dword("ExtLogEnabled", 1), text("ExtLogHost", "127.0.0.1"),
                                       dword("ExtLogPort", collector.port())})});
  auto receiver = std::make_shared<COutputDebugStringLog>();
  auto log = std::make_shared<logging::log_t>(receiver);
  logging::log_channel_t channel(log, "dbg");
  dsl_test::debug_output_capture_t debug_output;
  channel.info("first");
  channel.warn("second\nspans two lines");
  EXPECT_TRUE(receiver->ext_log_enabled());

  std::string datagram;
  ASSERT_TRUE(collector.receive(datagram, 5000));
  EXPECT_EQ(datagram.substr(0, 1), "[");
  EXPECT_TRUE(ends_with(datagram, "> dbg| first\n")) << datagram;
  ASSERT_TRUE(collector.receive(datagram, 5000));
  EXPECT_NE(datagram.find("> dbg| WARN|second\n"), std::string::npos) << datagram;
  EXPECT_TRUE(ends_with(datagram, "> dbg| >>  |spans two lines\n")) << datagram;
  EXPECT_FALSE(collector.receive(datagram, 300)) << "one message, one datagram";

  const std::string shown = debug_output.take();
  EXPECT_NE(shown.find("> dbg| first\n"), std::string::npos) << shown;
  EXPECT_NE(shown.find("> dbg| >>  |spans two lines\n"), std::string::npos) << shown;
}

TEST(OutputDebugStringLog, TheDatagramIsTheTextExactly) {
  dsl_test::test_folder_t folder;
  dsl_test::udp_receiver_t collector;
  ASSERT_TRUE(collector.bound());
  machine_settings_t machine({nfs_key({dword("ExtLogEnabled", 7), text("ExtLogHost", "127.0.0.1"),
                                       dword("ExtLogPort", collector.port())})});
  COutputDebugStringLog receiver;
  dsl_test::debug_output_capture_t debug_output;
  receiver.write("raw text\r\nwith its own ends\n");
  std::string datagram;
  ASSERT_TRUE(collector.receive(datagram, 5000));
  EXPECT_EQ(datagram, "raw text\r\nwith its own ends\n");
  EXPECT_EQ(debug_output.take(), "raw text\r\nwith its own ends\n");
}

TEST(OutputDebugStringLog, WithoutThePortTheDefaultPortIsUsed) {
  dsl_test::test_folder_t folder;
  dsl_test::udp_receiver_t collector(logging::receiver::kExtLogDefaultPort);
  if (!collector.bound()) GTEST_SKIP() << "port 37183 on 127.0.0.1 is taken on this machine";
  machine_settings_t machine({nfs_key({dword("ExtLogEnabled", 1), text("ExtLogHost", "127.0.0.1")})});
  COutputDebugStringLog receiver;
  dsl_test::debug_output_capture_t debug_output;
  receiver.write("to the default port\n");
  std::string datagram;
  ASSERT_TRUE(collector.receive(datagram, 5000));
  EXPECT_EQ(datagram, "to the default port\n");
}

TEST(OutputDebugStringLog, WithoutTheHostTheDefaultHostIsUsed) {
  dsl_test::test_folder_t folder;
  dsl_test::udp_receiver_t collector;
  ASSERT_TRUE(collector.bound());
  machine_settings_t machine({nfs_key({dword("ExtLogEnabled", 1),
                                       dword("ExtLogPort", collector.port())})});
  COutputDebugStringLog receiver;
  dsl_test::debug_output_capture_t debug_output;
  receiver.write("to 127.0.0.1\n");
  std::string datagram;
  ASSERT_TRUE(collector.receive(datagram, 5000));
  EXPECT_EQ(datagram, "to 127.0.0.1\n");
}

TEST(OutputDebugStringLog, WithTheKeyMissingNothingIsSentButTheDebugOutputGoesOn) {
  dsl_test::test_folder_t folder;
  dsl_test::udp_receiver_t collector(logging::receiver::kExtLogDefaultPort);
  machine_settings_t machine({});
  COutputDebugStringLog receiver;
  dsl_test::debug_output_capture_t debug_output;
  receiver.write("only for the debugger\n");
  receiver.write("and again\n");
  EXPECT_FALSE(receiver.ext_log_enabled());
  std::string datagram;
  if (collector.bound()) {
    EXPECT_FALSE(collector.receive(datagram, 300));
  }
  EXPECT_EQ(debug_output.take(), "only for the debugger\nand again\n");
}

TEST(OutputDebugStringLog, ExtLogEnabledZeroKeepsTheChannelSilent) {
  dsl_test::test_folder_t folder;
  dsl_test::udp_receiver_t collector;
  ASSERT_TRUE(collector.bound());
  machine_settings_t machine({nfs_key({dword("ExtLogEnabled", 0), text("ExtLogHost", "127.0.0.1"),
                                       dword("ExtLogPort", collector.port())})});
  COutputDebugStringLog receiver;
  dsl_test::debug_output_capture_t debug_output;
  receiver.write("not sent\n");
  EXPECT_FALSE(receiver.ext_log_enabled());
  std::string datagram;
  EXPECT_FALSE(collector.receive(datagram, 300));
  EXPECT_EQ(debug_output.take(), "not sent\n");
}

TEST(OutputDebugStringLog, WithoutExtLogEnabledTheChannelIsSilent) {
  dsl_test::test_folder_t folder;
  dsl_test::udp_receiver_t collector;
  ASSERT_TRUE(collector.bound());
  machine_settings_t machine({nfs_key({text("ExtLogHost", "127.0.0.1"),
                                       dword("ExtLogPort", collector.port())})});
  COutputDebugStringLog receiver;
  dsl_test::debug_output_capture_t debug_output;
  receiver.write("not sent\n");
  EXPECT_FALSE(receiver.ext_log_enabled());
  std::string datagram;
  EXPECT_FALSE(collector.receive(datagram, 300));
  debug_output.take();
}

TEST(OutputDebugStringLog, TheSettingsAreReadOnceWhenTheSocketIsMade) {
  dsl_test::test_folder_t folder;
  dsl_test::udp_receiver_t collector;
  ASSERT_TRUE(collector.bound());
  COutputDebugStringLog receiver;
  dsl_test::debug_output_capture_t debug_output;
  {
    machine_settings_t machine({});
    receiver.write("before the settings\n");
  }
  machine_settings_t machine({nfs_key({dword("ExtLogEnabled", 1), text("ExtLogHost", "127.0.0.1"),
                                       dword("ExtLogPort", collector.port())})});
  receiver.write("after the settings\n");
  EXPECT_FALSE(receiver.ext_log_enabled());
  std::string datagram;
  EXPECT_FALSE(collector.receive(datagram, 300));
  debug_output.take();
}

TEST(DbgChannel, IsNamedDbgAndHasALogOfItsOwn) {
  const logging::log_channel_t& dbg = logging::receiver::dbg();
  ASSERT_NE(dbg.log(), nullptr);
  EXPECT_NE(dbg.log(), logging::log_t::instance());
  EXPECT_EQ(dbg.format()->prefix(), "dbg| ");
  EXPECT_NE(dynamic_cast<COutputDebugStringLog*>(dbg.log()->file().get()), nullptr);
}

TEST(DbgChannel, WritesToTheDebugOutput) {
  dsl_test::test_folder_t folder;
  machine_settings_t machine({});
  dsl_test::debug_output_capture_t debug_output;
  logging::receiver::dbg().info("for whoever watches");
  const std::string shown = debug_output.take();
  EXPECT_NE(shown.find("> dbg| for whoever watches\n"), std::string::npos) << shown;
}

}  // namespace

