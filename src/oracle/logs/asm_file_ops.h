// Files inside ASM reached through PL/SQL over an open session of the database instance:
// copying one out to a folder of the file system (the log backup) and telling whether one
// exists (the archived-log list of the explore). On the operation's thread.
#pragma once
#include <memory>
#include <string>

namespace specific::oracle {

class COracleSession;

// Copies `from` (an ASM path) to `to` through DBMS_FILE_TRANSFER.COPY_FILE and two directory
// objects made for the call. Throws "Failed to copy ASM file, from: [%1], to: [%2]" over the
// cause; a failure part-way leaves the directory objects made so far behind.
void copy_asm_file(const std::shared_ptr<COracleSession>& session, const std::string& from,
                   const std::string& to);

// True when DBMS_DISKGROUP.GETFILEATTR answers for `path`; false, with one log line, when it
// fails. Never throws.
bool asm_file_exists(const std::shared_ptr<COracleSession>& session,
                     const std::string& path) noexcept;

}  // namespace specific::oracle
