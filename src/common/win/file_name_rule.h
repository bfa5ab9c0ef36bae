// The rule for a name that becomes one file name inside a folder of the library: the agent's log
// name, a SID or a GUID in a temporary file name, a name taken from Oracle's views. The library
// writes as LocalSystem, so a name from outside must never reach another folder, another drive,
// a device or a stream. Pure functions, any thread, the same on both builds.
#pragma once
#include <cstddef>
#include <string>

namespace win {

// Longest file name (in UTF-16 units) that the rule lets through: a component of a path on
// NTFS holds at most that many.
constexpr size_t kMaxFileNameLength = 255;

// Why `name` is not a safe bare file name, in a short sentence of its own ("it contains a path
// separator", ...); empty when it is safe. Refused: an empty name; more than 255 UTF-16 units;
// "/" or "\" (a path), ":" (a drive or a stream), the characters Windows refuses (< > " | ? *
// and the control characters below 0x20); "." and ".." and any name ending in "." or " " (Windows
// drops those endings, so the name would mean another one); the devices CON, PRN, AUX, NUL,
// CONIN$, CONOUT$, COM0-COM9, LPT0-LPT9 (also with the superscript digits 1, 2, 3) in any
// letter case, alone or before an extension ("NUL.txt", "com1 .log").
std::string file_name_problem(const std::u16string& name);

// True when file_name_problem has nothing to say. The narrow form reads UTF-8; text that is not
// valid UTF-8 is refused.
bool is_safe_file_name(const std::u16string& name);
bool is_safe_file_name(const std::string& utf8_name);

// Throws runtime_exc_t "%1 [%2] is not a valid file name: %3." (`what` first, e.g. "Log name",
// then the name as UTF-8, then the reason) when the name is refused; does nothing otherwise.
void check_file_name(const std::u16string& name, const std::string& what);
void check_file_name(const std::string& utf8_name, const std::string& what);

}  // namespace win
