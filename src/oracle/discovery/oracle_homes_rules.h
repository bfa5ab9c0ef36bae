// The text rules by which discovery tells Oracle's registry keys apart and joins a service to
// its home: which key names qualify, how a service's command line splits into the server path
// and the SID, and which server path a home stands for. Pure functions over values, callable
// from any thread; COracleHomes applies them to what it reads from the registry.
#pragma once
#include <optional>
#include <string>

namespace specific::oracle {

// One home key below SOFTWARE\ORACLE, as read. Lives only while COracleHomes is being built.
struct SOracleHomeRegInfo {
  std::u16string home;          // ORACLE_HOME, as stored
  std::u16string rdbmsControl;  // RDBMS_CONTROL: read with the others, used by nothing
  std::u16string homeName;      // ORACLE_HOME_NAME, as stored
};

// One database or ASM service key, as read. Lives only while COracleHomes is being built.
struct SOracleServiceRegInfo {
  std::u16string sid;      // the command line behind its first blank, as stored
  std::u16string exePath;  // the command line ahead of its first blank, as stored
  bool isAsm = false;
};

enum class EOracleServiceKind { none, database, asm_instance };

namespace homes_rules {

// Key names and paths are compared upper-cased. Case is folded for ASCII and Latin-1 letters
// (util::fold_case), the same on both builds: the C runtime's towupper would reach further or
// less far with the locale and the runtime, and then the two builds would disagree on a home
// whose path holds a letter outside that range. Nothing else changes: no trimming, no
// normalisation of any kind.
std::u16string upper_case(const std::u16string& text);

// True for a home key: the upper-cased name begins with "KEY_". "KEY_" further on in the
// name does not count.
bool is_home_key_name(const std::u16string& name);

// A database service key begins with "ORACLESERVICE", an ASM service key with
// "ORACLEASMSERVICE", both upper-cased. The rest of the name is not looked at (the SID comes
// from the command line), and the other Oracle services (listeners, VSS writers, schedulers)
// begin differently and are none.
EOracleServiceKind service_key_kind(const std::u16string& name);

// Splits a service's command line (IMAGEPATH) at its first blank (character 32): the server
// path ahead of it, the SID behind it up to the end, later blanks included. Quotes are not
// recognised and nothing is trimmed, so a server below "Program Files" or a quoted command
// line is cut where it is and later finds no home. A blank at position 0 drops the service
// (nullopt). A command line without any blank, the empty one included, gives a record whose
// server path and SID are both the whole line.
std::optional<SOracleServiceRegInfo> service_from_image_path(const std::u16string& imagePath,
                                                             bool isAsm);

// The server executable a home stands for, upper-cased: the home, one backslash (always,
// so a home stored with a trailing backslash gets two and matches no service), then
// BIN\ORACLE.EXE. An empty home gives "\BIN\ORACLE.EXE".
std::u16string expected_server_path(const std::u16string& home);

// True when the service's server path is the expected path (from expected_server_path) as a
// whole, without regard to case.
bool runs_from(const SOracleServiceRegInfo& service, const std::u16string& expectedServerPath);

}  // namespace homes_rules
}  // namespace specific::oracle
