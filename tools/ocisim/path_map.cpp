#include "path_map.h"

#include <cctype>

namespace ocisim {

namespace {

bool starts_with(const std::string& text, const char* prefix) {
  return text.compare(0, std::char_traits<char>::length(prefix), prefix) == 0;
}

std::string forward_slashes(std::string text) {
  for (char& c : text) {
    if (c == '\\') c = '/';
  }
  return text;
}

std::string join(const std::string& root, const std::string& rest) {
  std::string base = root;
  while (!base.empty() && base.back() == '/') base.pop_back();
  if (rest.empty()) return base;
  return base + (rest.front() == '/' ? "" : "/") + rest;
}

}  // namespace

std::string map_windows_path(const std::string& root, const std::string& windows_path) {
  std::string path = forward_slashes(windows_path);
  if (starts_with(path, "//?/UNC/") || starts_with(path, "//?/unc/")) {
    path = "//" + path.substr(8);
  } else if (starts_with(path, "//?/")) {
    path = path.substr(4);
  }
  if (path.size() >= 2 && std::isalpha(static_cast<unsigned char>(path[0])) && path[1] == ':') {
    const char drive = static_cast<char>(std::tolower(static_cast<unsigned char>(path[0])));
    std::string rest = path.substr(2);
    if (rest.empty() || rest.front() != '/') rest.insert(0, "/");
    return join(root, std::string(1, drive) + rest);
  }
  if (starts_with(path, "//")) {
    return join(root, "unc/" + path.substr(2));
  }
  return path;
}

}  // namespace ocisim
