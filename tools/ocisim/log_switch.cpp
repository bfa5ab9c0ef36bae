// ALTER SYSTEM of the simulated server: log switches and archiving. Archiving the current log
// of a thread writes an archived-log record and its file (in the archive destination, or the
// recovery area with Oracle-managed names, on a drive or in an ASM disk group) and makes the
// next group current.
#include <algorithm>
#include <cstdio>
#include <set>

#include "files.h"
#include "machine.h"
#include "platform.h"
#include "server_state.h"
#include "statement_kinds.h"
#include "views.h"

namespace ocisim {

namespace {

std::int64_t number_of(const node_t& node, const char* attribute, std::int64_t fallback = 0) {
  const std::string text = node.get(attribute);
  return text.empty() ? fallback : std::strtoll(text.c_str(), nullptr, 10);
}

std::string parameter(const node_t& instance, const std::string& name) {
  for (const node_t* p : instance.all("parameter")) {
    if (lower(p->get("name")) == name) return p->get("value");
  }
  return std::string();
}

// "LOCATION=X [other attributes]" gives X.
std::string location_of(const std::string& destination) {
  const std::string text = upper(destination);
  const size_t at = text.find("LOCATION=");
  if (at == std::string::npos) return std::string();
  std::string location = destination.substr(at + 9);
  const size_t blank = location.find(' ');
  if (blank != std::string::npos) location.erase(blank);
  return location;
}

std::string padded(std::int64_t number, int width) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%0*lld", width, static_cast<long long>(number));
  return buffer;
}

// Eight letters and digits that look like the tag of an Oracle-managed file name.
std::string file_tag(const std::string& seed) {
  static const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  unsigned long long hash = 1469598103934665603ULL;
  for (unsigned char c : seed) hash = (hash ^ c) * 1099511628211ULL;
  std::string tag;
  for (int i = 0; i < 8; ++i) {
    tag += kAlphabet[hash % 36];
    hash /= 36;
  }
  return tag;
}

struct archive_context_t {
  machine_t& machine;
  node_t& instance;
  node_t& database;
  std::int64_t now;
};

std::string archive_name(const archive_context_t& c, std::int64_t thread, std::int64_t sequence,
                         std::int64_t recid, std::int64_t stamp) {
  std::string destination = location_of(parameter(c.instance, "log_archive_dest_1"));
  if (destination.empty()) destination = location_of(parameter(c.instance, "log_archive_dest"));
  const std::string recovery_area = parameter(c.instance, "db_recovery_file_dest");
  const std::string unique = upper(c.database.get("unique_name", c.database.get("name")));
  const std::string day = format_date(c.now, "YYYY_MM_DD");
  if ((destination.empty() || upper(destination) == "USE_DB_RECOVERY_FILE_DEST") && !recovery_area.empty()) {
    if (recovery_area[0] == '+') {
      return recovery_area + "/" + unique + "/ARCHIVELOG/" + day + "/thread_" + std::to_string(thread) +
             "_seq_" + std::to_string(sequence) + "." + std::to_string(256 + recid) + "." + std::to_string(stamp);
    }
    return join_oracle_path(recovery_area, unique + "\\ARCHIVELOG\\" + day + "\\O1_MF_" + std::to_string(thread) +
                                               "_" + std::to_string(sequence) + "_" +
                                               file_tag(unique + std::to_string(recid)) + "_.ARC");
  }
  if (destination.empty()) destination = join_oracle_path(c.instance.get("home"), "RDBMS");
  std::string format = parameter(c.instance, "log_archive_format");
  if (format.empty()) format = "ARC%S_%R.%T";
  std::string name;
  for (size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%' || i + 1 >= format.size()) {
      name += format[i];
      continue;
    }
    const char code = format[++i];
    switch (code) {
      case 's': name += std::to_string(sequence); break;
      case 'S': name += padded(sequence, 10); break;
      case 't': name += std::to_string(thread); break;
      case 'T': name += padded(thread, 4); break;
      case 'r':
      case 'R': name += c.database.get("resetlogs_id", "1040000000"); break;
      default: name += '%'; name += code; break;
    }
  }
  return join_oracle_path(destination, name);
}

// Oracle's stamps count seconds from 1988.
std::int64_t stamp_for(std::int64_t now) { return now - from_civil(civil_t{1988, 1, 1, 0, 0, 0}); }

void archive(const archive_context_t& c, node_t* group, std::int64_t thread, std::int64_t sequence,
             const std::string& first_change, const std::string& first_time, std::int64_t next_change) {
  std::int64_t recid = 0;
  std::int64_t stamp = 0;
  for (const node_t* log : c.instance.all("archived_log")) {
    recid = std::max(recid, number_of(*log, "recid"));
    stamp = std::max(stamp, number_of(*log, "stamp"));
  }
  ++recid;
  stamp = std::max(stamp + 1, stamp_for(c.now));
  const std::string name = archive_name(c, thread, sequence, recid, stamp);
  const std::int64_t blocks = group != nullptr ? number_of(*group, "redo_blocks", 2048) : 2048;
  const std::string native = native_file_path(c.machine.root(), name);
  if (native.empty() || !create_file(native, static_cast<unsigned long long>(blocks) * 512)) {
    throw ora_error_t{{16038, {group != nullptr ? group->get("number") : "1", std::to_string(sequence)}},
                      {19504, {name}}};
  }
  node_t record;
  record.name = "archived_log";
  record.set("recid", std::to_string(recid));
  record.set("stamp", std::to_string(stamp));
  record.set("name", name);
  record.set("thread", std::to_string(thread));
  record.set("sequence", std::to_string(sequence));
  if (!first_change.empty()) record.set("first_change", first_change);
  if (!first_time.empty()) record.set("first_time", first_time);
  record.set("next_change", std::to_string(next_change));
  record.set("next_time", date_text(c.now));
  record.set("blocks", std::to_string(blocks));
  record.set("block_size", "512");
  record.set("completion_time", date_text(c.now));
  c.instance.children.push_back(record);
  if (group != nullptr) group->set("archived", "YES");
}

// Switches the current log of one thread, archiving it when `archive_it`.
void switch_thread(const archive_context_t& c, std::int64_t thread, bool archive_it) {
  std::vector<node_t*> groups;
  for (node_t* g : c.instance.all("log_group")) {
    if (number_of(*g, "thread", 1) == thread) groups.push_back(g);
  }
  const std::int64_t scn = number_of(c.database, "current_scn", 1);
  if (groups.empty()) {
    // A scenario without redo groups: the next sequence follows the archived logs.
    std::int64_t sequence = 0;
    std::string first_change = std::to_string(scn);
    for (const node_t* log : c.instance.all("archived_log")) {
      if (number_of(*log, "thread", 1) != thread || number_of(*log, "sequence") < sequence) continue;
      sequence = number_of(*log, "sequence");
      first_change = log->get("next_change", first_change);
    }
    if (archive_it) archive(c, nullptr, thread, sequence + 1, first_change, std::string(), scn);
    c.database.set("current_scn", std::to_string(scn + 1));
    return;
  }
  node_t* current = nullptr;
  std::int64_t highest = 0;
  for (node_t* g : groups) {
    highest = std::max(highest, number_of(*g, "sequence"));
    if (g->get("status") == "CURRENT") current = g;
  }
  if (current == nullptr) {
    for (node_t* g : groups) {
      if (number_of(*g, "sequence") == highest) current = g;
    }
  }
  node_t* next = current;
  for (node_t* g : groups) {
    if (g != current && (next == current || number_of(*g, "sequence") < number_of(*next, "sequence"))) next = g;
  }
  if (archive_it) {
    archive(c, current, thread, number_of(*current, "sequence"), current->get("first_change"),
            current->get("first_time"), scn);
  } else {
    current->set("archived", "NO");
  }
  current->set("status", archive_it ? "INACTIVE" : "ACTIVE");
  next->set("status", "CURRENT");
  next->set("archived", "NO");
  next->set("sequence", std::to_string(highest + 1));
  next->set("first_change", std::to_string(scn));
  next->set("first_time", date_text(c.now));
  c.database.set("current_scn", std::to_string(scn + 1));
}

}  // namespace

void alter_system(machine_t& machine, node_t& instance, session_info_t& session,
                  token_reader_t& reader) {
  std::string what;
  if (reader.accept_word("ARCHIVE")) {
    if (!reader.accept_word("LOG")) throw ora(922);
    if (reader.accept_word("CURRENT")) what = "CURRENT";
    else if (reader.accept_word("ALL")) what = "ALL";
    else throw ora(900);
  } else if (reader.accept_word("SWITCH")) {
    if (!reader.accept_word("LOGFILE")) throw ora(922);
    what = "SWITCH";
  } else {
    throw ora(900);
  }
  expect_end(reader);
  if (!session.dba) throw ora(1031);
  const level_t level = instance_level(instance);
  if (level < level_t::mounted) throw ora(1507);
  if (what != "ALL" && level < level_t::open) throw ora(1109);
  // Each archived log adds one record beside the log groups; room for all of them up front
  // keeps the references to the database and the groups good while records are added.
  instance.child("database");
  instance.children.reserve(instance.children.size() + instance.all("log_group").size() + 1);
  node_t& database = instance.child("database");
  const bool archivelog = database.get("log_mode", "NOARCHIVELOG") == "ARCHIVELOG";
  if (what != "SWITCH" && !archivelog) throw ora(258);
  const archive_context_t context{machine, instance, database, machine_now(machine.root())};

  if (what == "ALL") {
    // Every full group that is not archived yet, oldest first.
    std::vector<node_t*> pending;
    for (node_t* g : instance.all("log_group")) {
      if (g->get("status") != "CURRENT" && g->get("archived", "YES") == "NO") pending.push_back(g);
    }
    std::sort(pending.begin(), pending.end(), [](const node_t* a, const node_t* b) {
      return number_of(*a, "sequence") < number_of(*b, "sequence");
    });
    for (node_t* g : pending) {
      std::int64_t next_change = number_of(database, "current_scn", 1);
      for (const node_t* other : instance.all("log_group")) {
        if (number_of(*other, "thread", 1) == number_of(*g, "thread", 1) &&
            number_of(*other, "sequence") == number_of(*g, "sequence") + 1) {
          next_change = number_of(*other, "first_change", next_change);
        }
      }
      archive(context, g, number_of(*g, "thread", 1), number_of(*g, "sequence"), g->get("first_change"),
              g->get("first_time"), next_change);
      g->set("status", "INACTIVE");
    }
    return;
  }
  std::set<std::int64_t> threads;
  for (const node_t* g : instance.all("log_group")) threads.insert(number_of(*g, "thread", 1));
  if (threads.empty()) threads.insert(1);
  for (std::int64_t thread : threads) switch_thread(context, thread, archivelog);
}

}  // namespace ocisim
