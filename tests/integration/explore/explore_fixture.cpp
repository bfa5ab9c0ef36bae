#include "explore_fixture.h"

#include <tinyxml.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

#include "common/text/convert.h"
#include "config/oracle_config.h"
#include "frame/oracle_manager.h"
#include "oracle/client/env_variable.h"
#include "oracle/client/oci_loader.h"
#include "oracle/client/ora_interface.h"
#include "support/schema_check.h"

namespace explore_test {

namespace {

std::atomic<int> g_count{0};

void set_env(const std::string& name, const std::string& value) {
  specific::oracle::put_env_assignment(name + "=" + value);
}

std::string native(const std::filesystem::path& path) {
  return util::to_multibyte(util::from_utf8(path.u8string()));
}

void write_bytes(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << bytes;
}

std::string read_bytes(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

void normalise(TiXmlElement* element, std::vector<std::string>* problems) {
  const std::string name = element->ValueStr();
  for (TiXmlAttribute* a = element->FirstAttribute(); a; a = a->Next()) {
    const std::string attr = a->NameTStr();
    const std::string value = a->ValueStr();
    if (name == "database" && attr == "timeUtc") {
      if (!std::regex_match(value, std::regex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}"))) {
        problems->push_back("timeUtc has an unexpected form: " + value);
      }
      a->SetValue("*");
    } else if (name == "OracleOverall" && (attr == "serverName" || attr == "osName")) {
      if (value.empty()) problems->push_back(attr + " is empty");
      a->SetValue("*");
    } else if (name == "OracleOverall" && attr == "timeZone") {
      if (!std::regex_match(value, std::regex("-?[0-9]+")) || std::stoi(value) < -48 ||
          std::stoi(value) > 56) {
        problems->push_back("timeZone is no plausible number of quarter hours: " + value);
      }
      a->SetValue("*");
    }
  }
  for (TiXmlElement* c = element->FirstChildElement(); c; c = c->NextSiblingElement()) {
    normalise(c, problems);
  }
}

void compare(const TiXmlElement* e, const TiXmlElement* a, const std::string& where,
             std::vector<std::string>& out) {
  const std::string here = where + "/" + e->ValueStr();
  if (e->ValueStr() != a->ValueStr()) {
    out.push_back(here + ": element is " + a->ValueStr());
    return;
  }
  const TiXmlAttribute* ea = e->FirstAttribute();
  const TiXmlAttribute* aa = a->FirstAttribute();
  for (int i = 1; ea || aa; ++i) {
    if (!ea) {
      out.push_back(here + ": unexpected attribute " + aa->NameTStr() + "=\"" + aa->ValueStr() + "\"");
    } else if (!aa) {
      out.push_back(here + ": missing attribute " + ea->NameTStr());
    } else if (ea->NameTStr() != aa->NameTStr()) {
      out.push_back(here + ": attribute " + std::to_string(i) + " is " + aa->NameTStr() +
                    ", expected " + ea->NameTStr());
    } else if (ea->ValueStr() != aa->ValueStr()) {
      out.push_back(here + "@" + ea->NameTStr() + ": \"" + aa->ValueStr() + "\", expected \"" +
                    ea->ValueStr() + "\"");
    }
    if (ea) ea = ea->Next();
    if (aa) aa = aa->Next();
  }
  const TiXmlElement* ec = e->FirstChildElement();
  const TiXmlElement* ac = a->FirstChildElement();
  for (int i = 1; ec || ac; ++i) {
    const std::string child = here + "[" + std::to_string(i) + "]";
    if (!ec) {
      out.push_back(child + ": unexpected element " + ac->ValueStr());
    } else if (!ac) {
      out.push_back(child + ": missing element " + ec->ValueStr());
    } else {
      compare(ec, ac, where + "/" + e->ValueStr(), out);
    }
    if (ec) ec = ec->NextSiblingElement();
    if (ac) ac = ac->NextSiblingElement();
  }
}

}  // namespace

std::string source_file(const std::string& relative) {
  const char* root = std::getenv("DSL_SOURCE_DIR");
  return read_bytes(std::filesystem::u8path(std::string(root ? root : ".") + "/" + relative));
}

std::string normalised(const std::string& document) {
  TiXmlDocument doc;
  doc.Parse(document.c_str());
  if (doc.Error() || !doc.RootElement()) return "<not XML: " + document + ">";
  std::vector<std::string> ignored;
  normalise(doc.RootElement(), &ignored);
  TiXmlPrinter printer;
  printer.SetIndent("");
  printer.SetLineBreak("");
  doc.Accept(&printer);
  return printer.Str();
}

std::vector<std::string> document_differences(const std::string& expected,
                                              const std::string& actual) {
  std::vector<std::string> out;
  TiXmlDocument e;
  TiXmlDocument a;
  e.Parse(expected.c_str());
  a.Parse(actual.c_str());
  if (e.Error() || !e.RootElement()) return {"the expected document is no XML"};
  if (a.Error() || !a.RootElement()) return {"the document is no XML: " + actual};
  normalise(a.RootElement(), &out);
  compare(e.RootElement(), a.RootElement(), "", out);
  return out;
}

void explore_test_t::SetUpTestSuite() {
  set_env(specific::oracle::kOciLibraryVariable, ocisim_library());
  specific::oracle::CWinOraInterface::replace_table_for_tests(nullptr);
}

void explore_test_t::SetUp() {
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  dir_ = std::filesystem::temp_directory_path() /
         ("dsl-explore-" + std::string(info->name()).substr(0, 40) + "-" +
          std::to_string(g_count++) + "-" +
          std::to_string(std::chrono::steady_clock::now().time_since_epoch().count() % 1000000));
  std::filesystem::create_directories(dir_);
  set_env("OCISIM_JOURNAL", native(dir_ / "journal.txt"));
  set_env("OCISIM_STATE", "");
  log_ = std::make_unique<dsl_test::capture_log_t>();
}

void explore_test_t::TearDown() {
  log_.reset();
  machine_.reset();
  specific::oracle::COracleConfig::replace_for_tests(specific::oracle::COracleConfig());
  set_env("OCISIM_SCENARIO", "");
  set_env("OCISIM_JOURNAL", "");
  std::error_code ignored;
  std::filesystem::remove_all(dir_, ignored);
}

void explore_test_t::use_machine(const std::string& reg, const std::string& scenario) {
  machine_ = std::make_unique<dsl_test::reg_machine_t>(dsl_test::fixture_path(reg));
  const std::string text = source_file("tests/scenarios/" + scenario);
  ASSERT_FALSE(text.empty()) << scenario;
  write_bytes(dir_ / "scenario.xml", text);
  set_env("OCISIM_SCENARIO", native(dir_ / "scenario.xml"));
  specific::oracle::COracleConfig config;
  config.load_defaults();
  config.load_registry();
  config.connectionTimeoutSec = 30;
  specific::oracle::COracleConfig::replace_for_tests(config);
}

std::string explore_test_t::explore(bool collect, const std::u16string& input) {
  try {
    return util::to_utf8(specific::oracle::COracleManager::instance().explore(collect, {"", ""}, input));
  } catch (const std::exception& e) {
    ADD_FAILURE() << "explore failed: " << e.what();
    return std::string();
  }
}

std::string explore_test_t::explore_failure(bool collect, const std::u16string& input) {
  try {
    const std::u16string text =
        specific::oracle::COracleManager::instance().explore(collect, {"", ""}, input);
    ADD_FAILURE() << "explore did not fail: " << util::to_utf8(text);
  } catch (const std::exception& e) {
    return e.what();
  }
  return std::string();
}

void explore_test_t::expect_valid(const std::string& document, const char* schema) {
  EXPECT_EQ(dsl_test::schema_problems(document, schema), "");
}

void explore_test_t::expect_document(const std::string& document, const std::string& name) {
  const std::string expected = source_file("tests/integration/explore/expected/" + name);
  ASSERT_FALSE(expected.empty()) << "no expected file " << name << "; the document was\n"
                                 << normalised(document);
  const auto differences = document_differences(expected, document);
  std::string all;
  for (const auto& d : differences) all += d + "\n";
  EXPECT_TRUE(differences.empty()) << all << "normalised document:\n" << normalised(document);
  expect_valid(document);
}

std::vector<std::string> explore_test_t::log_lines() const { return dsl_test::plain_log(*log_); }

bool explore_test_t::logged(const std::string& line) const {
  const auto lines = log_lines();
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

std::string explore_test_t::journal() const { return read_bytes(dir_ / "journal.txt"); }

}  // namespace explore_test
