// ocisim_srvctl: a stand-in for Oracle's srvctl on a simulated machine. It answers
// `srvctl config database -db NAME` (also `-d NAME`) for the database of the scenario's
// instance whose SID or unique name is NAME, in the words a 12c/19c srvctl uses (11g: without
// the "Password file:" line), and fails as srvctl does for a database it does not know. Tests
// and demos reach it through a script named srvctl.bat in a home's BIN folder.
#include <cctype>
#include <cstdio>
#include <string>

#include "node.h"
#include "platform.h"

namespace {

std::string upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

std::string lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

int major_version(const std::string& version) {
  int major = 0;
  for (char c : version) {
    if (!std::isdigit(static_cast<unsigned char>(c))) break;
    major = major * 10 + (c - '0');
  }
  return major;
}

int usage() {
  std::printf("PRKO-2002 : Invalid command line option: config\n");
  return 1;
}

int not_found(const std::string& name) {
  std::printf("PRCD-1120 : The resource for database %s could not be found.\n", name.c_str());
  std::printf("PRCR-1001 : Resource ora.%s.db does not exist\n", lower(name).c_str());
  return 1;
}

// The disk groups that the database's files name ("+DATA/..."), in order of first mention.
std::string disk_groups(const ocisim::node_t& instance) {
  std::string groups;
  auto note = [&groups](const std::string& name) {
    if (name.empty() || name[0] != '+') return;
    const std::string group = upper(name.substr(1, name.find('/') == std::string::npos
                                                        ? std::string::npos
                                                        : name.find('/') - 1));
    if (("," + groups + ",").find("," + group + ",") == std::string::npos) {
      groups += (groups.empty() ? "" : ",") + group;
    }
  };
  for (const char* kind : {"control_file", "data_file", "temp_file"}) {
    for (const ocisim::node_t* file : instance.all(kind)) note(file->get("name"));
  }
  note(instance.get("spfile"));
  return groups;
}

}  // namespace

int main(int argc, char** argv) {
  std::string name;
  if (argc < 3 || std::string(argv[1]) != "config" || std::string(argv[2]) != "database") {
    return usage();
  }
  for (int i = 3; i + 1 < argc; ++i) {
    const std::string option = argv[i];
    if (option == "-db" || option == "-d") name = argv[i + 1];
  }
  if (name.empty()) return usage();

  std::string text;
  ocisim::node_t machine;
  std::string error;
  const std::string scenario = ocisim::env_value("OCISIM_SCENARIO");
  if (scenario.empty() || !ocisim::read_file(scenario, text) ||
      !ocisim::parse_xml(text, machine, error)) {
    return not_found(name);
  }
  const ocisim::node_t* found = nullptr;
  for (const ocisim::node_t* instance : machine.all("instance")) {
    const ocisim::node_t* database = instance->first("database");
    if (database == nullptr || instance->get("srvctl") == "unregistered") continue;
    const std::string unique = database->get("unique_name", database->get("name"));
    if (upper(instance->get("sid")) == upper(name) || upper(unique) == upper(name)) {
      found = instance;
      break;
    }
  }
  if (found == nullptr) return not_found(name);

  const ocisim::node_t& database = *found->first("database");
  const std::string db_name = database.get("name");
  const std::string unique = database.get("unique_name", db_name);
  const int major = major_version(found->get("version", "19.0.0.0.0"));
  std::printf("Database unique name: %s\n", unique.c_str());
  std::printf("Database name: %s\n", db_name.c_str());
  std::printf("Oracle home: %s\n", found->get("home").c_str());
  std::printf("Oracle user: nt authority\\system\n");
  std::printf("Spfile: %s\n", found->get("spfile").c_str());
  if (major >= 12) std::printf("Password file: %s\n", database.get("password_file").c_str());
  std::printf("Domain: %s\n", database.get("domain").c_str());
  std::printf("Start options: open\n");
  std::printf("Stop options: immediate\n");
  std::printf("Database role: PRIMARY\n");
  std::printf("Management policy: AUTOMATIC\n");
  std::printf("Disk Groups: %s\n", disk_groups(*found).c_str());
  std::printf("Services: \n");
  if (major >= 12) {
    std::printf("OSDBA group: \n");
    std::printf("OSOPER group: \n");
    std::printf("Database instance: %s\n", lower(found->get("sid")).c_str());
  }
  return 0;
}
