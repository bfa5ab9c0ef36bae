// The password file and the parameter file of a database, found or captured during the
// collection of its properties. Both work with temporary files below the library's Tmp folder;
// a file this process cannot delete is removed by the Oracle server instead (CFileRemover).
// On the operation's thread, over the session of the instance being collected.
#pragma once
#include <memory>
#include <string>

namespace specific::oracle {

class COracleSession;
class COracleSessionHolder;
class CDatabaseProps;
struct SOracleSid;

// Where the password file of `instance` is: on 12c and later first what `srvctl config
// database` reports ("Found pwd file (ASM location): %1"), then <home>\database\PWD<SID>.ora
// when that file exists ("Found pwd file: %1"), else "". Never throws: a failure is logged as
// "Failed to get password file location" and gives "".
std::u16string get_password_file_location(const COracleSessionHolder& holder,
                                          const SOracleSid& instance) noexcept;

// Asks srvctl (<home>\bin\srvctl.bat, else <home>\srvm\bin\srvctl.bat) for the password file.
// True with `location` set when its output names one. The host build looks for the same name,
// which is a shell script there (docs/ocisim.md). A home, SID or temporary path holding a
// character the command interpreter reads as its own is refused, never run. Never throws: a failure is logged as
// "Failed to get password file ASM location" and answers false.
bool find_password_file_with_srvctl(const SOracleSid& instance, std::u16string& location) noexcept;

// The location named by one line of srvctl's output: `hit` tells whether the line holds
// "Password file:"; the location is then the line from its 15th character on, converted to
// wide text and stripped of white space at both ends. Pure.
std::u16string password_file_from_line(const std::string& line, bool& hit);

// Fills props.pfile with the base64 text of the parameter file: written by the server from its
// spfile, or from memory when that fails. Throws "Failed to get pfile content" over the cause.
void get_pfile_content(const std::shared_ptr<COracleSession>& session, CDatabaseProps& props);

// Deletes a temporary file at the end of its scope, never throwing. When this process may not
// delete it and a session is at hand, the server deletes it through UTL_FILE.FREMOVE and a
// directory object made for the purpose.
class CFileRemover {
 public:
  CFileRemover(std::string path, std::shared_ptr<COracleSession> session)
      : path(std::move(path)), session(std::move(session)) {}
  ~CFileRemover();
  CFileRemover(const CFileRemover&) = delete;
  CFileRemover& operator=(const CFileRemover&) = delete;

 private:
  std::string path;  // UTF-8, as the file layer takes it
  std::shared_ptr<COracleSession> session;
};

// The server-side removal: CREATE DIRECTORY for the folder of `path`, UTL_FILE.FREMOVE of its
// name, DROP DIRECTORY. A failing statement leaves the rest unrun (a directory object may stay
// behind) and rises. `path` is UTF-8.
void remove_file_on_server(const std::shared_ptr<COracleSession>& session,
                           const std::string& path);

}  // namespace specific::oracle
