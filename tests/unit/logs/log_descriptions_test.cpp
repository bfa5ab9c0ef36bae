// Description files, the list text, the enumeration of the logs folder and the removal of
// what the agent has taken, in a private folder.
#include <gtest/gtest.h>

#include "common/exc/exc_base.h"
#include "common/win/file_hooks.h"
#include "support/capture_receiver.h"
#include "common/text/convert.h"
#include "oracle/logs/log_descriptions.h"
#include "support/test_folder.h"
#include "support/thrown.h"

namespace specific::oracle::logs {
namespace {

std::u16string w(const std::string& s) { return util::from_utf8(s); }
std::string n(const std::u16string& s) { return util::to_utf8(s); }

class LogDescriptionsTest : public ::testing::Test {
 protected:
  SArchLogInfo sample(const std::string& name) {
    SArchLogInfo log;
    log.logPath = u"C:\\arch\\ORCL_1_13.ARC";
    log.backupPath = folder_.path(w(name));
    log.xmlLogPath = folder_.path(w(name + ".xml"));
    log.size = u"5242880";
    log.firstChange = u"2730000";
    log.firstTimeUtc = u"2024/03/05 09:15:00";
    log.nextChange = u"2740000";
    log.nextTimeUtc = u"2024/03/05 09:40:00";
    log.sid = u"ORCL";
    log.homePath = u"C:\\app\\oracle\\product\\19.0.0\\dbhome_1";
    log.seqNum = u"13";
    log.dbId = u"1559187620";
    log.recId = u"3";
    log.stamp = u"1162558501";
    log.isLogCopied = true;
    log.creationUsn = u"77";
    return log;
  }

  dsl_test::test_folder_t folder_;
};

TEST_F(LogDescriptionsTest, DescriptionHasTheSixteenAttributesInOrder) {
  const SArchLogInfo log = sample("{guid}");
  const std::string base = n(folder_.base());
  EXPECT_EQ(description_text(log, "2024-03-05T10:00:00"),
            "<archived_log logPath=\"" + base + "{guid}\" size=\"5242880\" firstChange=\"2730000\" "
            "firstTimeUtc=\"2024/03/05 09:15:00\" nextChange=\"2740000\" "
            "nextTimeUtc=\"2024/03/05 09:40:00\" sid=\"ORCL\" "
            "homePath=\"C:\\app\\oracle\\product\\19.0.0\\dbhome_1\" seqNum=\"13\" "
            "dbId=\"1559187620\" recId=\"3\" stamp=\"1162558501\" xmlLogPath=\"" + base +
            "{guid}.xml\" isLogCopied=\"true\" creationUsn=\"77\" "
            "creationTimeUtc=\"2024-03-05T10:00:00\" />");
}

TEST_F(LogDescriptionsTest, WriteMakesOneFilePerLogAndTheListOfTheirElements) {
  auto a = std::make_shared<SArchLogInfo>(sample("a"));
  auto b = std::make_shared<SArchLogInfo>(sample("b"));
  b->recId = u"4";
  const std::u16string list = write_descriptions({a, b}, "2024-03-05T10:00:00");
  EXPECT_EQ(folder_.raw_read(u"a.xml"), description_text(*a, "2024-03-05T10:00:00"));
  EXPECT_EQ(folder_.raw_read(u"b.xml"), description_text(*b, "2024-03-05T10:00:00"));
  EXPECT_EQ(n(list), "<archived_logs>" + description_text(*a, "2024-03-05T10:00:00") +
                         description_text(*b, "2024-03-05T10:00:00") + "</archived_logs>");
}

TEST_F(LogDescriptionsTest, WriteOfNoLogsIsAnEmptyList) {
  EXPECT_EQ(write_descriptions({}, "x"), u"<archived_logs />");
}

TEST_F(LogDescriptionsTest, WriteFailureKeepsTheFilesWrittenSoFar) {
  auto a = std::make_shared<SArchLogInfo>(sample("a"));
  auto b = std::make_shared<SArchLogInfo>(sample("b"));
  b->xmlLogPath = folder_.path(u"no-such-folder\\b.xml");
  const std::string text = dsl_test::thrown_text([&] { write_descriptions({a, b}, "t"); });
  EXPECT_NE(text.find("Failed to save oracle log description"), std::string::npos) << text;
  EXPECT_TRUE(folder_.raw_exists(u"a.xml"));
}

TEST_F(LogDescriptionsTest, EnumOfAMissingFolderIsAnEmptyListAndDoesNotCreateIt) {
  EXPECT_EQ(enumerate_descriptions(folder_.path(u"missing\\")), u"<archived_logs />");
  EXPECT_FALSE(folder_.raw_exists(u"missing"));
}

TEST_F(LogDescriptionsTest, EnumListsTheFirstElementOfEveryXmlFile) {
  auto a = std::make_shared<SArchLogInfo>(sample("a"));
  write_descriptions({a}, "t");
  const std::u16string list = enumerate_descriptions(folder_.base());
  EXPECT_EQ(n(list), "<archived_logs>" + description_text(*a, "t") + "</archived_logs>");
}

TEST_F(LogDescriptionsTest, EnumPassesOverAnEmptyXmlFile) {
  folder_.raw_write(u"empty.xml", "");
  EXPECT_EQ(enumerate_descriptions(folder_.base()), u"<archived_logs />");
}

TEST_F(LogDescriptionsTest, EnumDoesNotSeeAnUpperCaseExtension) {
  folder_.raw_write(u"upper.XML", "<archived_log logPath=\"x\"/>");
  folder_.raw_write(u"other.txt", "<archived_log logPath=\"y\"/>");
  EXPECT_EQ(enumerate_descriptions(folder_.base()), u"<archived_logs />");
}

TEST_F(LogDescriptionsTest, EnumDoesNotGoIntoSubfolders) {
  folder_.raw_mkdir(u"sub.xml");
  folder_.raw_write(u"sub.xml\\inner.xml", "<archived_log logPath=\"x\"/>");
  EXPECT_EQ(enumerate_descriptions(folder_.base()), u"<archived_logs />");
}

TEST_F(LogDescriptionsTest, EnumBringsTheMetaFilesRestoreElementAlong) {
  folder_.raw_write(u"OracleMeta.xml", "<restore dbPrepareXml=\"PGRhdGFiYXNlcyAvPg==\" />");
  EXPECT_EQ(n(enumerate_descriptions(folder_.base())),
            "<archived_logs><restore dbPrepareXml=\"PGRhdGFiYXNlcyAvPg==\" /></archived_logs>");
}

TEST_F(LogDescriptionsTest, EnumFailsWholeOnOneUnparsableFile) {
  auto a = std::make_shared<SArchLogInfo>(sample("a"));
  write_descriptions({a}, "t");
  folder_.raw_write(u"broken.xml", "<archived_log logPath=");
  const std::string text = dsl_test::thrown_text([&] { enumerate_descriptions(folder_.base()); });
  EXPECT_NE(text.find("Failed to enum oracle logs description"), std::string::npos) << text;
}

TEST_F(LogDescriptionsTest, RemoveDeletesTheCopyAndItsDescription) {
  auto a = std::make_shared<SArchLogInfo>(sample("a"));
  folder_.raw_write(u"a", "log bytes");
  const std::u16string list = write_descriptions({a}, "t");
  remove_described_logs(list, folder_.base());
  EXPECT_FALSE(folder_.raw_exists(u"a"));
  EXPECT_FALSE(folder_.raw_exists(u"a.xml"));
}

TEST_F(LogDescriptionsTest, RemoveKeepsALogThatWasNotCopied) {
  auto a = std::make_shared<SArchLogInfo>(sample("own.arc"));
  a->isLogCopied = false;
  folder_.raw_write(u"own.arc", "the database's own file");
  remove_described_logs(write_descriptions({a}, "t"), folder_.base());
  EXPECT_TRUE(folder_.raw_exists(u"own.arc"));
  EXPECT_FALSE(folder_.raw_exists(u"own.arc.xml"));
}

TEST_F(LogDescriptionsTest, RemoveWithoutXmlLogPathDeletesThePathWithXmlAdded) {
  folder_.raw_write(u"{g}", "log");
  folder_.raw_write(u"{g}.xml", "desc");
  remove_described_logs(u"<archived_logs><archived_log logPath=\"" + folder_.path(u"{g}") +
                        u"\" isLogCopied=\"true\"/></archived_logs>", folder_.base());
  EXPECT_FALSE(folder_.raw_exists(u"{g}"));
  EXPECT_FALSE(folder_.raw_exists(u"{g}.xml"));
}

TEST_F(LogDescriptionsTest, RemoveWithoutXmlLogPathReplacesTheExtension) {
  folder_.raw_write(u"log.arc", "log");
  folder_.raw_write(u"log.xml", "desc");
  remove_described_logs(u"<archived_logs><archived_log logPath=\"" + folder_.path(u"log.arc") +
                        u"\" xmlLogPath=\"\"/></archived_logs>", folder_.base());
  EXPECT_FALSE(folder_.raw_exists(u"log.arc"));
  EXPECT_FALSE(folder_.raw_exists(u"log.xml"));
}

TEST_F(LogDescriptionsTest, RemoveWithoutIsLogCopiedDeletesTheLog) {
  folder_.raw_write(u"x", "log");
  remove_described_logs(u"<archived_logs><archived_log logPath=\"" + folder_.path(u"x") +
                        u"\"/></archived_logs>", folder_.base());
  EXPECT_FALSE(folder_.raw_exists(u"x"));
}

TEST_F(LogDescriptionsTest, RemoveNeverDeletesALogOutsideTheLogsFolder) {
  // A list naming the database's own log without isLogCopied must not cost the database it.
  folder_.raw_mkdir(u"logs");
  folder_.raw_mkdir(u"arch");
  folder_.raw_write(u"arch\\ORCL_1_7.ARC", "the database's own log");
  folder_.raw_write(u"arch\\ORCL_1_7.xml", "not ours either");
  remove_described_logs(u"<archived_logs><archived_log logPath=\"" +
                            folder_.path(u"arch\\ORCL_1_7.ARC") + u"\"/></archived_logs>",
                        folder_.path(u"logs"));
  EXPECT_TRUE(folder_.raw_exists(u"arch\\ORCL_1_7.ARC"));
  EXPECT_TRUE(folder_.raw_exists(u"arch\\ORCL_1_7.xml"));
}

TEST_F(LogDescriptionsTest, RemoveDoesNotClimbOutOfTheLogsFolderWithDots) {
  folder_.raw_mkdir(u"logs");
  folder_.raw_write(u"victim", "a file of the machine");
  folder_.raw_write(u"victim.xml", "another");
  remove_described_logs(u"<archived_logs><archived_log logPath=\"" + folder_.path(u"logs\\..\\victim") +
                            u"\" xmlLogPath=\"" + folder_.path(u"logs\\..\\victim.xml") +
                            u"\"/></archived_logs>",
                        folder_.path(u"logs"));
  EXPECT_TRUE(folder_.raw_exists(u"victim"));
  EXPECT_TRUE(folder_.raw_exists(u"victim.xml"));
}

TEST_F(LogDescriptionsTest, RemoveDeletesTheDescriptionInTheFolderOfALogOutsideIt) {
  folder_.raw_mkdir(u"logs");
  folder_.raw_write(u"own.arc", "the database's own log");
  folder_.raw_write(u"logs\\{g}.xml", "desc");
  remove_described_logs(u"<archived_logs><archived_log logPath=\"" + folder_.path(u"own.arc") +
                            u"\" xmlLogPath=\"" + folder_.path(u"logs\\{g}.xml") +
                            u"\"/></archived_logs>",
                        folder_.path(u"logs"));
  EXPECT_TRUE(folder_.raw_exists(u"own.arc"));
  EXPECT_FALSE(folder_.raw_exists(u"logs\\{g}.xml"));
}

TEST_F(LogDescriptionsTest, RemoveNeverDeletesTheMetaFileNorAFolder) {
  folder_.raw_write(u"OracleMeta.xml", "<restore/>");
  folder_.raw_mkdir(u"{empty}");
  remove_described_logs(u"<archived_logs><archived_log logPath=\"" +
                            folder_.path(u"OracleMeta.xml") + u"\"/><archived_log logPath=\"" +
                            folder_.path(u"{empty}") + u"\" xmlLogPath=\"" +
                            folder_.path(u"oraclemeta.XML") + u"\"/></archived_logs>",
                        folder_.base());
  EXPECT_TRUE(folder_.raw_exists(u"OracleMeta.xml"));
  EXPECT_TRUE(folder_.raw_exists(u"{empty}"));
}

TEST_F(LogDescriptionsTest, LiesInLogsFolderTakesDirectChildrenOnly) {
  EXPECT_TRUE(lies_in_logs_folder("C:\\L\\{g}", u"C:\\L\\"));
  EXPECT_TRUE(lies_in_logs_folder("c:/l/{g}.xml", u"C:\\L"));
  EXPECT_FALSE(lies_in_logs_folder("C:\\L\\sub\\{g}", u"C:\\L"));
  EXPECT_FALSE(lies_in_logs_folder("C:\\L\\..\\x", u"C:\\L"));
  EXPECT_FALSE(lies_in_logs_folder("C:\\L\\.", u"C:\\L"));
  EXPECT_FALSE(lies_in_logs_folder("C:\\Windows\\x", u"C:\\L"));
  EXPECT_FALSE(lies_in_logs_folder("x", u"C:\\L"));
}

TEST_F(LogDescriptionsTest, IsLogCopiedReadsFalseAndZeroInAnyCaseAsFalse) {
  const std::string f1 = "FALSE", f2 = "0", f3 = "False", t1 = "TRUE", t2 = "yes", t3 = "";
  EXPECT_FALSE(is_log_copied_value(&f1));
  EXPECT_FALSE(is_log_copied_value(&f2));
  EXPECT_FALSE(is_log_copied_value(&f3));
  EXPECT_TRUE(is_log_copied_value(&t1));
  EXPECT_TRUE(is_log_copied_value(&t2));
  EXPECT_TRUE(is_log_copied_value(&t3));
  EXPECT_TRUE(is_log_copied_value(nullptr));
}

TEST_F(LogDescriptionsTest, DerivedPathTakesTheExtensionOfTheLastPartOnly) {
  EXPECT_EQ(derived_description_path("C:\\a\\log.arc"), "C:\\a\\log.xml");
  EXPECT_EQ(derived_description_path("C:\\a\\{guid}"), "C:\\a\\{guid}.xml");
  EXPECT_EQ(derived_description_path("C:\\dir.d\\{guid}"), "C:\\dir.d\\{guid}.xml");
  EXPECT_EQ(derived_description_path("C:/dir.d/log.1.arc"), "C:/dir.d/log.1.xml");
}

TEST_F(LogDescriptionsTest, RemoveOfTheRestoreElementStopsThereAndFails) {
  folder_.raw_write(u"first", "log");
  folder_.raw_write(u"last", "log");
  const std::u16string list = u"<archived_logs><archived_log logPath=\"" + folder_.path(u"first") +
                              u"\"/><restore dbPrepareXml=\"x\"/><archived_log logPath=\"" +
                              folder_.path(u"last") + u"\"/></archived_logs>";
  const std::string text = dsl_test::thrown_text([&] { remove_described_logs(list, folder_.base()); });
  EXPECT_NE(text.find("Attribute value is not specified. Attribute: [logPath]."),
            std::string::npos)
      << text;
  EXPECT_NE(text.find("Failed to save oracle log description"), std::string::npos) << text;
  EXPECT_FALSE(folder_.raw_exists(u"first"));
  EXPECT_TRUE(folder_.raw_exists(u"last"));
}

TEST_F(LogDescriptionsTest, RemoveOfAnEmptyListDeletesNothing) {
  folder_.raw_write(u"keep", "log");
  remove_described_logs(u"<archived_logs/>", folder_.base());
  remove_described_logs(u"<!-- nothing -->", folder_.base());
  EXPECT_TRUE(folder_.raw_exists(u"keep"));
}

TEST_F(LogDescriptionsTest, RemoveOfTextThatIsNotXmlFailsAndDeletesNothing) {
  folder_.raw_write(u"keep", "log");
  for (const std::u16string& bad : {std::u16string(u"not xml at all <"), std::u16string(),
                                    u"<archived_logs><archived_log logPath=\"" +
                                        folder_.path(u"keep") + u"\">"}) {
    const std::string text = dsl_test::thrown_text([&] { remove_described_logs(bad, folder_.base()); });
    EXPECT_NE(text.find("Failed to save oracle log description"), std::string::npos) << text;
  }
  EXPECT_TRUE(folder_.raw_exists(u"keep"));
}

TEST_F(LogDescriptionsTest, RemoveOfFiftyThousandElementsHandlesEveryOne) {
  std::u16string list = u"<archived_logs>";
  for (int i = 0; i < 50000; ++i) {
    const std::u16string name = u"log" + w(std::to_string(i));
    if (i % 10000 == 9999) folder_.raw_write(name, "log");
    list += u"<archived_log logPath=\"" + folder_.path(name) + u"\" isLogCopied=\"true\"/>";
  }
  list += u"</archived_logs>";
  folder_.raw_write(u"unlisted", "log");
  remove_described_logs(list, folder_.base());
  for (int i = 9999; i < 50000; i += 10000) {
    EXPECT_FALSE(folder_.raw_exists(u"log" + w(std::to_string(i))));
  }
  EXPECT_TRUE(folder_.raw_exists(u"unlisted"));
}

// A policy that refuses every path whose name ends in "busy": the removal of that element fails.
class refuse_busy_t : public win::file_hooks_t {
 public:
  void check_access(const win::path_holder_t& path) override {
    const std::string text = path.narrow_or_empty();
    if (text.size() >= 4 && text.compare(text.size() - 4, 4, "busy") == 0) {
      throw exc::win_sys_exc_t("Access to [%1] is refused.", text, /*access denied*/ 5);
    }
  }
};

TEST_F(LogDescriptionsTest, RemoveGoesOnAfterOneElementFails) {
  folder_.raw_write(u"busy", "log");
  folder_.raw_write(u"after", "log");
  win::set_file_hooks(std::make_shared<refuse_busy_t>());
  dsl_test::capture_log_t log;
  remove_described_logs(u"<archived_logs><archived_log logPath=\"" + folder_.path(u"busy") +
                        u"\"/><archived_log logPath=\"" + folder_.path(u"after") +
                        u"\"/></archived_logs>", folder_.base());
  win::set_file_hooks(nullptr);
  EXPECT_TRUE(folder_.raw_exists(u"busy"));
  EXPECT_FALSE(folder_.raw_exists(u"after"));
  bool logged = false;
  for (const auto& line : log.bodies()) {
    if (line.find("Failed to remove log [") != std::string::npos) logged = true;
  }
  EXPECT_TRUE(logged);
}

}  // namespace
}  // namespace specific::oracle::logs
