// The PL/SQL procedures of the simulated server: ASM file attributes, file removal through a
// directory object, file copy between directory objects, and the deletion of an archived log
// with its control-file record. They touch real files, found through files.h.
#include <algorithm>
#include <cstdlib>

#include "files.h"
#include "machine.h"
#include "platform.h"
#include "plsql_procedures.h"

namespace ocisim {

namespace {

// The path of a directory object, or empty.
std::string directory_path(const node_t& instance, const std::string& name) {
  for (const node_t* directory : instance.all("directory")) {
    if (directory->get("name") == upper(name)) return directory->get("path");
  }
  return std::string();
}

std::int64_t as_integer(const value_t& value) {
  value_t number;
  if (value.kind == value_t::kind_t::number) return value.integral ? value.integer : static_cast<std::int64_t>(value.real);
  if (!parse_number(to_text(value), number)) throw ora(6502);
  return number.integral ? number.integer : static_cast<std::int64_t>(number.real);
}

}  // namespace

void dbms_diskgroup_getfileattr(const plsql_call_t& call) {
  const std::string name = to_text(call.in(0));
  const std::string unit = "SYS.X$DBMS_DISKGROUP";
  const size_t slash = name.find_last_of('/');
  const std::string folder = slash == std::string::npos ? name : name.substr(0, slash);
  const std::string entry = slash == std::string::npos ? name : name.substr(slash + 1);
  if (name.empty() || name[0] != '+') call.fail({{15046, {name}}}, unit);
  const std::string native = native_file_path(call.machine.root(), name);
  const long long bytes = native.empty() ? -1 : file_size(native);
  if (bytes < 0) call.fail({{15056, {}}, {15173, {entry, folder}}}, unit);
  // The file type is the third part of an ASM name: +GROUP/DB/TYPE/file.
  std::string type;
  const size_t first = name.find('/');
  const size_t second = first == std::string::npos ? first : name.find('/', first + 1);
  const size_t third = second == std::string::npos ? second : name.find('/', second + 1);
  if (third != std::string::npos) type = upper(name.substr(second + 1, third - second - 1));
  std::int64_t file_type = 0;
  std::int64_t block_size = 512;
  if (type == "CONTROLFILE") file_type = 1, block_size = 16384;
  else if (type == "DATAFILE") file_type = 2, block_size = 8192;
  else if (type == "ONLINELOG") file_type = 3;
  else if (type == "ARCHIVELOG") file_type = 4;
  else if (type == "TEMPFILE") file_type = 6, block_size = 8192;
  else if (type == "PARAMETERFILE") file_type = 13;
  call.out(1, value_t::of_integer(file_type));
  call.out(2, value_t::of_integer((bytes + block_size - 1) / block_size));
  call.out(3, value_t::of_integer(block_size));
}

void utl_file_fremove(const plsql_call_t& call) {
  const std::string unit = "SYS.UTL_FILE";
  const std::string folder = directory_path(call.instance, to_text(call.in(0)));
  if (folder.empty()) call.fail({{29280, {}}}, unit);
  const std::string name = join_oracle_path(folder, to_text(call.in(1)));
  const std::string native = native_file_path(call.machine.root(), name);
  if (native.empty() || !remove_file(native)) call.fail({{29291, {}}}, unit);
}

void dbms_file_transfer_copy_file(const plsql_call_t& call) {
  const std::string unit = "SYS.DBMS_FILE_TRANSFER";
  const std::string source_folder = directory_path(call.instance, to_text(call.in(0)));
  const std::string target_folder = directory_path(call.instance, to_text(call.in(2)));
  if (source_folder.empty() || target_folder.empty()) call.fail({{22285, {"COPY_FILE"}}}, unit);
  const std::string source = join_oracle_path(source_folder, to_text(call.in(1)));
  const std::string target = join_oracle_path(target_folder, to_text(call.in(3)));
  const std::string source_native = native_file_path(call.machine.root(), source);
  std::string content;
  if (source_native.empty() || !read_file(source_native, content)) {
    call.fail({{19505, {source}}, {27041, {}}}, unit);
  }
  // The transfer works in blocks of 512 bytes.
  if (content.size() % 512 != 0) call.fail({{19505, {source}}, {27046, {}}}, unit);
  const std::string target_native = native_file_path(call.machine.root(), target);
  if (target_native.empty()) call.fail({{19504, {target}}}, unit);
  if (file_exists(target_native)) call.fail({{19504, {target}}, {27038, {}}}, unit);
  if (!create_file(target_native, 0) || !write_file(target_native, content)) {
    call.fail({{19504, {target}}}, unit);
  }
}

void dbms_backup_restore_deletearchivedlog(const plsql_call_t& call) {
  const std::int64_t recid = as_integer(call.in(0));
  const std::int64_t stamp = as_integer(call.in(1));
  const std::string name = to_text(call.in(2));
  node_t* record = nullptr;
  for (node_t* log : call.instance.all("archived_log")) {
    if (std::strtoll(log->get("recid").c_str(), nullptr, 10) == recid &&
        std::strtoll(log->get("stamp").c_str(), nullptr, 10) == stamp) {
      record = log;
    }
  }
  if (record == nullptr) {
    call.fail({{19571, {"archived-log", std::to_string(recid), std::to_string(stamp)}}}, "SYS.DBMS_BACKUP_RESTORE");
  }
  // A file that is already gone leaves only the record to mark, as a forced delete does.
  const std::string native = native_file_path(call.machine.root(), name.empty() ? record->get("name") : name);
  if (!native.empty() && file_exists(native) && !remove_file(native)) {
    call.fail({{27056, {}}}, "SYS.DBMS_BACKUP_RESTORE");
  }
  record->set("status", "D");
  record->set("deleted", "YES");
  record->erase("name");
}

}  // namespace ocisim
