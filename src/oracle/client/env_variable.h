// Setting a variable of the process environment, as the Oracle client reads it at attach:
// _putenv on Windows, setenv on the host. Callers hold the session lock; the value stays set
// after the session is made, nothing restores it.
#pragma once
#include <string>

namespace specific::oracle {

// Builds "NAME=value", converts it to the system code page, logs "Setting env variable: %1"
// and sets it. Throws runtime_exc_t when the environment refuses it.
void set_env_variable(const std::u16string& name, const std::u16string& value);

// The platform half: `assignment` is "NAME=value" in the system code page; false on failure.
bool put_env_assignment(const std::string& assignment);

}  // namespace specific::oracle
