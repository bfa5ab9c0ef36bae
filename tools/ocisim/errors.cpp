#include "errors.h"

#include <cstdio>
#include <map>

namespace ocisim {

namespace {

// Oracle's wording of the messages the simulated server raises. Lines that Oracle prints as a
// prefix of another error (PLS-, and the ORA-06550 position line) are built by their callers.
const std::map<int, const char*>& catalog() {
  static const std::map<int, const char*> messages = {
      {258, "manual archiving in NOARCHIVELOG mode must identify log"},
      {600, "internal error code, arguments: [%s], [%s], [%s]"},
      {900, "invalid SQL statement"},
      {902, "invalid datatype"},
      {903, "invalid table name"},
      {904, "%s: invalid identifier"},
      {905, "missing keyword"},
      {906, "missing left parenthesis"},
      {907, "missing right parenthesis"},
      {908, "missing NULL keyword"},
      {909, "invalid number of arguments"},
      {911, "invalid character"},
      {913, "too many values"},
      {918, "column ambiguously defined"},
      {920, "invalid relational operator"},
      {922, "missing or invalid option"},
      {923, "FROM keyword not found where expected"},
      {924, "missing BY keyword"},
      {932, "inconsistent datatypes: expected %s got %s"},
      {933, "SQL command not properly ended"},
      {934, "group function is not allowed here"},
      {936, "missing expression"},
      {937, "not a single-group group function"},
      {938, "not enough arguments for function"},
      {939, "too many arguments for function"},
      {942, "table or view does not exist"},
      {955, "name is already used by an existing object"},
      {1002, "fetch out of sequence"},
      {1005, "null password given; logon denied"},
      {1007, "variable not in select list"},
      {1008, "not all variables bound"},
      {1012, "not logged on"},
      {1017, "invalid username/password; logon denied"},
      {1031, "insufficient privileges"},
      {1033, "ORACLE initialization or shutdown in progress"},
      {1034, "ORACLE not available"},
      {1036, "illegal variable name/number"},
      {1081, "cannot start already-running ORACLE - shut it down first"},
      {1090, "shutdown in progress - connection is not permitted"},
      {1100, "database already mounted"},
      {1106, "database must be closed before dismounting"},
      {1109, "database not open"},
      {1110, "data file %s: '%s'"},
      {1123, "cannot start online backup; media recovery not enabled"},
      {1126, "database must be mounted in this instance and not open in any instance"},
      {1142, "cannot end online backup - none of the files are in backup"},
      {1146, "cannot start online backup - file %s is already in backup"},
      {1149, "cannot shutdown - file %s has online backup set"},
      {1154, "database busy. Open, close, mount, and dismount not allowed now"},
      {1219, "database or pluggable database not open: queries allowed on fixed tables or views only"},
      {1405, "fetched column value is NULL"},
      {1406, "fetched column value was truncated"},
      {1424, "missing or illegal character following the escape character"},
      {1425, "escape character must be character string of length 1"},
      {1427, "single-row subquery returns more than one row"},
      {1455, "converting column overflows integer datatype"},
      {1476, "divisor is equal to zero"},
      {1507, "database not mounted"},
      {1531, "a database already open by the instance"},
      {1722, "invalid number"},
      {1740, "missing double quote in identifier"},
      {1741, "illegal zero-length identifier"},
      {1756, "quoted string not properly terminated"},
      {1780, "string literal required"},
      {1785, "ORDER BY item must be the number of a SELECT-list expression"},
      {1821, "date format not recognized"},
      {1841, "(full) year must be between -4713 and +9999, and not be 0"},
      {1858, "a non-numeric character was found where a numeric was expected"},
      {2003, "invalid USERENV parameter"},
      {3113, "end-of-file on communication channel"},
      {3114, "not connected to ORACLE"},
      {3115, "unsupported network datatype or representation"},
      {4043, "object %s does not exist"},
      {6502, "PL/SQL: numeric or value error"},
      {6512, "at \"%s\", line %s"},
      {6550, "line %s, column %s:"},
      {10873, "file %s needs to be either taken out of backup mode or media recovered"},
      {12154, "TNS:could not resolve the connect identifier specified"},
      {12560, "TNS:protocol adapter error"},
      {25716, "The identifier contains a double quotation mark (\") character"},
      {15046, "ASM file name '%s' is not in single-file creation form"},
      {15056, "additional error message"},
      {15173, "entry '%s' does not exist in directory '%s'"},
      {16038, "log %s sequence# %s cannot be archived"},
      {1565, "error in identifying file '%s'"},
      {16196, "database has been previously opened and closed"},
      {19504, "failed to create file \"%s\""},
      {19505, "failed to identify file \"%s\""},
      {19571, "%s recid %s stamp %s not found in control file"},
      {22285, "non-existent directory or file for %s operation"},
      {24300, "bad value for mode"},
      {24309, "already connected to a server"},
      {24313, "user already authenticated"},
      {24315, "illegal attribute type"},
      {24333, "zero iteration count"},
      {24337, "statement handle not prepared"},
      {24338, "statement handle not executed"},
      {24374, "define not done before fetch or execute and fetch"},
      {27037, "unable to obtain file status"},
      {27038, "created file already exists"},
      {27040, "file create error, unable to create file"},
      {27041, "unable to open file"},
      {27046, "file size is not a multiple of logical block size"},
      {27056, "could not delete file"},
      {27101, "shared memory realm does not exist"},
      {28000, "The account is locked."},
      {28002, "the password will expire within %s days"},
      {28009, "connection as SYS should be as SYSDBA or SYSOPER"},
      {29280, "invalid directory path"},
      {29283, "invalid file operation"},
      {29291, "file remove operation failed"},
      {65011, "Pluggable database %s does not exist."},
      {65019, "pluggable database %s already open"},
      {65020, "pluggable database %s already closed"},
      {65103, "UPGRADE cannot be specified for PDBs being open in READ ONLY mode"},
      {65017, "seed pluggable database may not be dropped or altered"},
      {65054, "Cannot open a pluggable database in the desired mode."},
      {65090, "operation only allowed in a container database"},
      {65148, "cannot FORCE open a pluggable database to or from upgrade mode"},
  };
  return messages;
}

std::string fill(const char* pattern, const std::vector<std::string>& args) {
  std::string text;
  size_t next = 0;
  for (const char* p = pattern; *p != '\0'; ++p) {
    if (p[0] == '%' && p[1] == 's') {
      text += next < args.size() ? args[next] : std::string();
      ++next;
      ++p;
    } else {
      text += *p;
    }
  }
  return text;
}

}  // namespace

std::string error_code_text(int code) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "ORA-%05d", code);
  return buffer;
}

std::string ora_template(int code) {
  const auto found = catalog().find(code);
  return found == catalog().end() ? std::string() : std::string(found->second);
}

std::string ora_line_text(const ora_line_t& line) {
  const auto found = catalog().find(line.code);
  if (found == catalog().end()) {
    return error_code_text(line.code) + ": Message " + std::to_string(line.code) +
           " not found;  product=RDBMS; facility=ORA\n";
  }
  return error_code_text(line.code) + ": " + fill(found->second, line.args) + "\n";
}

ora_error_t::ora_error_t(std::initializer_list<ora_line_t> lines)
    : ora_error_t(std::vector<ora_line_t>(lines)) {}

ora_error_t::ora_error_t(const std::vector<ora_line_t>& lines) {
  if (!lines.empty()) code_ = lines.front().code;
  for (const ora_line_t& line : lines) message_ += ora_line_text(line);
}

ora_error_t::ora_error_t(int code, std::string message) : code_(code), message_(std::move(message)) {
  if (message_.empty() || message_.back() != '\n') message_ += '\n';
}

ora_error_t ora(int code, std::vector<std::string> args) {
  if (code == 1034) {
    // Oracle reports an instance that is not there with the shared-memory error beneath.
    return ora_error_t{{1034, {}}, {27101, {}}};
  }
  return ora_error_t{{code, std::move(args)}};
}

}  // namespace ocisim
