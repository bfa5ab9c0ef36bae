// The commands' calls: each turns its checked options into the arguments of one export,
// calls it and reports its answer through the session. Main thread only.
#pragma once

namespace host {

class session_t;
struct parsed_command_t;

int run_explore(session_t& session, const parsed_command_t& command);
int run_check_vss(session_t& session, const parsed_command_t& command);
int run_should_skip_writer(session_t& session, const parsed_command_t& command);
int run_gather_vss_info(session_t& session, const parsed_command_t& command);
int run_prepare(session_t& session, const parsed_command_t& command);
int run_finish(session_t& session, const parsed_command_t& command);
int run_backup_logs(session_t& session, const parsed_command_t& command);
int run_enum_logs(session_t& session, const parsed_command_t& command);
int run_remove_logs(session_t& session, const parsed_command_t& command);
int run_logs_folder(session_t& session, const parsed_command_t& command);
int run_delete_logs_by_time(session_t& session, const parsed_command_t& command);
int run_delete_logs_by_size(session_t& session, const parsed_command_t& command);
int run_restore_required(session_t& session, const parsed_command_t& command);
int run_restore(session_t& session, const parsed_command_t& command);
int run_test(session_t& session, const parsed_command_t& command);

}  // namespace host
