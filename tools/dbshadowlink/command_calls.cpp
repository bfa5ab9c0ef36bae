#include "command_calls.h"

#include "arguments.h"
#include "host_errors.h"
#include "session.h"

namespace host {

namespace {

// The login pair that most exports take; empty user and password mean OS authentication.
struct login_t {
  explicit login_t(const parsed_command_t& command)
      : user(to_wide(command.text("--user"))), password(to_wide(command.text("--password"))) {}
  wide_string_t user;
  wide_string_t password;
};

int32_t int32_option(const parsed_command_t& command, std::string_view option) {
  int32_t value = 0;
  if (!parse_int32(command.text(option), value)) throw usage_error_t("bad number");
  return value;
}

uint64_t uint64_option(const parsed_command_t& command, std::string_view option) {
  uint64_t value = 0;
  if (!parse_uint64(command.text(option), value)) throw usage_error_t("bad number");
  return value;
}

}  // namespace

int run_explore(session_t& session, const parsed_command_t& command) {
  const wide_string_t config = to_wide(session.input_text(command, "--config"));
  const login_t login(command);
  const uint8_t collect = command.has("--collect") ? 1 : 0;
  out_text_t xml(session.api()), error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleExploreInstances)(
      collect, login.user.c_str(), login.password.c_str(), config.c_str(), xml.out(), error.out());
  return session.text_result(command, result, xml, error);
}

int run_check_vss(session_t& session, const parsed_command_t& command) {
  uint8_t ok = session_t::unwritten_boolean;
  out_text_t error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleCheckVssFunctionality)(&ok, error.out());
  return session.boolean_result(command, result, ok, error);
}

int run_should_skip_writer(session_t& session, const parsed_command_t& command) {
  const wide_string_t sid = to_wide(command.positional);
  uint8_t skip = session_t::unwritten_boolean;
  out_text_t error(session.api());
  const DSL_RESULT result =
      HOST_EXPORT(session.api(), OracleShouldSkipVssWriter)(sid.c_str(), &skip, error.out());
  return session.boolean_result(command, result, skip, error);
}

int run_gather_vss_info(session_t& session, const parsed_command_t& command) {
  out_text_t xml(session.api()), error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleGatherVssInfo)(
      /*reserved1=*/nullptr, /*reserved2=*/nullptr, xml.out(), error.out());
  return session.text_result(command, result, xml, error);
}

int run_prepare(session_t& session, const parsed_command_t& command) {
  const wide_string_t config = to_wide(session.input_text(command, "--config"));
  const login_t login(command);
  const wide_string_t os_user = to_wide(command.text("--os-user"));
  const wide_string_t os_password = to_wide(command.text("--os-password"));
  out_text_t xml(session.api()), error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OraclePrepareDbsForBackup)(
      config.c_str(), login.user.c_str(), login.password.c_str(), os_user.c_str(),
      os_password.c_str(), xml.out(), error.out());
  return session.text_result(command, result, xml, error);
}

int run_finish(session_t& session, const parsed_command_t& command) {
  const wide_string_t document = to_wide(session.input_text(command, "--document"));
  const login_t login(command);
  out_text_t error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleFinishDbsBackup)(
      document.c_str(), login.user.c_str(), login.password.c_str(), error.out());
  return session.plain_result(command, result, error);
}

int run_backup_logs(session_t& session, const parsed_command_t& command) {
  const wide_string_t home = to_wide(command.text("--home"));
  const wide_string_t sid = to_wide(command.text("--sid"));
  // Both numbers travel as text; an absent one is the empty text the export expects.
  const wide_string_t usn = to_wide(command.text("--usn"));
  const wide_string_t last_rec_id = to_wide(command.text("--last-rec-id"));
  const login_t login(command);
  out_text_t xml(session.api()), error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleBackupLogs)(
      home.c_str(), sid.c_str(), usn.c_str(), last_rec_id.c_str(), login.user.c_str(),
      login.password.c_str(), xml.out(), error.out());
  return session.text_result(command, result, xml, error);
}

int run_enum_logs(session_t& session, const parsed_command_t& command) {
  out_text_t xml(session.api()), error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleEnumLogs)(xml.out(), error.out());
  return session.text_result(command, result, xml, error);
}

int run_remove_logs(session_t& session, const parsed_command_t& command) {
  const wide_string_t list = to_wide(session.input_text(command, "--list"));
  out_text_t error(session.api());
  const DSL_RESULT result =
      HOST_EXPORT(session.api(), OracleRemoveLogsInTemp)(list.c_str(), error.out());
  return session.plain_result(command, result, error);
}

int run_logs_folder(session_t& session, const parsed_command_t& command) {
  out_text_t folder(session.api()), error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleGetLogsFolder)(folder.out(), error.out());
  return session.text_result(command, result, folder, error);
}

int run_delete_logs_by_time(session_t& session, const parsed_command_t& command) {
  const wide_string_t home = to_wide(command.text("--home"));
  const wide_string_t sid = to_wide(command.text("--sid"));
  const int32_t minutes = int32_option(command, "--minutes");
  const login_t login(command);
  out_text_t error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleDeleteLogsByTime)(
      home.c_str(), sid.c_str(), minutes, login.user.c_str(), login.password.c_str(), error.out());
  return session.plain_result(command, result, error);
}

int run_delete_logs_by_size(session_t& session, const parsed_command_t& command) {
  const wide_string_t home = to_wide(command.text("--home"));
  const wide_string_t sid = to_wide(command.text("--sid"));
  const uint64_t size = uint64_option(command, "--size");
  const login_t login(command);
  out_text_t error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleDeleteLogsBySize)(
      home.c_str(), sid.c_str(), size, login.user.c_str(), login.password.c_str(), error.out());
  return session.plain_result(command, result, error);
}

int run_restore_required(session_t& session, const parsed_command_t& command) {
  uint8_t required = session_t::unwritten_boolean;
  out_text_t error(session.api());
  const DSL_RESULT result =
      HOST_EXPORT(session.api(), OracleIsRestoreRequired)(&required, error.out());
  return session.boolean_result(command, result, required, error);
}

int run_restore(session_t& session, const parsed_command_t& command) {
  out_text_t error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleDoRestore)(error.out());
  return session.plain_result(command, result, error);
}

int run_test(session_t& session, const parsed_command_t& command) {
  const wide_string_t log_name = to_wide(session.log_name());
  out_text_t error(session.api());
  const DSL_RESULT result = HOST_EXPORT(session.api(), OracleTest)(
      /*reserved1=*/nullptr, /*reserved2=*/nullptr, log_name.c_str(), error.out());
  return session.plain_result(command, result, error);
}

}  // namespace host
