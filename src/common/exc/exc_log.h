// Writing a caught exception to a log channel. Warnings carry the text; errors add the line
// naming the thread where the exception arose. Never throws on account of the text.
#pragma once
#include <cstdint>
#include <exception>
#include <string>

#include "common/logging/log_channel.h"

namespace exc {

// "\nAn exception was thrown from thread [%1]." with the id of the thread where `e` arose, or
// "n/a" when `e` is not of the family or its id is unknown (0).
std::string thread_line(const std::exception& e);
std::string thread_line(uint32_t thread_id);

void log_warn(const logging::log_channel_t& channel, const std::exception& e);
void log_warn(const logging::log_channel_t& channel, const std::string& text,
              const std::exception& e);
void log_warn(const logging::log_channel_t& channel, const std::string& tmpl,
              const std::string& a1, const std::exception& e);
void log_warn(const logging::log_channel_t& channel, const std::string& tmpl,
              const std::string& a1, const std::string& a2, const std::exception& e);
void log_error(const logging::log_channel_t& channel, const std::exception& e);
void log_error(const logging::log_channel_t& channel, const std::string& text,
               const std::exception& e);
void log_error(const logging::log_channel_t& channel, const std::string& tmpl,
               const std::string& a1, const std::exception& e);

}  // namespace exc
