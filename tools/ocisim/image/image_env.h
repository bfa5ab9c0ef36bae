// Setting a variable of the tool's own environment, where the simulated machine reads it.
#pragma once
#include <string>

namespace ocisim::image {

void set_variable(const std::string& name, const std::string& value);

}  // namespace ocisim::image
