// The statements other than queries, each given the machine under its lock, the session's
// instance and the tokens after the words that chose it. They raise Oracle's errors and
// change the instance in place; the caller saves the machine.
#pragma once
#include <map>
#include <string>

#include "machine.h"
#include "server.h"
#include "sql_parser.h"

namespace ocisim {

// ALTER DATABASE MOUNT | OPEN [READ ONLY | READ WRITE] | CLOSE [NORMAL | IMMEDIATE] |
// DISMOUNT | BEGIN BACKUP | END BACKUP | ARCHIVELOG | NOARCHIVELOG
void alter_database(machine_t& machine, node_t& instance, session_info_t& session,
                    token_reader_t& reader);

// ALTER PLUGGABLE DATABASE name OPEN [READ WRITE | READ ONLY] [RESTRICTED] [FORCE] |
// OPEN [READ WRITE] UPGRADE [RESTRICTED] | CLOSE [IMMEDIATE | ABORT]
void alter_pluggable_database(node_t& instance, session_info_t& session, token_reader_t& reader);

// Every plugged database of a container database as a start leaves it: MOUNTED, the seed READ
// ONLY, one with a saved state (attribute saved_state) in that mode.
void pdbs_after_startup(node_t& instance);

// ALTER SYSTEM ARCHIVE LOG CURRENT | ALL, ALTER SYSTEM SWITCH LOGFILE
void alter_system(machine_t& machine, node_t& instance, session_info_t& session,
                  token_reader_t& reader);

// CREATE [OR REPLACE] DIRECTORY name AS 'path', DROP DIRECTORY name
void create_directory(node_t& instance, session_info_t& session, token_reader_t& reader,
                      bool replace);
void drop_directory(node_t& instance, session_info_t& session, token_reader_t& reader);

// CREATE PFILE [= 'file'] FROM { SPFILE [= 'file'] | MEMORY }: writes the instance's parameters
// as a text parameter file; the machine itself does not change.
void create_pfile(machine_t& machine, node_t& instance, session_info_t& session,
                  token_reader_t& reader);

// An anonymous block of procedure calls: BEGIN name(args); ... END;
void run_block(machine_t& machine, node_t& instance, session_info_t& session,
               const std::string& sql, const std::map<std::string, value_t>& binds,
               std::map<std::string, value_t>& outputs);

// ORA-00933 unless the statement ends here.
void expect_end(token_reader_t& reader);

}  // namespace ocisim
