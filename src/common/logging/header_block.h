// The block at the top of each run of the log: which program runs the library (its path,
// version and comments), on which operating system, in which process. Written once by the
// start-up; each group of lines stands by itself, so a group that fails is reported on the
// blank format and the next one is still written.
#pragma once
#include <cstdint>
#include <string>

#include "common/logging/log_channel.h"

namespace logging {

constexpr size_t kHeaderRuleWidth = 77;

// Where the header's facts come from; the platform's own answers by default, other ones in
// tests. Each may throw a failure of the exc family.
class header_source_t {
 public:
  virtual ~header_source_t() = default;
  // The file of the host process (not of this library), UTF-8.
  virtual std::string module_path() const = 0;
  // The fixed file version of `module_path` as "a.b.c.d", and its Comments text (empty when
  // it has none).
  virtual std::string module_version(const std::string& module_path,
                                     std::string& comments) const = 0;
  virtual std::string os_version() const = 0;
  virtual uint32_t process_id() const = 0;
};

// The platform's answers.
const header_source_t& platform_header_source();

// Writes, as information lines of `channel`: an empty line, a rule of '=', "{", the groups one
// indent deeper, "}". Failures of a group go to `channel`'s log as errors on the blank format.
void write_header_block(const log_channel_t& channel,
                        const header_source_t& source = platform_header_source());

}  // namespace logging
