// Running an outside program through the operating system's command interpreter and waiting
// for it to end, as the C runtime's `system` does: `cmd.exe` (COMSPEC) on Windows; `/bin/sh`
// on the host build, where the Windows paths of the command line are first mapped onto
// $DBSHADOWLINK_ROOT as the file layer maps them. No time-out: the call blocks until the
// program ends. On the operation's thread.
#pragma once
#include <string>

namespace specific::oracle {

// Runs `commandLine` to completion. The answer is what `system` answered; callers that only
// look at the program's output need not read it.
int run_command_line(const std::u16string& commandLine);

// True when `text` holds no character that the command interpreters read as their own (the
// separators, redirections, escapes and variable marks of cmd.exe and /bin/sh, and control
// characters). Values that are filled into a command line must pass this: a home or SID from
// the registry must not be able to start a second command. Blanks are allowed (they only split
// the words). Pure.
bool is_plain_command_text(const std::u16string& text);

// The host build's view of a command line: each blank-separated word that is a Windows path
// (a drive letter and a separator, or a leading "\\") is replaced by `map(word)`; everything
// else, blanks included, stays as written. Pure; exposed for tests.
std::string map_command_line_paths(const std::string& commandLine,
                                   std::string (*map)(const std::string& windowsPath));

}  // namespace specific::oracle
