#include "arguments.h"

#include <charconv>

#include "host_errors.h"
#include "utf.h"

namespace host {

namespace {

struct global_option_t {
  std::string_view name;
  bool takes_value;
};

constexpr global_option_t global_options[] = {
    {"--lib", true}, {"--log-name", true}, {"--script", true}, {"--keep-going", false}};

const global_option_t* find_global(std::string_view name) {
  for (const auto& option : global_options) {
    if (option.name == name) return &option;
  }
  return nullptr;
}

bool is_help(std::string_view word) { return word == "--help" || word == "-h"; }

// "--name=value" gives name and value; any other word is a name alone.
void split_option(std::string_view word, std::string_view& name,
                  std::optional<std::string>& inline_value) {
  const size_t equals = word.find('=');
  if (word.size() > 2 && word.substr(0, 2) == "--" && equals != std::string_view::npos) {
    name = word.substr(0, equals);
    inline_value = std::string(word.substr(equals + 1));
  } else {
    name = word;
    inline_value.reset();
  }
}

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

std::string prefix(const std::string& origin, const command_def_t* command) {
  std::string text;
  if (!origin.empty()) text += origin + ": ";
  if (command != nullptr) text += std::string(command->name) + ": ";
  return text;
}

// Takes the value of an option that needs one: inline ("--x=v") or the next word.
std::string take_value(const std::vector<std::string>& words, size_t& i, std::string_view name,
                       std::optional<std::string>& inline_value, const std::string& where) {
  if (inline_value) return *inline_value;
  if (i + 1 >= words.size()) throw usage_error_t(where + "option " + quoted(name) + " needs a value");
  return words[++i];
}

// Parses the words of one command from `first` on (the command's own name comes before).
// Global options are handed to `globals` when it is not null, else refused.
void parse_command_words(const std::vector<std::string>& words, size_t first,
                         parsed_command_t& parsed, invocation_t* globals) {
  const command_def_t& def = *parsed.def;
  const std::string where = prefix(parsed.origin, &def);
  bool options_ended = false;
  bool have_positional = false;
  for (size_t i = first; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (!options_ended && word == "--") {
      options_ended = true;
      continue;
    }
    if (!options_ended && is_help(word)) {
      if (globals == nullptr) throw usage_error_t(where + quoted(word) + " cannot be used in a script");
      globals->help = true;
      globals->help_command = &def;
      continue;
    }
    if (options_ended || word.empty() || word[0] != '-' || word == "-") {
      if (def.positional.empty()) {
        throw usage_error_t(where + "unexpected argument " + quoted(word));
      }
      if (have_positional) {
        throw usage_error_t(where + "takes one " + std::string(def.positional) +
                            "; unexpected argument " + quoted(word));
      }
      parsed.positional = word;
      have_positional = true;
      continue;
    }
    std::string_view name;
    std::optional<std::string> inline_value;
    split_option(word, name, inline_value);
    if (const option_def_t* option = find_option(def, name)) {
      if (parsed.has(name)) throw usage_error_t(where + "option " + quoted(name) + " is given twice");
      if (option->kind == value_kind_t::flag) {
        if (inline_value) throw usage_error_t(where + "option " + quoted(name) + " takes no value");
        parsed.values.emplace(std::string(name), std::string());
      } else {
        parsed.values.emplace(std::string(name), take_value(words, i, name, inline_value, where));
      }
      continue;
    }
    if (const global_option_t* global = find_global(name)) {
      if (globals == nullptr) {
        throw usage_error_t(where + "option " + quoted(name) +
                            " belongs on the command line, not in a script");
      }
      // A global option after the command: handled by the caller's loop below.
      std::string value;
      if (global->takes_value) value = take_value(words, i, name, inline_value, where);
      else if (inline_value) throw usage_error_t(where + "option " + quoted(name) + " takes no value");
      if (name == "--lib") globals->library_path = value;
      else if (name == "--log-name") globals->log_name = value;
      else if (name == "--script") globals->script_path = value;
      else globals->keep_going = true;
      continue;
    }
    throw usage_error_t(where + "unknown option " + quoted(name));
  }
  if (globals != nullptr && globals->help) return;  // help needs no complete command
  if (!def.positional.empty() && !have_positional) {
    throw usage_error_t(where + "missing " + std::string(def.positional));
  }
  for (const auto& option : def.options) {
    const auto found = parsed.values.find(option.name);
    if (found == parsed.values.end()) {
      if (option.required) {
        throw usage_error_t(where + "missing option " +
                            quoted(std::string(option.name) + " " + std::string(option.value_name)));
      }
      continue;
    }
    const std::string& value = found->second;
    int32_t as_int32 = 0;
    uint64_t as_uint64 = 0;
    if (option.kind == value_kind_t::int32 && !parse_int32(value, as_int32)) {
      throw usage_error_t(where + "option " + quoted(option.name) + " needs a whole number from " +
                          "-2147483648 to 2147483647, not " + quoted(value));
    }
    if (option.kind == value_kind_t::uint64 && !parse_uint64(value, as_uint64)) {
      throw usage_error_t(where + "option " + quoted(option.name) + " needs a whole number from " +
                          "0 to 18446744073709551615, not " + quoted(value));
    }
    if (option.kind == value_kind_t::file && value.empty()) {
      throw usage_error_t(where + "option " + quoted(option.name) + " needs a file name");
    }
  }
}

void check_utf8(const std::vector<std::string>& words) {
  for (const auto& word : words) {
    std::u16string ignored;
    size_t bad_offset = 0;
    if (!utf8_to_utf16(word, ignored, bad_offset)) {
      throw usage_error_t("argument " + quoted(word) + " is not valid UTF-8");
    }
  }
}

}  // namespace

std::string parsed_command_t::text(std::string_view option) const {
  const auto found = values.find(option);
  return found == values.end() ? std::string() : found->second;
}

invocation_t parse_command_line(const std::vector<std::string>& args) {
  check_utf8(args);
  invocation_t result;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& word = args[i];
    if (is_help(word)) {
      result.help = true;
      continue;
    }
    std::string_view name;
    std::optional<std::string> inline_value;
    split_option(word, name, inline_value);
    if (const global_option_t* global = find_global(name)) {
      std::string value;
      if (global->takes_value) value = take_value(args, i, name, inline_value, "");
      else if (inline_value) throw usage_error_t("option " + quoted(name) + " takes no value");
      if (name == "--lib") result.library_path = value;
      else if (name == "--log-name") result.log_name = value;
      else if (name == "--script") result.script_path = value;
      else result.keep_going = true;
      continue;
    }
    if (!word.empty() && word[0] == '-') throw usage_error_t("unknown option " + quoted(word));
    const command_def_t* def = find_command(word);
    if (def == nullptr) throw usage_error_t("unknown command " + quoted(word));
    parsed_command_t parsed;
    parsed.def = def;
    parse_command_words(args, i + 1, parsed, &result);
    if (result.help) {
      result.help_command = def;
      return result;
    }
    result.command = std::move(parsed);
    break;
  }
  if (result.help) return result;
  if (result.library_path && result.library_path->empty()) {
    throw usage_error_t("option '--lib' needs a file name");
  }
  if (result.script_path) {
    if (result.command) {
      throw usage_error_t("give either a command or --script, not both (command " +
                          quoted(result.command->def->name) + ")");
    }
    if (result.script_path->empty()) throw usage_error_t("option '--script' needs a file name");
    return result;
  }
  if (result.keep_going) throw usage_error_t("option '--keep-going' needs --script");
  if (!result.command) throw usage_error_t("no command given");
  return result;
}

std::vector<std::string> split_script_line(std::string_view line) {
  std::vector<std::string> words;
  std::string current;
  bool in_word = false;
  bool in_quotes = false;
  for (const char c : line) {
    if (in_quotes) {
      if (c == '"') in_quotes = false;
      else current.push_back(c);
    } else if (c == '"') {
      in_quotes = true;
      in_word = true;
    } else if (c == ' ' || c == '\t') {
      if (in_word) words.push_back(std::move(current));
      current.clear();
      in_word = false;
    } else {
      current.push_back(c);
      in_word = true;
    }
  }
  if (in_quotes) throw usage_error_t("a double quote is not closed");
  if (in_word) words.push_back(std::move(current));
  return words;
}

parsed_command_t parse_script_command(const std::vector<std::string>& words,
                                      const std::string& origin) {
  parsed_command_t parsed;
  parsed.origin = origin;
  const std::string where = prefix(origin, nullptr);
  if (words.empty()) throw usage_error_t(where + "no command");
  if (!words[0].empty() && words[0][0] == '-') {
    throw usage_error_t(where + "a line starts with a command, not with " + quoted(words[0]));
  }
  parsed.def = find_command(words[0]);
  if (parsed.def == nullptr) throw usage_error_t(where + "unknown command " + quoted(words[0]));
  parse_command_words(words, 1, parsed, nullptr);
  return parsed;
}

bool parse_int32(std::string_view text, int32_t& value) {
  if (text.empty() || text.front() == '+') return false;
  int32_t parsed = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed, 10);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  value = parsed;
  return true;
}

bool parse_uint64(std::string_view text, uint64_t& value) {
  if (text.empty() || text.front() == '-' || text.front() == '+') return false;
  uint64_t parsed = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), parsed, 10);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  value = parsed;
  return true;
}

}  // namespace host
