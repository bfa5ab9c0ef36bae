// A log of a test's own, with a capture receiver and a channel on it, so that a test neither
// sees nor disturbs the process-wide log.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "common/logging/log.h"
#include "common/logging/log_channel.h"
#include "support/capture_receiver.h"

namespace dsl_test {

struct private_log_t {
  explicit private_log_t(const std::string& channel_name = "")
      : receiver(std::make_shared<capture_receiver_t>()),
        log(std::make_shared<logging::log_t>(receiver)),
        channel(log, channel_name) {}

  std::vector<std::string> bodies() const { return receiver->bodies(); }
  std::vector<std::string> lines() const { return receiver->lines(); }
  std::vector<std::string> writes() const { return receiver->writes(); }

  std::shared_ptr<capture_receiver_t> receiver;
  std::shared_ptr<logging::log_t> log;
  logging::log_channel_t channel;
};

}  // namespace dsl_test
