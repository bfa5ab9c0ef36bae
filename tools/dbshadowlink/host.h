// The console host's run: parse the arguments, load the library, start it, run one command or
// a script, stop it. Called once by main on the main thread.
#pragma once
#include <string>
#include <vector>

namespace host {

// `args` are the process arguments after the program name, in UTF-8. Returns the exit status.
int host_main(const std::vector<std::string>& args);

}  // namespace host
