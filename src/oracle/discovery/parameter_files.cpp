#include "oracle/discovery/parameter_files.h"

#include <vector>

#include "common/exc/exc_base.h"
#include "common/exc/exc_log.h"
#include "common/exc/rethrow.h"
#include "common/logging/log_channel.h"
#include "common/logging/log_step.h"
#include "common/text/base64.h"
#include "common/text/convert.h"
#include "common/text/fmt.h"
#include "common/win/file.h"
#include "common/win/file_name_rule.h"
#include "common/win/path.h"
#include "common/win/path_ops.h"
#include "oracle/client/oracle_cmd_exec.h"
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/client/sql_text.h"
#include "oracle/client/unique_object_name.h"
#include "oracle/discovery/command_line.h"
#include "oracle/discovery/oracle_props.h"
#include "oracle/discovery/ora_sid_collector.h"
#include "oracle/discovery/oracle_sid.h"

namespace specific::oracle {

namespace {

constexpr char kPasswordFileMark[] = "Password file:";
constexpr size_t kPasswordFileMarkLength = sizeof kPasswordFileMark - 1;  // 14

bool is_blank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n' || c == u'\v' || c == u'\f';
}

std::u16string strip_blanks(const std::u16string& text) {
  size_t begin = 0;
  size_t end = text.size();
  while (begin < end && is_blank(text[begin])) ++begin;
  while (end > begin && is_blank(text[end - 1])) --end;
  return text.substr(begin, end - begin);
}

// <home>\<folders...>\srvctl.bat when that file exists, else "".
std::u16string srvctl_in(const std::u16string& home, std::initializer_list<const char16_t*> folders) {
  std::u16string path = home;
  for (const char16_t* folder : folders) path = win::join_path_windows(path, folder);
  path = win::join_path_windows(path, u"srvctl") + u".bat";
  return win::file_exists(path) ? path : std::u16string();
}

// The narrow text that SQL carries: the client's character set, from the file layer's UTF-8.
std::string sql_narrow(const std::string& utf8) { return util::to_multibyte(util::from_utf8(utf8)); }

void run_command(const std::shared_ptr<COracleSession>& session, const std::string& sql) {
  session->make_command(sql)->execute();
}

}  // namespace

// Raises nothing: it also serves the error record of an instance that could not be reached. A
// name whose existence cannot be told (the file layer has logged why) counts as absent.
std::u16string find_parameter_file(const SOracleSid& instance) {
  const std::u16string folder = win::join_path_windows(instance.home, u"database");
  for (const char16_t* pattern : {u"spfile%1.ora", u"init%1.ora"}) {
    try {
      // A SID that would make the name climb out of the folder names no file of this database.
      const std::u16string name = util::fmt_t::format(std::u16string(pattern), instance.sid);
      if (!win::is_safe_file_name(name)) continue;
      const std::u16string path = win::join_path_windows(folder, name);
      if (win::file_exists(path)) return path;
    } catch (const std::exception&) {
    }
  }
  return std::u16string();
}

std::u16string password_file_from_line(const std::string& line, bool& hit) {
  hit = line.find(kPasswordFileMark) != std::string::npos;
  if (!hit) return std::u16string();
  // The tool starts the line with the mark; the cut is made at its length wherever it stood.
  return strip_blanks(util::to_unicode(line.substr(kPasswordFileMarkLength)));
}

bool find_password_file_with_srvctl(const SOracleSid& instance, std::u16string& location) noexcept {
  try {
    location.clear();
    std::u16string tool = srvctl_in(instance.home, {u"bin"});
    if (tool.empty()) tool = srvctl_in(instance.home, {u"srvm", u"bin"});
    if (tool.empty()) return false;

    const std::u16string output = win::make_temp_file_path();
    for (const std::u16string& part : {tool, instance.sid, output}) {
      if (!is_plain_command_text(part)) {
        throw exc::runtime_exc_t(
            "The command line would carry a character that the command interpreter reads as its "
            "own: [%1]",
            util::to_multibyte(part));
      }
    }
    // Nothing is quoted: a home with a blank breaks the command, and the missing output is
    // then the only sign of it.
    const std::u16string command =
        util::fmt_t::format(u"%1 config database -db %2 > %3", tool, instance.sid, output);
    logging::oralib().info("Executing script: %1", util::to_multibyte(command));
    run_command_line(command);  // the exit code says nothing the output does not
    if (!win::file_exists(output)) return false;

    CFileRemover remover(util::to_utf8(output), nullptr);
    auto file = win::win_file_t::open_read(output);
    for (;;) {
      std::string line;
      bool readAny = false;
      char c = 0;
      while (file->read(&c, 1) == 1) {
        readAny = true;
        if (c == '\n') break;
        line += c;
      }
      if (!readAny) break;
      logging::oralib().info("%1", line);
      bool hit = false;
      const std::u16string found = password_file_from_line(line, hit);
      if (hit) {
        location = found;
        break;
      }
    }
    return !location.empty();
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to get password file ASM location", e);
  } catch (...) {
    logging::oralib().warn("Failed to get password file ASM location");
  }
  location.clear();
  return false;
}

std::u16string get_password_file_location(const COracleSessionHolder& holder,
                                          const SOracleSid& instance) noexcept {
  try {
    logging::log_step_t step(logging::oralib(), "Getting pwd file location");
    const std::shared_ptr<COracleSession> session = holder.get_session();
    if (!session->is_version_12_or_higher()) session->read_version();
    if (*session->is_version_12_or_higher()) {
      std::u16string location;
      if (find_password_file_with_srvctl(instance, location)) {
        logging::oralib().info("Found pwd file (ASM location): %1", util::to_multibyte(location));
        step.ok();
        return location;
      }
    }
    const std::u16string name = util::fmt_t::format(u"PWD%1.ora", instance.sid);
    const std::u16string path =
        win::join_path_windows(win::join_path_windows(instance.home, u"database"), name);
    std::u16string result;
    // A SID that would make the name climb out of the folder names no file of this database.
    if (win::is_safe_file_name(name) && win::file_exists(path)) {
      logging::oralib().info("Found pwd file: %1", util::to_multibyte(path));
      result = path;
    }
    step.ok();
    return result;
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to get password file location", e);
  } catch (...) {
    logging::oralib().warn("Failed to get password file location");
  }
  return std::u16string();
}

void get_pfile_content(const std::shared_ptr<COracleSession>& session, CDatabaseProps& props) {
  try {
    logging::log_step_t step(logging::oralib(), "Getting pfile content");
    const std::string path = util::to_utf8(win::make_temp_file_path());
    const std::string literal = sql::literal_text(sql_narrow(path));
    try {
      session->make_query()->run(util::fmt_t::format("create pfile='%1' from spfile", literal));
    } catch (const std::exception& e) {
      exc::log_warn(logging::oralib(), "Unable to create pfile from spfile", e);
    }
    CFileRemover remover(path, session);
    if (!win::file_exists(path)) {
      session->make_query()->run(util::fmt_t::format("create pfile='%1' from memory", literal));
    }
    {
      auto file = win::win_file_t::open_read(path);
      const uint64_t size = file->size();
      std::vector<uint8_t> bytes(static_cast<size_t>(size));
      size_t done = 0;
      while (done < bytes.size()) {
        const uint32_t got = file->read(bytes.data() + done, static_cast<uint32_t>(bytes.size() - done));
        if (got == 0) break;
        done += got;
      }
      bytes.resize(done);
      props.pfile = util::base64_encode(bytes);
    }  // closed before the remover ends
    step.ok();
  } catch (const std::exception& e) {
    exc::rethrow_with_trace("Failed to get pfile content", e);
  }
}

void remove_file_on_server(const std::shared_ptr<COracleSession>& session,
                           const std::string& path) {
  std::string dir, name;
  win::split_path(sql_narrow(path), dir, name);
  const std::string object = make_unique_object_name();
  run_command(session, util::fmt_t::format("CREATE DIRECTORY %1 AS '%2'", object,
                                           sql::literal_text(dir)));
  run_command(session, util::fmt_t::format("BEGIN\n UTL_FILE.FREMOVE('%1', '%2');\n END;", object,
                                           sql::literal_text(name)));
  run_command(session, util::fmt_t::format("DROP DIRECTORY %1", object));
}

CFileRemover::~CFileRemover() {
  try {
    if (!win::file_exists(path)) return;
    logging::log_step_t step(logging::oralib(), "Removing file: %1", path);
    try {
      win::remove_file(path);
      step.ok();
    } catch (const std::exception& e) {
      if (session) {
        logging::oralib().info("Removing file with oracle query");
        remove_file_on_server(session, path);
        step.ok();
      } else {
        const char* what = e.what();
        if (what != nullptr && *what != '\0') {
          logging::oralib().warn("Failed to delete file: %1. %2", path, what);
        } else {
          logging::oralib().warn("Failed to delete file");
        }
      }
    }
  } catch (const std::exception& e) {
    exc::log_warn(logging::oralib(), "Failed to destroy file remover", e);
  } catch (...) {
    try {
      logging::oralib().warn("Failed to destroy file remover");
    } catch (...) {
    }
  }
}

}  // namespace specific::oracle
