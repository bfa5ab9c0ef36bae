// Start-up, shut-down and ALTER DATABASE of the simulated server: the instance's way from
// down through started and mounted to open and back, with Oracle's refusals on the way.
#include <string>

#include "faults.h"
#include "oracle/client/oci_api.h"
#include "server.h"
#include "server_state.h"
#include "statement_kinds.h"
#include "views.h"

namespace ocisim {

namespace {

// The first data file in backup mode, or null.
const node_t* file_in_backup(const node_t& instance) {
  for (const node_t* file : instance.all("data_file")) {
    if (file->get("backup", "NOT ACTIVE") == "ACTIVE") return file;
  }
  return nullptr;
}

ora_line_t data_file_line(const node_t& file) {
  return ora_line_t{1110, {file.get("number"), file.get("name")}};
}

void set_down(node_t& instance) {
  instance.set("state", "down");
  instance.erase("opened_mode");
  instance.erase("shutdown_pending");
}

node_t& database_of(node_t& instance) { return instance.child("database"); }

}  // namespace

void server_startup(session_info_t& session, std::uint32_t mode, std::uint32_t flags) {
  require_administrator(session);
  if ((flags & ~(OCI_DBSTARTUPFLAG_FORCE | OCI_DBSTARTUPFLAG_RESTRICT)) != 0 || mode != 0) {
    throw ora(24300);
  }
  carry_out(take_fault(session.sid, session.home, "startup"), "OCIDBStartup");
  machine_t machine;
  node_t& instance = edit_session_instance(machine, session);
  if (instance_level(instance) != level_t::down) {
    if ((flags & OCI_DBSTARTUPFLAG_FORCE) == 0) throw ora(1081);
    set_down(instance);  // FORCE aborts the running instance first
  } else if (!session.prelim) {
    // Start-up is the preliminary connection's job; a full session never reached an instance.
    throw ora(1034);
  }
  instance.set("state", "started");
  instance.set("startups", std::to_string(startup_count(instance) + 1));
  instance.set("opened_once", "no");
  instance.set("startup_time", date_text(machine_now(machine.root())));
  pdbs_after_startup(instance);
  machine.save();
  session.incarnation = startup_count(instance);
  session.idle = false;
  session.shutdown_started = false;
}

void server_shutdown(session_info_t& session, std::uint32_t mode) {
  require_administrator(session);
  if (mode > OCI_DBSHUTDOWN_FINAL) throw ora(24300);
  // Only an abort may come from a preliminary connection.
  if (session.prelim && mode != OCI_DBSHUTDOWN_ABORT) throw ora(1012);
  if (session.idle) throw ora(1034);
  carry_out(take_fault(session.sid, session.home, "shutdown"), "OCIDBShutdown");
  machine_t machine;
  node_t& instance = edit_session_instance(machine, session);
  if (!session.prelim) require_connected(instance, session);
  else if (instance_level(instance) == level_t::down) throw ora(1034);

  if (mode == OCI_DBSHUTDOWN_ABORT) {
    // Files in backup mode stay so, as after a crash: the next open will refuse them.
    set_down(instance);
    machine.save();
    session.idle = true;
    return;
  }
  if (mode == OCI_DBSHUTDOWN_FINAL) {
    // Oracle would wait here for ever while the database is still mounted; answering at once
    // keeps a test from hanging.
    if (instance_level(instance) >= level_t::mounted) throw ora(1154);
    set_down(instance);
    machine.save();
    session.idle = true;
    return;
  }
  if (const node_t* file = file_in_backup(instance)) {
    throw ora_error_t{{1149, {file->get("number")}}, data_file_line(*file)};
  }
  session.shutdown_started = true;
  instance.set("shutdown_pending", "YES");
  machine.save();
}

void alter_database(machine_t& machine, node_t& instance, session_info_t& session,
                    token_reader_t& reader) {
  const std::string word = reader.next().text;
  const level_t level = instance_level(instance);
  if (word == "MOUNT") {
    expect_end(reader);
    require_administrator(session);
    if (level >= level_t::mounted) throw ora(1100);
    instance.set("state", "mounted");
    return;
  }
  if (word == "OPEN") {
    std::string mode;
    if (reader.accept_word("READ")) {
      if (reader.accept_word("ONLY")) mode = "READ ONLY";
      else if (reader.accept_word("WRITE")) mode = "READ WRITE";
      else throw ora(922);
    }
    expect_end(reader);
    require_administrator(session);
    if (level < level_t::mounted) throw ora(1507);
    if (level == level_t::open) throw ora(1531);
    if (instance.get("opened_once") == "yes") throw ora(16196);
    if (const node_t* file = file_in_backup(instance)) {
      throw ora_error_t{{10873, {file->get("number")}}, data_file_line(*file)};
    }
    instance.set("state", "open");
    instance.set("opened_once", "yes");
    if (mode.empty()) instance.erase("opened_mode");
    else instance.set("opened_mode", mode);
    return;
  }
  if (word == "CLOSE") {
    if (!reader.accept_word("NORMAL")) reader.accept_word("IMMEDIATE");
    expect_end(reader);
    require_administrator(session);
    if (level < level_t::mounted) throw ora(1507);
    if (level < level_t::open) throw ora(1109);
    instance.set("state", "mounted");
    instance.erase("opened_mode");
    return;
  }
  if (word == "DISMOUNT") {
    expect_end(reader);
    require_administrator(session);
    if (level < level_t::mounted) throw ora(1507);
    if (level == level_t::open) throw ora(1106);
    instance.set("state", "started");
    return;
  }
  if (word == "BEGIN" || word == "END") {
    if (!reader.accept_word("BACKUP")) throw ora(900);
    expect_end(reader);
    if (!session.dba) throw ora(1031);
    if (level < level_t::mounted) throw ora(1507);
    node_t& database = database_of(instance);
    if (word == "BEGIN") {
      if (database.get("log_mode", "NOARCHIVELOG") != "ARCHIVELOG") throw ora(1123);
      if (const node_t* file = file_in_backup(instance)) {
        throw ora_error_t{{1146, {file->get("number")}}, data_file_line(*file)};
      }
      for (node_t* file : instance.all("data_file")) {
        file->set("backup", "ACTIVE");
        file->set("backup_change", database.get("current_scn", "0"));
        file->set("backup_time", date_text(machine_now(machine.root())));
      }
      return;
    }
    if (file_in_backup(instance) == nullptr) throw ora(1142);
    for (node_t* file : instance.all("data_file")) file->set("backup", "NOT ACTIVE");
    return;
  }
  if (word == "ARCHIVELOG" || word == "NOARCHIVELOG") {
    expect_end(reader);
    require_administrator(session);
    if (level != level_t::mounted) throw ora(1126);
    database_of(instance).set("log_mode", word);
    return;
  }
  throw ora(900);
}

}  // namespace ocisim
