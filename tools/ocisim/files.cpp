#include "files.h"

#include "machine.h"
#include "platform.h"

namespace ocisim {

std::string windows_file_path(const node_t& machine, const std::string& name) {
  if (name.empty() || name[0] != '+') return name;
  const size_t slash = name.find_first_of("/\\");
  const std::string group = upper(name.substr(1, slash == std::string::npos ? std::string::npos : slash - 1));
  for (const node_t* instance : machine.all("instance")) {
    for (const node_t* disk_group : instance->all("disk_group")) {
      if (upper(disk_group->get("name")) != group) continue;
      std::string folder = disk_group->get("folder");
      if (folder.empty()) return std::string();
      std::string rest = slash == std::string::npos ? std::string() : name.substr(slash + 1);
      for (char& c : rest) {
        if (c == '/') c = '\\';
      }
      while (!folder.empty() && (folder.back() == '\\' || folder.back() == '/')) folder.pop_back();
      return rest.empty() ? folder : folder + "\\" + rest;
    }
  }
  return std::string();
}

std::string native_file_path(const node_t& machine, const std::string& name) {
  const std::string path = windows_file_path(machine, name);
  if (path.empty()) return std::string();
  return native_path(path);
}

std::string join_oracle_path(const std::string& folder, const std::string& name) {
  if (folder.empty()) return name;
  const bool in_asm = folder[0] == '+';
  const char separator = in_asm ? '/' : '\\';
  if (folder.back() == '/' || folder.back() == '\\') return folder + name;
  return folder + separator + name;
}

}  // namespace ocisim
