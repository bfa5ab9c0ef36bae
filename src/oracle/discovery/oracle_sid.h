// SOracleSid: one Oracle instance found on this machine, as discovery (COracleHomes) reports it
// and as a session holder and the later operations take it. A plain value; any thread.
#pragma once
#include <string>

namespace specific::oracle {

struct SOracleSid {
  std::u16string sid;       // as the service's command line spells it
  std::u16string home;      // ORACLE_HOME of the home key, as stored
  std::u16string homeName;  // ORACLE_HOME_NAME of the home key, as stored
  bool isAsm = false;       // the instance runs under an ASM service

  friend bool operator==(const SOracleSid& a, const SOracleSid& b) {
    return a.sid == b.sid && a.home == b.home && a.homeName == b.homeName && a.isAsm == b.isAsm;
  }
  friend bool operator!=(const SOracleSid& a, const SOracleSid& b) { return !(a == b); }
};

}  // namespace specific::oracle
