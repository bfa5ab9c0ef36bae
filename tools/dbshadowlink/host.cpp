#include "host.h"

#include <exception>
#include <memory>

#include "arguments.h"
#include "console_io.h"
#include "help.h"
#include "host_errors.h"
#include "library_api.h"
#include "library_loader.h"
#include "script.h"
#include "session.h"

namespace host {

namespace {

// Standard input can be read once: a script read from it, or a second file option naming it,
// would find it empty.
void check_standard_input_use(const invocation_t& invocation,
                              const std::vector<parsed_command_t>& commands) {
  int readers = invocation.script_path && *invocation.script_path == "-" ? 1 : 0;
  for (const auto& command : commands) {
    for (const auto& option : command.def->options) {
      if (option.kind == value_kind_t::file && command.has(option.name) &&
          command.text(option.name) == "-") {
        ++readers;
      }
    }
  }
  if (readers > 1) throw usage_error_t("standard input ('-') can be read only once per run");
}

std::unique_ptr<library_api_t> load_library(const invocation_t& invocation,
                                            const std::vector<parsed_command_t>& commands) {
  std::string error;
  std::string path;
  if (invocation.library_path) {
    path = *invocation.library_path;
  } else {
    path = library_loader_t::default_path(error);
    if (path.empty()) throw library_error_t(error);
  }
  std::unique_ptr<library_loader_t> library = library_loader_t::open(path, error);
  if (!library) throw library_error_t(error);
  auto api = std::make_unique<library_api_t>(std::move(library));
  // Every export the run needs is looked for before the library is started, so that a library
  // that lacks one is refused before it has done anything.
  std::vector<std::string_view> needed{"OracleVssInitLib", "OracleVssStopLib", "OracleLibStrFree"};
  for (const auto& command : commands) needed.push_back(command.def->export_name);
  api->check_exports(needed);
  return api;
}

int run_commands(const invocation_t& invocation, const std::vector<parsed_command_t>& commands) {
  std::unique_ptr<library_api_t> api = load_library(invocation, commands);
  session_t session(*api, invocation.log_name);
  const bool wrap = invocation.script_path || !commands.front().def->starts_library_itself;
  if (wrap) {
    const int started = session.start_library();
    if (started != exit_ok) return started;
  }
  int status = exit_ok;
  for (const auto& command : commands) {
    const int result = session.run(command);
    if (result == exit_ok) continue;
    if (status == exit_ok) status = result;
    if (!invocation.keep_going) break;
  }
  if (wrap) {
    const int stopped = session.stop_library();
    if (status == exit_ok) status = stopped;
  }
  return status;
}

}  // namespace

int host_main(const std::vector<std::string>& args) {
  init_console_io();
  try {
    const invocation_t invocation = parse_command_line(args);
    if (invocation.help) {
      write_stdout(invocation.help_command != nullptr ? command_help(*invocation.help_command)
                                                      : general_help());
      return exit_ok;
    }
    std::vector<parsed_command_t> commands;
    if (invocation.script_path) commands = load_script(*invocation.script_path);
    else commands.push_back(*invocation.command);
    check_standard_input_use(invocation, commands);
    return run_commands(invocation, commands);
  } catch (const usage_error_t& failure) {
    write_stderr(std::string("dbshadowlink: ") + failure.what() + "\n" + usage_hint());
    return exit_usage;
  } catch (const library_error_t& failure) {
    write_stderr(std::string("dbshadowlink: ") + failure.what() + "\n");
    return exit_failure;
  } catch (const std::exception& failure) {
    write_stderr(std::string("dbshadowlink: unexpected failure: ") + failure.what() + "\n");
    return exit_failure;
  }
}

}  // namespace host
