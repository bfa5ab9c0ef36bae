// COracleHomes over a registry made up here: the order in which it reads, what it passes over,
// and the chain of its failures where the real registry cannot be made to fail.
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "common/exc/exc_base.h"
#include "common/text/convert.h"
#include "discovery_machine.h"

namespace {

using specific::oracle::COracleHomes;
using specific::oracle::COracleRegKey;
using dsl_test::chain_of;
using dsl_test::found_lines;
using dsl_test::instance;
using dsl_test::sids_t;
using lines_t = std::vector<std::string>;

// A key of the made-up registry. Subkeys list in the order they were added (not sorted), so
// that the tests can tell listing order from any order of discovery's own. Every call is
// written to the journal.
struct fake_key_t : COracleRegKey {
  struct node_t {
    std::string path;
    std::vector<std::pair<std::u16string, std::shared_ptr<node_t>>> children;
    std::map<std::u16string, std::u16string> values;  // by upper-cased name
    bool opens = true;
    std::function<void()> on_list;
    std::function<void(const std::u16string&)> on_read;
  };

  fake_key_t(std::shared_ptr<node_t> node, std::shared_ptr<lines_t> journal)
      : node_(std::move(node)), journal_(std::move(journal)) {}

  std::unique_ptr<COracleRegKey> open(const std::u16string& path) const override {
    journal_->push_back("open " + node_->path + util::to_utf8(path));
    for (const auto& [name, child] : node_->children) {
      if (upper(name) == upper(path)) {
        if (!child->opens) return nullptr;
        return std::make_unique<fake_key_t>(child, journal_);
      }
    }
    return nullptr;
  }
  std::vector<std::u16string> subkey_names() const override {
    journal_->push_back("list " + node_->path);
    if (node_->on_list) node_->on_list();
    std::vector<std::u16string> names;
    for (const auto& [name, child] : node_->children) names.push_back(name);
    return names;
  }
  std::u16string read_string(const std::u16string& name) const override {
    journal_->push_back("read " + node_->path + util::to_utf8(name));
    if (node_->on_read) node_->on_read(name);
    const auto it = node_->values.find(upper(name));
    return it == node_->values.end() ? std::u16string() : it->second;
  }

  static std::u16string upper(std::u16string text) {
    for (auto& c : text) c = (c >= u'a' && c <= u'z') ? static_cast<char16_t>(c - 32) : c;
    return text;
  }

  std::shared_ptr<node_t> node_;
  std::shared_ptr<lines_t> journal_;
};

using node_ptr = std::shared_ptr<fake_key_t::node_t>;

class OracleHomesLogic : public ::testing::Test {
 protected:
  OracleHomesLogic() : root_(std::make_shared<fake_key_t::node_t>()) {}

  node_ptr add(const node_ptr& parent, const std::u16string& name) {
    auto child = std::make_shared<fake_key_t::node_t>();
    child->path = parent->path + util::to_utf8(name) + "\\";
    parent->children.emplace_back(name, child);
    return child;
  }
  node_ptr oracle() {
    if (!oracle_) oracle_ = add(root_, u"SOFTWARE\\ORACLE");
    return oracle_;
  }
  node_ptr services() {
    if (!services_) services_ = add(root_, u"SYSTEM\\CurrentControlSet\\Services");
    return services_;
  }
  node_ptr home(const std::u16string& key, const std::u16string& path,
                const std::u16string& name) {
    auto node = add(oracle(), key);
    node->values[u"ORACLE_HOME"] = path;
    node->values[u"ORACLE_HOME_NAME"] = name;
    return node;
  }
  node_ptr service(const std::u16string& key, const std::u16string& imagePath) {
    auto node = add(services(), key);
    node->values[u"IMAGEPATH"] = imagePath;
    return node;
  }

  sids_t discover() {
    journal_->clear();
    const COracleHomes homes(fake_key_t(root_, journal_));
    return sids_t(homes.begin(), homes.end());
  }

  // The failure of the constructor, as its chain.
  lines_t failure() {
    journal_->clear();
    try {
      const COracleHomes homes(fake_key_t(root_, journal_));
      ADD_FAILURE() << "no failure";
    } catch (const exc::exc_base_t& e) {
      return chain_of(e);
    }
    return {};
  }

  node_ptr root_;
  node_ptr oracle_;
  node_ptr services_;
  std::shared_ptr<lines_t> journal_ = std::make_shared<lines_t>();
  dsl_test::capture_log_t log_;
};

TEST_F(OracleHomesLogic, HomesAreReadCompletelyBeforeServicesAreListed) {
  home(u"key_OraDB19Home1", u"C:\\db", u"OraDB19Home1")->values[u"RDBMS_CONTROL"] = u"C:\\db\\DATABASE";
  service(u"OracleServiceORCL", u"C:\\db\\bin\\ORACLE.EXE ORCL");
  EXPECT_EQ(discover(), (sids_t{instance(u"ORCL", u"C:\\db", u"OraDB19Home1")}));
  // The home key is opened by its upper-cased name; its three values in their fixed order.
  EXPECT_EQ(*journal_, (lines_t{"open SOFTWARE\\ORACLE",
                                "list SOFTWARE\\ORACLE\\",
                                "open SOFTWARE\\ORACLE\\KEY_ORADB19HOME1",
                                "read SOFTWARE\\ORACLE\\key_OraDB19Home1\\ORACLE_HOME",
                                "read SOFTWARE\\ORACLE\\key_OraDB19Home1\\RDBMS_CONTROL",
                                "read SOFTWARE\\ORACLE\\key_OraDB19Home1\\ORACLE_HOME_NAME",
                                "open SYSTEM\\CURRENTCONTROLSET\\SERVICES",
                                "list SYSTEM\\CurrentControlSet\\Services\\",
                                "open SYSTEM\\CurrentControlSet\\Services\\OracleServiceORCL",
                                "read SYSTEM\\CurrentControlSet\\Services\\OracleServiceORCL\\IMAGEPATH"}));
}

TEST_F(OracleHomesLogic, KeysThatDoNotQualifyAreNeitherOpenedNorRead) {
  home(u"ORA_KEY_x", u"C:\\db", u"x");
  service(u"OracleVssWriterORCL", u"C:\\db\\bin\\ORACLE.EXE ORCL");
  service(u"OracleOraDB19Home1TNSListener", u"C:\\db\\bin\\TNSLSNR");
  EXPECT_TRUE(discover().empty());
  EXPECT_EQ(*journal_, (lines_t{"open SOFTWARE\\ORACLE", "list SOFTWARE\\ORACLE\\",
                                "open SYSTEM\\CURRENTCONTROLSET\\SERVICES",
                                "list SYSTEM\\CurrentControlSet\\Services\\"}));
}

TEST_F(OracleHomesLogic, ServicesAreScannedWhenThereIsNoOracleKey) {
  service(u"OracleServiceORCL", u"C:\\db\\bin\\ORACLE.EXE ORCL");
  EXPECT_TRUE(discover().empty());
  EXPECT_EQ(*journal_, (lines_t{"open SOFTWARE\\ORACLE",
                                "open SYSTEM\\CURRENTCONTROLSET\\SERVICES",
                                "list SYSTEM\\CurrentControlSet\\Services\\",
                                "open SYSTEM\\CurrentControlSet\\Services\\OracleServiceORCL",
                                "read SYSTEM\\CurrentControlSet\\Services\\OracleServiceORCL\\IMAGEPATH"}));
  EXPECT_TRUE(found_lines(log_).empty());
}

TEST_F(OracleHomesLogic, BaseKeysThatDoNotOpenAreNoFailure) {
  oracle()->opens = false;
  services()->opens = false;
  EXPECT_TRUE(discover().empty());
}

TEST_F(OracleHomesLogic, AHomeKeyThatDoesNotOpenIsPassedOver) {
  home(u"KEY_A", u"C:\\a", u"A")->opens = false;
  home(u"KEY_B", u"C:\\b", u"B");
  service(u"OracleServiceA", u"C:\\a\\bin\\ORACLE.EXE A");
  service(u"OracleServiceB", u"C:\\b\\bin\\ORACLE.EXE B");
  EXPECT_EQ(discover(), (sids_t{instance(u"B", u"C:\\b", u"B")}));
}

TEST_F(OracleHomesLogic, AServiceKeyThatDoesNotOpenIsPassedOver) {
  home(u"KEY_A", u"C:\\a", u"A");
  service(u"OracleServiceX", u"C:\\a\\bin\\ORACLE.EXE X")->opens = false;
  service(u"OracleServiceY", u"C:\\a\\bin\\ORACLE.EXE Y");
  EXPECT_EQ(discover(), (sids_t{instance(u"Y", u"C:\\a", u"A")}));
}

TEST_F(OracleHomesLogic, HomesWithoutValuesStillMakeRecords) {
  add(oracle(), u"KEY_Empty");
  service(u"OracleServiceBARE", u"\\BIN\\ORACLE.EXE BARE");
  EXPECT_EQ(discover(), (sids_t{instance(u"BARE", u"", u"")}));
}

TEST_F(OracleHomesLogic, InstancesComeInHomeOrderThenServiceOrder) {
  home(u"KEY_Second", u"C:\\two", u"Two");
  home(u"KEY_First", u"C:\\one", u"One");
  service(u"OracleServiceZ1", u"C:\\one\\bin\\ORACLE.EXE Z1");
  service(u"OracleASMService+ASM", u"C:\\two\\bin\\ORACLE.EXE +ASM");
  service(u"OracleServiceA1", u"C:\\one\\bin\\ORACLE.EXE A1");
  service(u"OracleServiceNONE", u"C:\\three\\bin\\ORACLE.EXE NONE");
  EXPECT_EQ(discover(), (sids_t{instance(u"+ASM", u"C:\\two", u"Two", true),
                                instance(u"Z1", u"C:\\one", u"One"),
                                instance(u"A1", u"C:\\one", u"One")}));
  EXPECT_EQ(found_lines(log_), (lines_t{"Found oracle instance: +ASM. Is ASM: true",
                                        "Found oracle instance: Z1. Is ASM: false",
                                        "Found oracle instance: A1. Is ASM: false"}));
}

TEST_F(OracleHomesLogic, AFailureToListHomesUnwindsWithTheHomeScanChain) {
  home(u"KEY_A", u"C:\\a", u"A");
  service(u"OracleServiceA", u"C:\\a\\bin\\ORACLE.EXE A");
  oracle()->on_list = [] { throw exc::runtime_exc_t("listing refused"); };
  EXPECT_EQ(failure(), (lines_t{"listing refused", "COracleHomes: failed to enum reg subkeys.",
                                "COracleHomes: failed to find oracle homes.",
                                "Failed to create oracle homes."}));
  // The services were never reached.
  EXPECT_EQ(journal_->back(), "list SOFTWARE\\ORACLE\\");
}

TEST_F(OracleHomesLogic, AFailureToListServicesUnwindsWithTheServiceScanChain) {
  home(u"KEY_A", u"C:\\a", u"A");
  service(u"OracleServiceA", u"C:\\a\\bin\\ORACLE.EXE A");
  services()->on_list = [] {
    throw exc::win_sys_exc_t(specific::oracle::kOracleKeyInfoFailure, win::kErrorAccessDenied);
  };
  journal_->clear();
  try {
    const COracleHomes homes(fake_key_t(root_, journal_));
    FAIL() << "no failure";
  } catch (const exc::win_sys_exc_t& e) {
    // The type and the code of the cause survive the wrapping.
    EXPECT_EQ(e.code(), win::kErrorAccessDenied);
    EXPECT_EQ(dsl_test::chain_after_system_text(e),
              (lines_t{"Failed to query info from oracle reg key", "--tr:Error code: 0x00000005",
                       "COracleHomes: failed to enum reg subkeys.",
                       "COracleHomes: failed to find oracle services.",
                       "Failed to create oracle homes."}));
  }
  EXPECT_TRUE(found_lines(log_).empty());
}

TEST_F(OracleHomesLogic, AFailureOfTheValueReaderInTheHomeScan) {
  home(u"KEY_A", u"C:\\a", u"A")->on_read = [](const std::u16string& name) {
    if (name == u"RDBMS_CONTROL") throw std::bad_alloc();
  };
  EXPECT_EQ(failure(), (lines_t{std::bad_alloc().what(),
                                "COracleHomes: failed to get reg key value.",
                                "COracleHomes: failed to find oracle homes.",
                                "Failed to create oracle homes."}));
}

TEST_F(OracleHomesLogic, AFailureOfTheValueReaderInTheServiceScan) {
  home(u"KEY_A", u"C:\\a", u"A");
  service(u"OracleServiceA", u"C:\\a\\bin\\ORACLE.EXE A")->on_read = [](const std::u16string&) {
    throw exc::runtime_exc_t("value refused");
  };
  EXPECT_EQ(failure(), (lines_t{"value refused", "COracleHomes: failed to get reg key value.",
                                "COracleHomes: failed to find oracle services.",
                                "Failed to create oracle homes."}));
}

TEST_F(OracleHomesLogic, AServiceThatFailsAfterMatchesWereFoundStillFailsTheWhole) {
  home(u"KEY_A", u"C:\\a", u"A");
  service(u"OracleServiceA", u"C:\\a\\bin\\ORACLE.EXE A");
  service(u"OracleServiceB", u"C:\\a\\bin\\ORACLE.EXE B")->on_read = [](const std::u16string&) {
    throw exc::runtime_exc_t("value refused");
  };
  EXPECT_EQ(failure().back(), "Failed to create oracle homes.");
  EXPECT_TRUE(found_lines(log_).empty());
}

}  // namespace
