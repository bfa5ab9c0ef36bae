#include "oracle/discovery/command_line.h"

#include <cctype>

namespace specific::oracle {

namespace {

bool is_windows_path(const std::string& word) {
  if (word.size() >= 3 && std::isalpha(static_cast<unsigned char>(word[0])) && word[1] == ':' &&
      (word[2] == '\\' || word[2] == '/')) {
    return true;
  }
  return word.size() >= 2 && word[0] == '\\' && word[1] == '\\';
}

}  // namespace

bool is_plain_command_text(const std::u16string& text) {
  static const std::u16string kInterpreterCharacters = u"&|<>^\"%!;$`";
  for (char16_t c : text) {
    if (c < 0x20 || c == 0x7f) return false;
    if (kInterpreterCharacters.find(c) != std::u16string::npos) return false;
  }
  return true;
}

std::string map_command_line_paths(const std::string& commandLine,
                                   std::string (*map)(const std::string& windowsPath)) {
  std::string result;
  size_t pos = 0;
  while (pos < commandLine.size()) {
    if (commandLine[pos] == ' ') {
      result += ' ';
      ++pos;
      continue;
    }
    size_t end = commandLine.find(' ', pos);
    if (end == std::string::npos) end = commandLine.size();
    const std::string word = commandLine.substr(pos, end - pos);
    result += is_windows_path(word) ? map(word) : word;
    pos = end;
  }
  return result;
}

}  // namespace specific::oracle
