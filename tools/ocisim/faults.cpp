#include "faults.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "journal.h"
#include "machine.h"
#include "platform.h"

namespace ocisim {

namespace {

std::string normal_sql(const std::string& text) {
  std::string result;
  bool blank = false;
  for (char c : text) {
    if (std::isspace(static_cast<unsigned char>(c))) {
      blank = !result.empty();
      continue;
    }
    if (blank) result += ' ';
    blank = false;
    result += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return result;
}

bool sql_applies(const node_t& fault, const std::string& sql) {
  if (!fault.has("sql")) return true;
  const std::string wanted = normal_sql(fault.get("sql"));
  const std::string actual = normal_sql(sql);
  const std::string match = fault.get("match", "exact");
  if (match == "prefix") return actual.compare(0, wanted.size(), wanted) == 0;
  if (match == "contains") return actual.find(wanted) != std::string::npos;
  return actual == wanted;
}

}  // namespace

fault_t take_fault(const std::string& sid, const std::string& home, const std::string& on,
                   const std::string& sql) {
  fault_t result;
  machine_t machine;
  const node_t* instance = machine.find_instance(sid, home);
  if (instance == nullptr) return result;
  const auto faults = instance->all("fault");
  for (size_t index = 0; index < faults.size(); ++index) {
    const node_t* fault = faults[index];
    std::string kind = fault->get("on");
    if (kind == "sql") kind = "execute";
    if (kind != on || !sql_applies(*fault, sql)) continue;
    if (fault->has("times")) {
      const long times = std::strtol(fault->get("times").c_str(), nullptr, 10);
      if (times <= 0) continue;
      // The count goes down in the state file, so it holds across sessions and processes.
      node_t* mine = machine.edit_instance(sid, home)->all("fault")[index];
      mine->set("times", std::to_string(times - 1));
      machine.save();
    }
    result.found = true;
    const std::string hang = fault->get("hang");
    if (hang == "forever") {
      result.hang_forever = true;
    } else if (!hang.empty()) {
      result.hang_ms = std::llround(std::strtod(hang.c_str(), nullptr) * 1000.0);
    }
    if (fault->has("error")) {
      const int code = std::atoi(fault->get("error").c_str());
      const std::string message = fault->get("message");
      if (message.empty()) {
        result.error = std::make_shared<ora_error_t>(ora(code));
      } else {
        result.error =
            std::make_shared<ora_error_t>(code, error_code_text(code) + ": " + message);
      }
    }
    if (fault->has("after_rows")) {
      result.after_rows = std::strtoll(fault->get("after_rows").c_str(), nullptr, 10);
      if (!result.error) result.error = std::make_shared<ora_error_t>(ora(3113));
    }
    break;
  }
  return result;
}

void carry_out(const fault_t& fault, const std::string& function) {
  if (!fault.found) return;
  if (fault.hang_forever) {
    journal_hang(function, "forever");
    for (;;) sleep_ms(60000);
  }
  if (fault.hang_ms > 0) {
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%g", static_cast<double>(fault.hang_ms) / 1000.0);
    journal_hang(function, seconds);
    sleep_ms(fault.hang_ms);
  }
  if (fault.error && fault.after_rows < 0) throw *fault.error;
}

}  // namespace ocisim
