#include "common/logging/header_block.h"

#include "common/logging/log_file_blank.h"

namespace logging {

namespace {

// A failed group is told on the blank format of the channel's own log.
void report(const log_channel_t& channel, const std::exception& failure) noexcept {
  if (channel.log()) write_blank_error(*channel.log(), failure);
}

void write_module_group(const log_channel_t& channel, const header_source_t& source) {
  const std::string path = source.module_path();
  channel.info("Path to the executable module: %1", path);
  std::string comments;
  const std::string version = source.module_version(path, comments);
  channel.info("Module version: %1", version);
  if (!comments.empty()) channel.info("Comments: %1", comments);
}

}  // namespace

void write_header_block(const log_channel_t& channel, const header_source_t& source) {
  channel.info("");
  channel.info(std::string(kHeaderRuleWidth, '='));
  channel.info("{");
  const std::shared_ptr<log_t>& log = channel.log();
  if (log) log->indent_more();
  try {
    write_module_group(channel, source);
  } catch (const std::exception& failure) {
    report(channel, failure);
  }
  try {
    channel.info("OS version: %1", source.os_version());
  } catch (const std::exception& failure) {
    report(channel, failure);
  }
  try {
    channel.info("Process Id: %1", std::to_string(source.process_id()));
  } catch (const std::exception& failure) {
    report(channel, failure);
  }
  if (log) log->indent_less();
  channel.info("}");
}

}  // namespace logging
