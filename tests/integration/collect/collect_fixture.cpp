#include "collect_fixture.h"

#include <fstream>
#include <sstream>

#include "common/text/convert.h"
#include "common/win/path_ops.h"
#include "config/oracle_config.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/ora_sid_collector.h"
#include "support/reg_machine.h"

namespace collect_test {

using namespace specific::oracle;

namespace {

std::string read_whole(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void replace_all(std::string& text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
}

}  // namespace

void collect_test_t::SetUp() {
  ocisim_test_t::SetUp();
  folder_ = std::make_unique<dsl_test::test_folder_t>();
}

void collect_test_t::TearDown() {
  folder_.reset();
  registry_.reset();
  ocisim_test_t::TearDown();
}

std::string collect_test_t::base() const { return util::to_utf8(folder_->base()); }

std::u16string collect_test_t::home() const {
  return folder_->base() + u"app\\oracle\\product\\19.0.0\\dbhome_1";
}

std::u16string collect_test_t::home_file(const std::u16string& relative) const {
  return home() + u"\\" + relative;
}

void collect_test_t::use_scenario_file(const std::string& name,
                                       const std::map<std::string, std::string>& values,
                                       const std::string& extra) {
  std::string text = read_whole(dsl_test::fixture_path("../scenarios/" + name));
  if (text.empty()) throw std::runtime_error("scenario " + name + " is missing or empty");
  std::map<std::string, std::string> all = {{"$VERSION$", "19.0.0.0.0"},
                                             {"$LOG_MODE$", "ARCHIVELOG"},
                                             {"$CDB$", "NO"},
                                             {"$DOMAIN$", "corp.example"},
                                             {"$OPEN_MODE$", "READ WRITE"},
                                             {"$SRVCTL$", "registered"},
                                             {"$PASSWORD_FILE$", "+DATA/ORCL/PASSWORD/pwdorcl.256.1031050111"},
                                             {"$RECOVERY_AREA_PARAMETER$",
                                              "<parameter name=\"db_recovery_file_dest\" "
                                              "value=\"$BASE$fast_recovery_area\"/>"},
                                             {"$SPFILE$", "+DATA/ORCL/PARAMETERFILE/spfile.269.1031050991"}};
  for (const auto& [key, value] : values) all[key] = value;
  replace_all(text, "<!--EXTRA-->", extra);
  for (const auto& [key, value] : all) replace_all(text, key, value);
  replace_all(text, "$BASE$", base());
  use_scenario(text);
}

void collect_test_t::put_file(const std::u16string& relative, const std::string& bytes) {
  folder_->raw_write(relative, bytes);
}

bool collect_test_t::has_file(const std::u16string& relative) const {
  return folder_->raw_exists(relative);
}

void collect_test_t::use_registry(const std::string& fixture) {
  registry_ = std::make_shared<dsl_test::reg_machine_t>(dsl_test::fixture_path(fixture));
  COracleConfig config;
  config.load_defaults();
  config.load_registry();
  config.connectionTimeoutSec = 20;
  COracleConfig::replace_for_tests(config);
}

std::shared_ptr<CDatabaseProps> collect_test_t::collect(bool option,
                                                        std::shared_ptr<SDbLogRecInfo> record,
                                                        const std::u16string& sid) {
  SOracleSid instance;
  instance.sid = sid;
  instance.home = home();
  instance.homeName = u"OraDB19Home1";
  auto holder = std::make_shared<COracleSessionHolder>(sid, home(), conn_t{}, false);
  CDbInfoCollector collector(holder, instance, std::move(record), option);
  return std::dynamic_pointer_cast<CDatabaseProps>(collector.Collect());
}

std::vector<std::string> collect_test_t::statements() const {
  std::vector<std::string> result;
  for (const auto& line : journal_of("SQL")) result.push_back(line.rest);
  return result;
}

std::vector<std::string> collect_test_t::statements_from(const std::string& from) const {
  std::vector<std::string> all = statements();
  for (size_t i = 0; i < all.size(); ++i) {
    if (all[i] == from) return std::vector<std::string>(all.begin() + static_cast<long>(i), all.end());
  }
  return {};
}

bool collect_test_t::saw_statement_starting(const std::string& prefix) const {
  for (const auto& s : statements()) {
    if (s.rfind(prefix, 0) == 0) return true;
  }
  return false;
}

std::vector<std::string> collect_test_t::log_with(const std::string& text) const {
  std::vector<std::string> result;
  for (const auto& line : log_lines()) {
    if (line.find(text) != std::string::npos) result.push_back(line);
  }
  return result;
}

std::vector<std::u16string> collect_test_t::temp_files() const {
  std::vector<std::u16string> names;
  for (const auto& entry : win::list_directory(win::library_temp_folder())) names.push_back(entry.name);
  return names;
}

}  // namespace collect_test
