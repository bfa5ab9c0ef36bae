// The property records as elements: names, attribute order, children, the merge rule.
#include <gtest/gtest.h>

#include <tinyxml.h>

#include <regex>
#include <string>
#include <vector>

#include "common/xml/xml_doc.h"
#include "oracle/discovery/oracle_props.h"

using namespace specific::oracle;

namespace {

// The names of the attributes of the document's first element, in order.
std::vector<std::string> attribute_names(const xml::xml_doc_ptr_t& doc) {
  std::vector<std::string> names;
  const TiXmlElement* root = doc->FirstChildElement();
  for (const TiXmlAttribute* a = root->FirstAttribute(); a; a = a->Next()) names.push_back(a->Name());
  return names;
}

std::shared_ptr<CDbFileProps> file(const char16_t* path, const char16_t* size) {
  return std::make_shared<CDbFileProps>(path, size);
}

TEST(DatabaseProps, ConstructorStampsTheCurrentUtcTime) {
  const CDatabaseProps props;
  EXPECT_TRUE(std::regex_match(std::string(props.timeUtc.begin(), props.timeUtc.end()),
                               std::regex("20[0-9]{2}-[01][0-9]-[0-3][0-9]T[0-2][0-9]:[0-5][0-9]:[0-6][0-9]")));
  EXPECT_FALSE(props.isError);
  EXPECT_FALSE(props.archiveLogsOn);
  EXPECT_FALSE(props.isReadonly);
  EXPECT_FALSE(props.reverted);
  EXPECT_TRUE(props.name.empty());
}

TEST(DatabaseProps, ErrorRecordHasExactlyFourAttributesAndNoChild) {
  CDatabaseProps props;
  props.isError = true;
  props.sid = u"BROKEN";
  props.config = u"C:\\h\\database\\initBROKEN.ora";
  props.errorDescription = u"ORA-12560: TNS:protocol adapter error";
  props.name = u"ignored";
  props.dataFiles.push_back(file(u"C:\\x.dbf", u"1"));
  EXPECT_EQ(xml::print(props.ToXml()),
            "<database isError=\"true\" sid=\"BROKEN\" config=\"C:\\h\\database\\initBROKEN.ora\" "
            "errorDescription=\"ORA-12560: TNS:protocol adapter error\" />");
}

TEST(DatabaseProps, CollectedRecordWritesEveryAttributeInOrderAlsoWhenEmpty) {
  CDatabaseProps props;
  const auto doc = props.ToXml();
  EXPECT_EQ(attribute_names(doc),
            (std::vector<std::string>{"isError", "name", "id", "sid", "config", "lastScn",
                                      "archiveLogsOn", "isReadonly", "reverted", "timeUtc",
                                      "lastLogNum", "maxLogRecId", "maxLogStamp", "pfile",
                                      "pwdFilePath", "globalName", "recoveryFileDest",
                                      "localListener", "remoteListener"}));
  const std::string text = xml::print(doc);
  EXPECT_NE(text.find(" pfile=\"\" "), std::string::npos) << text;
  EXPECT_NE(text.find("><control_files /><data_files /><log_files /><temp_files /><pdbs />"
                      "<archived_logs /></database>"),
            std::string::npos)
      << text;
}

TEST(DatabaseProps, CollectedRecordCarriesItsValuesAndChildrenInOrder) {
  CDatabaseProps props;
  props.name = u"ORCL";
  props.id = u"1559187620";
  props.sid = u"ORCL";
  props.config = u"C:\\h\\database\\SPFILEORCL.ORA";
  props.lastScn = u"2741980";
  props.archiveLogsOn = true;
  props.isReadonly = false;
  props.reverted = true;
  props.timeUtc = u"2024-03-05T10:00:00";
  props.lastLogNum = u"13";
  props.maxLogRecId = u"3";
  props.maxLogStamp = u"1162540801";
  props.pfile = "KiouZGJfbmFtZT0nT1JDTCcK";
  props.pwdFilePath = u"C:\\h\\database\\PWDorcl.ora";
  props.globalName = u"ORCL.example.com";
  props.recoveryFileDest = u"C:\\fra";
  props.localListener = u"LISTENER_ORCL";
  props.remoteListener = u"";
  props.controlFiles.push_back(file(u"C:\\c1.ctl", u"10584064"));
  props.dataFiles.push_back(file(u"C:\\system01.dbf", u"943718400"));
  props.logFiles.push_back(file(u"C:\\redo01.log", u"209715200"));
  props.logFiles.push_back(file(u"C:\\redo02.log", u"209715200"));
  props.tempFiles.push_back(file(u"C:\\temp01.dbf", u"1"));
  props.logGroups[u"C:\\redo01.log"] = "1";
  props.logGroups[u"c:\\REDO02.LOG"] = "2";  // another spelling: no match
  props.pdbs.push_back({u"PDB1", u"0A1B"});
  auto log = std::make_shared<SArchLogInfo>();
  log->logPath = u"+FRA/ORCL/ARCHIVELOG/x.1.2";
  log->size = u"5242880";
  log->firstChange = u"100";
  log->nextChange = u"200";
  log->firstTimeUtc = u"2024/03/05 09:15:00";
  log->nextTimeUtc = u"2024/03/05 09:40:00";
  log->seqNum = u"13";
  log->recId = u"not written";
  props.archivedLogs.push_back(log);
  EXPECT_EQ(
      xml::print(props.ToXml()),
      "<database isError=\"false\" name=\"ORCL\" id=\"1559187620\" sid=\"ORCL\" "
      "config=\"C:\\h\\database\\SPFILEORCL.ORA\" lastScn=\"2741980\" archiveLogsOn=\"true\" "
      "isReadonly=\"false\" reverted=\"true\" timeUtc=\"2024-03-05T10:00:00\" lastLogNum=\"13\" "
      "maxLogRecId=\"3\" maxLogStamp=\"1162540801\" pfile=\"KiouZGJfbmFtZT0nT1JDTCcK\" "
      "pwdFilePath=\"C:\\h\\database\\PWDorcl.ora\" globalName=\"ORCL.example.com\" "
      "recoveryFileDest=\"C:\\fra\" localListener=\"LISTENER_ORCL\" remoteListener=\"\">"
      "<control_files><dbfile path=\"C:\\c1.ctl\" size=\"10584064\" /></control_files>"
      "<data_files><dbfile path=\"C:\\system01.dbf\" size=\"943718400\" /></data_files>"
      "<log_files><dbfile path=\"C:\\redo01.log\" size=\"209715200\" groupNumber=\"1\" />"
      "<dbfile path=\"C:\\redo02.log\" size=\"209715200\" /></log_files>"
      "<temp_files><dbfile path=\"C:\\temp01.dbf\" size=\"1\" /></temp_files>"
      "<pdbs><db name=\"PDB1\" guid=\"0A1B\" /></pdbs>"
      "<archived_logs><archived_log path=\"+FRA/ORCL/ARCHIVELOG/x.1.2\" size=\"5242880\" "
      "scnFrom=\"100\" scnTo=\"200\" utcTimeFrom=\"2024/03/05 09:15:00\" "
      "utcTimeTo=\"2024/03/05 09:40:00\" seqNum=\"13\" /></archived_logs></database>");
}

TEST(DatabaseProps, GroupNumbersAreNotAddedOutsideTheOnlineLogList) {
  CDatabaseProps props;
  props.dataFiles.push_back(file(u"C:\\a", u"1"));
  props.logGroups[u"C:\\a"] = "7";
  EXPECT_EQ(xml::print(props.ToXml()).find("groupNumber"), std::string::npos);
}

TEST(DatabaseProps, PathsWithQuotesAmpersandsAndNonAsciiLettersAreEscapedAndSurviveAParse) {
  CDatabaseProps props;
  props.sid = u"O'R&C\"L";
  props.dataFiles.push_back(file(u"C:\\D\u00e4ten\\\u65e5\\a&b'<c>.dbf", u"1"));
  const std::string text = xml::print(props.ToXml());
  // A value with a double quote is written between apostrophes.
  EXPECT_NE(text.find("sid='O&apos;R&amp;C&quot;L'"), std::string::npos) << text;
  const auto again = xml::parse(text);
  const TiXmlElement* dbfile =
      again->FirstChildElement()->FirstChildElement("data_files")->FirstChildElement();
  EXPECT_EQ(std::string(dbfile->Attribute("path")),
            "C:\\D\xC3\xA4ten\\\xE6\x97\xA5\\a&b'<c>.dbf");
}

TEST(DbFileProps, IsADbfileElementWithPathAndSize) {
  EXPECT_EQ(xml::print(CDbFileProps(u"C:\\x", u"12").ToXml()), "<dbfile path=\"C:\\x\" size=\"12\" />");
}

TEST(AsmInstanceProps, WritesTheSidAndOneDiskPerEntryInOrder) {
  CAsmInstanceProps props(u"+ASM");
  for (const auto& [name, path] : std::vector<std::pair<const char16_t*, const char16_t*>>{
           {u"DATA", u"\\\\.\\ORCLDISKDATA0"}, {u"DATA", u"\\\\.\\ORCLDISKDATA1"}}) {
    auto disk = std::make_shared<CAsmDiskProps>();
    disk->name = name;
    disk->path = path;
    disk->state = u"ONLINE";
    props.disks.push_back(disk);
  }
  EXPECT_EQ(xml::print(props.ToXml()),
            "<asm sid=\"+ASM\"><disk name=\"DATA\" path=\"\\\\.\\ORCLDISKDATA0\" state=\"ONLINE\" />"
            "<disk name=\"DATA\" path=\"\\\\.\\ORCLDISKDATA1\" state=\"ONLINE\" /></asm>");
}

TEST(AsmInstanceProps, WithoutDisksIsTheSidAlone) {
  EXPECT_EQ(xml::print(CAsmInstanceProps(u"+ASM").ToXml()), "<asm sid=\"+ASM\" />");
}

TEST(HomeProps, WritesAllFourAttributesAlsoEmptyAndItsInstancesInOrder) {
  CHomeProps home(u"OraDB19Home1");
  EXPECT_EQ(xml::print(home.ToXml()),
            "<home name=\"OraDB19Home1\" version=\"\" path=\"\" desc=\"\" />");
  home.version = u"19.0.0.0.0";
  home.path = u"C:\\h";
  home.desc = u"ORACLE DATABASE 19C";
  auto error = std::make_shared<CDatabaseProps>();
  error->isError = true;
  error->sid = u"B";
  home.instances.push_back(error);
  home.instances.push_back(std::make_shared<CAsmInstanceProps>(u"+ASM"));
  EXPECT_EQ(xml::print(home.ToXml()),
            "<home name=\"OraDB19Home1\" version=\"19.0.0.0.0\" path=\"C:\\h\" "
            "desc=\"ORACLE DATABASE 19C\"><database isError=\"true\" sid=\"B\" config=\"\" "
            "errorDescription=\"\" /><asm sid=\"+ASM\" /></home>");
}

// A record whose document holds a comment and then two elements: only the first element is
// taken in, as a deep copy.
class CommentedProps : public COracleProps {
 public:
  xml::xml_doc_ptr_t ToXml() const override {
    return xml::parse("<!-- first --><one a=\"1\"><inner/></one><!-- x -->");
  }
};

TEST(HomeProps, MergeTakesADeepCopyOfTheChildsFirstElement) {
  CHomeProps home(u"H");
  home.instances.push_back(std::make_shared<CommentedProps>());
  EXPECT_EQ(xml::print(home.ToXml()),
            "<home name=\"H\" version=\"\" path=\"\" desc=\"\"><one a=\"1\"><inner /></one></home>");
}

TEST(OverallProps, WithoutEnvironmentIsABareRootWithItsHomes) {
  COverallProps overall;
  EXPECT_EQ(xml::print(overall.ToXml()), "<OracleOverall />");
  overall.homes.push_back(std::make_shared<CHomeProps>(u"Zeta"));
  EXPECT_EQ(xml::print(overall.ToXml()),
            "<OracleOverall><home name=\"Zeta\" version=\"\" path=\"\" desc=\"\" /></OracleOverall>");
}

TEST(OverallProps, WritesServerNameOsNameAndTimeZoneInOrder) {
  COverallProps overall;
  overall.env = std::make_shared<CEnvProps>();
  overall.env->serverName = u"db01.example.com";
  overall.env->osName = u"Windows Server 2015";
  overall.env->timeZone = -14;
  EXPECT_EQ(xml::print(overall.ToXml()),
            "<OracleOverall serverName=\"db01.example.com\" osName=\"Windows Server 2015\" "
            "timeZone=\"-14\" />");
}

}  // namespace
