// ALTER PLUGGABLE DATABASE of the simulated server: opening and closing the plugged databases
// of a container database from its root, with Oracle's refusals. V$PDBS reads the <pdb>
// children, so it follows at once.
#include <string>

#include "server.h"
#include "server_state.h"
#include "statement_kinds.h"
#include "views.h"

namespace ocisim {

namespace {

const char kSeed[] = "PDB$SEED";

node_t* find_pdb(node_t& instance, const std::string& name) {
  for (node_t* pdb : instance.all("pdb")) {
    if (pdb->get("name") == name) return pdb;
  }
  return nullptr;
}

bool is_open_mode(const std::string& mode) { return mode != "MOUNTED"; }

}  // namespace

void pdbs_after_startup(node_t& instance) {
  for (node_t* pdb : instance.all("pdb")) {
    const std::string name = pdb->get("name");
    if (name == kSeed) pdb->set("open_mode", "READ ONLY");
    else pdb->set("open_mode", pdb->get("saved_state", "MOUNTED"));
  }
}

void alter_pluggable_database(node_t& instance, session_info_t& session, token_reader_t& reader) {
  const token_t name_token = reader.next();
  if (name_token.kind != token_kind_t::identifier &&
      name_token.kind != token_kind_t::quoted_identifier) {
    throw ora(900);
  }
  // A quoted name is case-sensitive; V$PDBS holds names in upper case.
  const std::string name = name_token.text;
  const std::string word = reader.next().text;
  std::string mode;
  bool force = false;
  bool close = false;
  if (word == "OPEN") {
    mode = "READ WRITE";
    if (reader.accept_word("READ")) {
      if (reader.accept_word("ONLY")) mode = "READ ONLY";
      else if (reader.accept_word("WRITE")) mode = "READ WRITE";
      else throw ora(922);
    }
    if (reader.accept_word("UPGRADE")) {
      if (mode == "READ ONLY") throw ora(65103);
      mode = "MIGRATE";
    }
    reader.accept_word("RESTRICTED");
    if (reader.accept_word("FORCE")) force = true;
  } else if (word == "CLOSE") {
    close = true;
    if (!reader.accept_word("IMMEDIATE")) reader.accept_word("ABORT");
  } else {
    throw ora(900);
  }
  expect_end(reader);
  if (!session.sysdba && !session.dba) throw ora(1031);
  node_t* database = instance.first("database");
  if (database == nullptr || database->get("cdb", "NO") != "YES") throw ora(65090);
  if (instance_level(instance) < level_t::open) throw ora(1109);
  if (name == kSeed) throw ora(65017);
  node_t* pdb = find_pdb(instance, name);
  if (pdb == nullptr) throw ora(65011, {name});
  const std::string current = pdb->get("open_mode", "MOUNTED");
  if (close) {
    if (!is_open_mode(current)) throw ora(65020, {name});
    pdb->set("open_mode", "MOUNTED");
    return;
  }
  if (is_open_mode(current)) {
    if (!force) throw ora(65019, {name});
    if (current == "MIGRATE" || mode == "MIGRATE") throw ora(65148);
  }
  pdb->set("open_mode", mode);
}

}  // namespace ocisim
