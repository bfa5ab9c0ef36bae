#include "commands.h"

#include "command_calls.h"

namespace host {

namespace {

constexpr option_def_t user_option{"--user", value_kind_t::text, false, "U",
                                    "database account; empty or absent: OS authentication"};
constexpr option_def_t password_option{"--password", value_kind_t::text, false, "P",
                                        "password of the database account"};
constexpr option_def_t home_option{"--home", value_kind_t::text, true, "H",
                                    "Oracle home of the instance"};
constexpr option_def_t sid_option{"--sid", value_kind_t::text, true, "S", "SID of the instance"};

std::vector<command_def_t> build_table() {
  return {
      {"explore", "OracleExploreInstances", "",
       {{"--collect", value_kind_t::flag, false, "",
         "gather archived logs and parameter files as well"},
        user_option,
        password_option,
        {"--config", value_kind_t::file, false, "FILE",
         "what the agent remembers of earlier backups (XML); absent: empty"}},
       "Print the explored document: every home, ASM instance and database.",
       run_explore, false},
      {"check-vss", "OracleCheckVssFunctionality", "", {},
       "Print true when Oracle's VSS writer may take part in snapshots on this machine.",
       run_check_vss, false},
      {"should-skip-writer", "OracleShouldSkipVssWriter", "SID", {},
       "Print true when a snapshot must leave out the Oracle VSS writer of SID.",
       run_should_skip_writer, false},
      {"gather-vss-info", "OracleGatherVssInfo", "", {}, "Print the OracleEntries document.",
       run_gather_vss_info, false},
      {"prepare", "OraclePrepareDbsForBackup", "",
       {{"--config", value_kind_t::file, false, "FILE",
         "the SIDs whose VSS writer is enabled (XML); absent: empty"},
        user_option,
        password_option,
        {"--os-user", value_kind_t::text, false, "U", "operating-system account"},
        {"--os-password", value_kind_t::text, false, "P",
         "password of the operating-system account"}},
       "Make each database ready for a snapshot; print the preparation document.", run_prepare,
       false},
      {"finish", "OracleFinishDbsBackup", "",
       {{"--document", value_kind_t::file, true, "FILE",
         "the preparation document that prepare printed"},
        user_option,
        password_option},
       "Undo what the preparation did.", run_finish, false},
      {"backup-logs", "OracleBackupLogs", "",
       {home_option,
        sid_option,
        {"--usn", value_kind_t::uint64, false, "N",
         "update sequence number recorded with each log; absent: empty"},
        {"--last-rec-id", value_kind_t::uint64, false, "N",
         "record id of the last log already taken; absent: all logs"},
        user_option,
        password_option},
       "Copy the archived logs into the logs folder; print their list.", run_backup_logs, false},
      {"enum-logs", "OracleEnumLogs", "", {},
       "Print the list of log copies waiting in the logs folder.", run_enum_logs, false},
      {"remove-logs", "OracleRemoveLogsInTemp", "",
       {{"--list", value_kind_t::file, true, "FILE",
         "an archived_logs list (XML), or a part of one"}},
       "Remove the log copies named by a list.", run_remove_logs, false},
      {"logs-folder", "OracleGetLogsFolder", "", {}, "Print the folder that holds the log copies.",
       run_logs_folder, false},
      {"delete-logs-by-time", "OracleDeleteLogsByTime", "",
       {home_option,
        sid_option,
        {"--minutes", value_kind_t::int32, true, "N",
         "age in minutes, signed 32-bit decimal"},
        user_option,
        password_option},
       "Have Oracle delete the archived logs that ended more than N minutes ago.",
       run_delete_logs_by_time, false},
      {"delete-logs-by-size", "OracleDeleteLogsBySize", "",
       {home_option,
        sid_option,
        {"--size", value_kind_t::uint64, true, "BYTES",
         "size in bytes, unsigned 64-bit decimal"},
        user_option,
        password_option},
       "Have Oracle delete the oldest archived logs until they hold at most BYTES.",
       run_delete_logs_by_size, false},
      {"restore-required", "OracleIsRestoreRequired", "", {},
       "Print true when this machine was restored from a snapshot taken by a backup.",
       run_restore_required, false},
      {"restore", "OracleDoRestore", "", {},
       "Bring the databases of the snapshot back into service.", run_restore, false},
      {"test", "OracleTest", "", {},
       "Walk every instance and print what it finds; the library starts and stops itself.",
       run_test, true},
  };
}

}  // namespace

const std::vector<command_def_t>& command_table() {
  static const std::vector<command_def_t> table = build_table();
  return table;
}

const command_def_t* find_command(std::string_view name) {
  for (const auto& command : command_table()) {
    if (command.name == name) return &command;
  }
  return nullptr;
}

const option_def_t* find_option(const command_def_t& command, std::string_view name) {
  for (const auto& option : command.options) {
    if (option.name == name) return &option;
  }
  return nullptr;
}

}  // namespace host
