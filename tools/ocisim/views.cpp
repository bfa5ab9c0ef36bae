#include "views.h"

#include <cstdlib>
#include <functional>

#include "errors.h"
#include "machine.h"

namespace ocisim {

namespace {

// A column of a view made from records: the attribute it reads (by default its name in lower
// case without # and $), its type, and the value when the attribute is absent. A fallback
// "@name" reads that attribute of the instance's <database>.
struct column_t {
  const char* name;
  char type;  // 'N' number, 'T' text, 'D' date
  const char* fallback = nullptr;
  const char* attribute = nullptr;
};

using records_t = std::vector<const node_t*>;

std::string attribute_of(const column_t& column) {
  if (column.attribute != nullptr) return column.attribute;
  std::string name;
  for (const char* p = column.name; *p != '\0'; ++p) {
    if (*p == '#' || *p == '$') continue;
    name += static_cast<char>(*p >= 'A' && *p <= 'Z' ? *p - 'A' + 'a' : *p);
  }
  return name;
}

value_t typed(const std::string& text, char type) {
  if (text.empty()) return value_t::null();
  if (type == 'N') {
    value_t number;
    if (parse_number(text, number)) return number;
  } else if (type == 'D') {
    std::int64_t seconds = 0;
    if (parse_date(text, seconds)) return value_t::of_date(seconds);
  }
  return value_t::of_text(text);
}

table_t from_records(const std::vector<column_t>& columns, const records_t& records,
                     const node_t& instance) {
  static const node_t kNone;
  const node_t* database = instance.first("database");
  if (database == nullptr) database = &kNone;
  table_t table;
  std::vector<std::string> attributes;
  std::vector<std::string> fallbacks;
  for (const column_t& c : columns) {
    table.columns.push_back(c.name);
    attributes.push_back(attribute_of(c));
    fallbacks.push_back(c.fallback == nullptr ? std::string()
                        : c.fallback[0] == '@' ? database->get(c.fallback + 1)
                                               : std::string(c.fallback));
  }
  table.rows.reserve(records.size());
  for (const node_t* record : records) {
    std::vector<value_t> row;
    row.reserve(columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
      const std::string* text = record->find(attributes[i]);
      row.push_back(typed(text != nullptr ? *text : fallbacks[i], columns[i].type));
    }
    table.rows.push_back(std::move(row));
  }
  return table;
}

records_t children(const node_t& instance, const char* name) {
  records_t result;
  for (const node_t* c : instance.all(name)) result.push_back(c);
  return result;
}

std::string default_banner(const node_t& instance) {
  const std::string version = instance.get("version", "19.0.0.0.0");
  const int major = major_version(instance);
  if (major >= 12) {
    return "Oracle Database " + std::to_string(major) + "c Enterprise Edition Release " + version +
           " - Production";
  }
  return "Oracle Database " + std::to_string(major) + "g Enterprise Edition Release " + version +
         " - 64bit Production";
}

table_t version_view(const node_t& instance) {
  const std::string version = instance.get("version", "19.0.0.0.0");
  const std::string banner = instance.get("banner", default_banner(instance));
  std::vector<node_t> rows;
  const auto explicit_rows = instance.all("banner");
  if (!explicit_rows.empty()) {
    for (const node_t* b : explicit_rows) {
      node_t row;
      row.set("banner", b->get("text"));
      row.set("banner_full", b->get("full", b->get("text")));
      row.set("banner_legacy", b->get("text"));
      rows.push_back(row);
    }
  } else if (major_version(instance) >= 18) {
    node_t row;
    row.set("banner", banner);
    row.set("banner_full", banner + "\nVersion " + instance.get("version_full", version));
    row.set("banner_legacy", banner);
    rows.push_back(row);
  } else {
    for (const std::string& text :
         {banner, "PL/SQL Release " + version + " - Production", "CORE\t" + version + "\tProduction",
          "TNS for 64-bit Windows: Version " + version + " - Production",
          "NLSRTL Version " + version + " - Production"}) {
      node_t row;
      row.set("banner", text);
      rows.push_back(row);
    }
  }
  records_t records;
  for (const node_t& r : rows) records.push_back(&r);
  if (major_version(instance) >= 18) {
    return from_records({{"BANNER", 'T'}, {"BANNER_FULL", 'T'}, {"BANNER_LEGACY", 'T'},
                         {"CON_ID", 'N', "0"}},
                        records, instance);
  }
  std::vector<column_t> columns = {{"BANNER", 'T'}};
  if (major_version(instance) >= 12) columns.push_back({"CON_ID", 'N', "0"});
  return from_records(columns, records, instance);
}

table_t instance_view(const node_t& machine, const node_t& instance) {
  node_t row = instance;
  row.children.clear();
  row.set("instance_name", instance.get("instance_name", lower(instance.get("sid"))));
  row.set("host_name", instance.get("host_name", machine.get("host", "localhost")));
  row.set("status", instance_status(instance));
  const node_t* database = instance.first("database");
  const bool archiving = database != nullptr && database->get("log_mode") == "ARCHIVELOG" &&
                         instance_level(instance) >= level_t::mounted;
  if (!row.has("archiver")) row.set("archiver", archiving ? "STARTED" : "STOPPED");
  std::vector<column_t> columns = {
      {"INSTANCE_NUMBER", 'N', "1"}, {"INSTANCE_NAME", 'T'}, {"HOST_NAME", 'T'},
      {"VERSION", 'T', "19.0.0.0.0"}};
  if (major_version(instance) >= 18) columns.push_back({"VERSION_FULL", 'T', nullptr, "version_full"});
  for (const column_t& c : std::vector<column_t>{
           {"STARTUP_TIME", 'D'}, {"STATUS", 'T'}, {"PARALLEL", 'T', "NO"}, {"THREAD#", 'N', "1"},
           {"ARCHIVER", 'T'}, {"LOG_SWITCH_WAIT", 'T'}, {"LOGINS", 'T', "ALLOWED"},
           {"SHUTDOWN_PENDING", 'T', "NO"}, {"DATABASE_STATUS", 'T', "ACTIVE"},
           {"INSTANCE_ROLE", 'T', "PRIMARY_INSTANCE"}, {"ACTIVE_STATE", 'T', "NORMAL"},
           {"BLOCKED", 'T', "NO"}, {"EDITION", 'T', "EE"}}) {
    columns.push_back(c);
  }
  if (!row.has("version_full")) row.set("version_full", instance.get("version", "19.0.0.0.0"));
  return from_records(columns, {&row}, instance);
}

table_t database_view(const node_t& instance) {
  const node_t* database = instance.first("database");
  node_t row = database != nullptr ? *database : node_t{};
  row.children.clear();
  row.set("open_mode", current_open_mode(instance));
  if (!row.has("db_unique_name")) row.set("db_unique_name", row.get("unique_name", row.get("name")));
  std::vector<column_t> columns = {
      {"DBID", 'N'}, {"NAME", 'T'}, {"CREATED", 'D'}, {"RESETLOGS_CHANGE#", 'N'},
      {"RESETLOGS_TIME", 'D'}, {"LOG_MODE", 'T', "NOARCHIVELOG"}, {"CHECKPOINT_CHANGE#", 'N'},
      {"CONTROLFILE_TYPE", 'T', "CURRENT"}, {"OPEN_MODE", 'T'},
      {"PROTECTION_MODE", 'T', "MAXIMUM PERFORMANCE"}, {"DATABASE_ROLE", 'T', "PRIMARY"},
      {"DB_UNIQUE_NAME", 'T'}, {"PLATFORM_NAME", 'T', "Microsoft Windows x86 64-bit"},
      {"CURRENT_SCN", 'N'}, {"FLASHBACK_ON", 'T', "NO"}, {"FORCE_LOGGING", 'T', "NO"}};
  if (major_version(instance) >= 12) {
    columns.push_back({"CDB", 'T', "NO"});
    columns.push_back({"CON_ID", 'N', "0"});
  }
  return from_records(columns, {&row}, instance);
}

table_t log_view(const node_t& instance) {
  std::vector<node_t> rows;
  for (const node_t* group : instance.all("log_group")) {
    node_t row = *group;
    row.children.clear();
    row.set("members", std::to_string(group->all("member").size()));
    rows.push_back(row);
  }
  records_t records;
  for (const node_t& r : rows) records.push_back(&r);
  return from_records({{"GROUP#", 'N', nullptr, "number"}, {"THREAD#", 'N', "1"}, {"SEQUENCE#", 'N'},
                       {"BYTES", 'N'}, {"BLOCKSIZE", 'N', "512"}, {"MEMBERS", 'N'},
                       {"ARCHIVED", 'T', "YES"}, {"STATUS", 'T', "INACTIVE"},
                       {"FIRST_CHANGE#", 'N'}, {"FIRST_TIME", 'D'}, {"NEXT_CHANGE#", 'N'},
                       {"NEXT_TIME", 'D'}, {"CON_ID", 'N', "0"}},
                      records, instance);
}

table_t logfile_view(const node_t& instance) {
  std::vector<node_t> rows;
  for (const node_t* group : instance.all("log_group")) {
    for (const node_t* member : group->all("member")) {
      node_t row = *member;
      row.set("group", group->get("number"));
      rows.push_back(row);
    }
  }
  records_t records;
  for (const node_t& r : rows) records.push_back(&r);
  return from_records({{"GROUP#", 'N'}, {"STATUS", 'T'}, {"TYPE", 'T', "ONLINE"},
                       {"MEMBER", 'T', nullptr, "name"}, {"IS_RECOVERY_DEST_FILE", 'T', "NO"},
                       {"CON_ID", 'N', "0"}},
                      records, instance);
}

table_t backup_view(const node_t& instance) {
  std::vector<node_t> rows;
  for (const node_t* file : instance.all("data_file")) {
    node_t row;
    row.set("file", file->get("number"));
    row.set("status", file->get("backup", "NOT ACTIVE"));
    if (file->has("backup_change")) row.set("change", file->get("backup_change"));
    if (file->has("backup_time")) row.set("time", file->get("backup_time"));
    rows.push_back(row);
  }
  records_t records;
  for (const node_t& r : rows) records.push_back(&r);
  return from_records({{"FILE#", 'N'}, {"STATUS", 'T'}, {"CHANGE#", 'N', "0"}, {"TIME", 'D'},
                       {"CON_ID", 'N', "0"}},
                      records, instance);
}

table_t recovery_dest_view(const node_t& instance) {
  node_t row;
  for (const node_t* p : instance.all("parameter")) {
    if (lower(p->get("name")) == "db_recovery_file_dest") row.set("name", p->get("value"));
    if (lower(p->get("name")) == "db_recovery_file_dest_size") row.set("space_limit", p->get("value"));
  }
  return from_records({{"NAME", 'T'}, {"SPACE_LIMIT", 'N', "0"}, {"SPACE_USED", 'N', "0"},
                       {"SPACE_RECLAIMABLE", 'N', "0"}, {"NUMBER_OF_FILES", 'N', "0"},
                       {"CON_ID", 'N', "0"}},
                      {&row}, instance);
}

table_t parameter_view(const node_t& instance) {
  std::vector<node_t> rows;
  int number = 0;
  for (const node_t* p : instance.all("parameter")) {
    node_t row = *p;
    row.set("num", std::to_string(++number));
    row.set("name", lower(p->get("name")));
    rows.push_back(row);
  }
  records_t records;
  for (const node_t& r : rows) records.push_back(&r);
  return from_records({{"NUM", 'N'}, {"NAME", 'T'}, {"TYPE", 'N', "2"}, {"VALUE", 'T'},
                       {"DISPLAY_VALUE", 'T', nullptr, "value"}, {"ISDEFAULT", 'T', "FALSE"},
                       {"CON_ID", 'N', "0"}},
                      records, instance);
}

table_t diskgroup_view(const node_t& instance) {
  std::vector<node_t> rows;
  int number = 0;
  for (const node_t* g : instance.all("disk_group")) {
    node_t row = *g;
    row.children.clear();
    row.set("group_number", g->get("group_number", std::to_string(++number)));
    rows.push_back(row);
  }
  records_t records;
  for (const node_t& r : rows) records.push_back(&r);
  return from_records({{"GROUP_NUMBER", 'N'}, {"NAME", 'T'}, {"SECTOR_SIZE", 'N', "512"},
                       {"BLOCK_SIZE", 'N', "4096"}, {"ALLOCATION_UNIT_SIZE", 'N', "4194304"},
                       {"STATE", 'T', "MOUNTED"}, {"TYPE", 'T', "EXTERN"}, {"TOTAL_MB", 'N', "0"},
                       {"FREE_MB", 'N', "0"}},
                      records, instance);
}

table_t disk_view(const node_t& instance) {
  std::vector<node_t> rows;
  int group_number = 0;
  for (const node_t* g : instance.all("disk_group")) {
    const std::string group = g->get("group_number", std::to_string(++group_number));
    int disk_number = 0;
    for (const node_t* d : g->all("disk")) {
      node_t row = *d;
      row.set("group_number", group);
      row.set("disk_number", d->get("disk_number", std::to_string(disk_number++)));
      rows.push_back(row);
    }
  }
  records_t records;
  for (const node_t& r : rows) records.push_back(&r);
  return from_records({{"GROUP_NUMBER", 'N'}, {"DISK_NUMBER", 'N'}, {"MOUNT_STATUS", 'T', "CACHED"},
                       {"HEADER_STATUS", 'T', "MEMBER"}, {"MODE_STATUS", 'T', "ONLINE"},
                       {"STATE", 'T', "NORMAL"}, {"NAME", 'T'}, {"PATH", 'T'},
                       {"TOTAL_MB", 'N', "0"}, {"FREE_MB", 'N', "0"}},
                      records, instance);
}

struct view_entry_t {
  const char* name;
  level_t level;
  std::function<table_t(const node_t& machine, const node_t& instance)> build;
};

const std::vector<view_entry_t>& views() {
  using L = level_t;
  static const std::vector<view_entry_t> all = {
      {"DUAL", L::started,
       [](const node_t&, const node_t& i) {
         node_t row;
         row.set("dummy", "X");
         return from_records({{"DUMMY", 'T'}}, {&row}, i);
       }},
      {"V$INSTANCE", L::started, instance_view},
      {"V$VERSION", L::started, [](const node_t&, const node_t& i) { return version_view(i); }},
      {"V$PARAMETER", L::started, [](const node_t&, const node_t& i) { return parameter_view(i); }},
      {"V$ASM_DISKGROUP", L::started, [](const node_t&, const node_t& i) { return diskgroup_view(i); }},
      {"V$ASM_DISK", L::started, [](const node_t&, const node_t& i) { return disk_view(i); }},
      {"V$DATABASE", L::mounted, [](const node_t&, const node_t& i) { return database_view(i); }},
      {"V$CONTROLFILE", L::mounted,
       [](const node_t&, const node_t& i) {
         return from_records({{"STATUS", 'T'}, {"NAME", 'T'}, {"IS_RECOVERY_DEST_FILE", 'T', "NO"},
                              {"BLOCK_SIZE", 'N', "16384"}, {"FILE_SIZE_BLKS", 'N'},
                              {"CON_ID", 'N', "0"}},
                             children(i, "control_file"), i);
       }},
      {"V$DATAFILE", L::mounted,
       [](const node_t&, const node_t& i) {
         return from_records({{"FILE#", 'N', nullptr, "number"}, {"CREATION_CHANGE#", 'N'},
                              {"TS#", 'N', "0"}, {"STATUS", 'T', "ONLINE"},
                              {"ENABLED", 'T', "READ WRITE"}, {"CHECKPOINT_CHANGE#", 'N', "@checkpoint_change"},
                              {"BYTES", 'N'}, {"BLOCKS", 'N'}, {"BLOCK_SIZE", 'N', "8192"},
                              {"NAME", 'T'}, {"CON_ID", 'N', "0"}},
                             children(i, "data_file"), i);
       }},
      {"V$TEMPFILE", L::mounted,
       [](const node_t&, const node_t& i) {
         return from_records({{"FILE#", 'N', nullptr, "number"}, {"TS#", 'N', "0"},
                              {"STATUS", 'T', "ONLINE"}, {"ENABLED", 'T', "READ WRITE"},
                              {"BYTES", 'N'}, {"BLOCKS", 'N'}, {"BLOCK_SIZE", 'N', "8192"},
                              {"NAME", 'T'}, {"CON_ID", 'N', "0"}},
                             children(i, "temp_file"), i);
       }},
      {"V$LOG", L::mounted, [](const node_t&, const node_t& i) { return log_view(i); }},
      {"V$LOGFILE", L::mounted, [](const node_t&, const node_t& i) { return logfile_view(i); }},
      {"V$BACKUP", L::mounted, [](const node_t&, const node_t& i) { return backup_view(i); }},
      {"V$RECOVERY_FILE_DEST", L::mounted,
       [](const node_t&, const node_t& i) { return recovery_dest_view(i); }},
      {"V$ARCHIVED_LOG", L::mounted,
       [](const node_t&, const node_t& i) {
         return from_records({{"RECID", 'N'}, {"STAMP", 'N'}, {"NAME", 'T'}, {"DEST_ID", 'N', "1"},
                              {"THREAD#", 'N', "1"}, {"SEQUENCE#", 'N'},
                              {"RESETLOGS_CHANGE#", 'N', "@resetlogs_change"},
                              {"RESETLOGS_TIME", 'D', "@resetlogs_time"}, {"FIRST_CHANGE#", 'N'},
                              {"FIRST_TIME", 'D'}, {"NEXT_CHANGE#", 'N'}, {"NEXT_TIME", 'D'},
                              {"BLOCKS", 'N'}, {"BLOCK_SIZE", 'N', "512"}, {"ARCHIVED", 'T', "YES"},
                              {"APPLIED", 'T', "NO"}, {"DELETED", 'T', "NO"}, {"STATUS", 'T', "A"},
                              {"COMPLETION_TIME", 'D'}, {"CON_ID", 'N', "0"}},
                             children(i, "archived_log"), i);
       }},
      {"V$PDBS", L::mounted,
       [](const node_t&, const node_t& i) {
         return from_records({{"CON_ID", 'N'}, {"DBID", 'N'}, {"GUID", 'T'}, {"NAME", 'T'},
                              {"OPEN_MODE", 'T', "MOUNTED"}, {"RESTRICTED", 'T', "NO"},
                              {"OPEN_TIME", 'D'}, {"TOTAL_SIZE", 'N', "0"}},
                             children(i, "pdb"), i);
       }},
      {"DBA_DIRECTORIES", L::open,
       [](const node_t&, const node_t& i) {
         return from_records({{"OWNER", 'T', "SYS"}, {"DIRECTORY_NAME", 'T', nullptr, "name"},
                              {"DIRECTORY_PATH", 'T', nullptr, "path"}, {"ORIGIN_CON_ID", 'N', "0"}},
                             children(i, "directory"), i);
       }},
  };
  return all;
}

}  // namespace

level_t instance_level(const node_t& instance) {
  const std::string state = lower(instance.get("state", "open"));
  if (state == "open" || state == "open migrate") return level_t::open;
  if (state == "mounted") return level_t::mounted;
  if (state == "started") return level_t::started;
  return level_t::down;
}

std::string instance_status(const node_t& instance) {
  const std::string state = lower(instance.get("state", "open"));
  if (state == "open migrate") return "OPEN MIGRATE";
  switch (instance_level(instance)) {
    case level_t::open: return "OPEN";
    case level_t::mounted: return "MOUNTED";
    default: return "STARTED";
  }
}

bool is_asm(const node_t& instance) {
  const std::string type = lower(instance.get("type"));
  if (!type.empty()) return type == "asm";
  return instance.get("sid").compare(0, 1, "+") == 0;
}

int major_version(const node_t& instance) {
  return std::atoi(instance.get("version", "19.0.0.0.0").c_str());
}

std::string current_open_mode(const node_t& instance) {
  if (instance_level(instance) < level_t::open) return "MOUNTED";
  if (instance.has("opened_mode")) return instance.get("opened_mode");
  const node_t* database = instance.first("database");
  return database != nullptr ? database->get("open_mode", "READ WRITE") : std::string("READ WRITE");
}

table_t build_view(const std::string& name, const node_t& machine, const node_t& instance) {
  std::string key = name;
  if (key.compare(0, 3, "V_$") == 0) key = "V$" + key.substr(3);
  if (key == "ALL_DIRECTORIES") key = "DBA_DIRECTORIES";
  for (const view_entry_t& view : views()) {
    if (key != view.name) continue;
    const level_t level = instance_level(instance);
    if (level < view.level) {
      if (view.level == level_t::mounted) throw ora(1507);
      throw ora(1219);
    }
    return view.build(machine, instance);
  }
  throw ora(942);
}

}  // namespace ocisim
