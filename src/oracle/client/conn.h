// The database login as the exports hand it on: user then password, narrow. An empty user
// means operating-system authentication.
#pragma once
#include <string>
#include <utility>

namespace specific::oracle {

using conn_t = std::pair<std::string, std::string>;

}  // namespace specific::oracle
