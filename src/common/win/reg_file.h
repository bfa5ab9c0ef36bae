// Registry export files (.reg) read into a tree of keys and values, as an import would leave the
// registry. The host build's registry store is such a tree; tests on Windows write the same tree
// into the real registry, so that one file describes one machine on both.
// Accepted: "REGEDIT4" and "Windows Registry Editor Version 5.00" files, in UTF-8 (with or
// without a byte-order mark) or UTF-16LE with a byte-order mark; key lines "[ROOT\a\b]" and
// deletions "[-ROOT\a\b]"; values "name"=..., @=... for the default value, and "name"=- to
// delete one; data "text" (escapes \\ and \" only), dword:hhhhhhhh, hex:..., hex(N):...
// (N the type, in hexadecimal), hex lists continued over lines by a trailing backslash; comment
// lines starting with ";", and a ";" comment after complete data.
// In REGEDIT4 files the bytes of hex(1), hex(2) and hex(7) are narrow text and are widened to
// UTF-16LE (read as UTF-8, as this library reads the file); in version 5 files they are UTF-16LE
// as written. Narrow text is read as UTF-8 throughout; invalid UTF-8 is an error, not a guess.
// Values written after a "[-KEY]" line belong to no key and are dropped, as an import drops them.
// Pure functions over values: callable from any thread.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace win::reg_file {

enum class root_t { classes_root, current_user, local_machine, users, current_config };

struct value_t {
  std::u16string name;  // as first written; empty for the default value
  uint32_t type = 0;
  std::vector<uint8_t> data;
};

struct key_t {
  std::u16string name;  // as first written
  // By folded name (fold_name), so that the map's order is the order in which the registry
  // enumerates subkeys: by name without regard to case, not in the order they were written.
  std::map<std::u16string, std::unique_ptr<key_t>> subkeys;
  std::vector<value_t> values;  // in the order first written

  const key_t* find_subkey(const std::u16string& name) const;
  // The key at `path` below this one, one name per "\"-separated part; empty parts (doubled
  // or trailing backslashes) are passed over. Null when a part is missing.
  const key_t* find_path(const std::u16string& path) const;
  const value_t* find_value(const std::u16string& name) const;
};

struct tree_t {
  std::map<root_t, key_t> roots;  // a root is present once a line names it

  // The key below `root` at `path` (names separated by backslashes, empty names passed over;
  // an empty path is the root itself); null when any part is missing.
  const key_t* find(root_t root, const std::u16string& path) const;
};

// A name folded to lower case for comparison: ASCII and Latin-1, Latin Extended-A, Greek and
// Cyrillic letters. Two names are the same name when their folded forms are equal, and subkeys
// // enumerate in the order of their folded names, as Wine enumerates them. Windows itself may
// order differently where one of [ \ ] ^ _ ` meets a letter; no caller relies on the order.
char16_t fold_name_char(char16_t c);
std::u16string fold_name(const std::u16string& name);

// The root named by `name` (HKEY_LOCAL_MACHINE or HKLM, and so on, without regard to case);
// false when there is no such root.
bool root_from_name(const std::u16string& name, root_t& out);

// Reads the file's bytes. A text that cannot be read fails with exc::runtime_exc_t
// "Failed to parse registry file [<source_name>], line <n>: <what is wrong>."
tree_t parse(const std::string& bytes, const std::string& source_name);

// Reads the file at `path`: a missing file is an empty tree; a file that cannot be read fails
// with "Failed to read registry file [<path>]: <reason>.", one that cannot be parsed as parse()
// fails.
tree_t load(const std::string& path);

}  // namespace win::reg_file
