// The property records of the explored document. Each record renders itself as a fresh
// document holding exactly one element (ToXml); a parent merges a child by inserting a deep
// copy of the child's first element at the end of its own. Attribute values are UTF-8 on both
// builds (no character is lost to the system code page on the way to the agent). Built and
// rendered on the operation's thread; held by shared pointer.
#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "common/xml/xml_doc.h"
#include "oracle/logs/arch_log_info.h"

namespace specific::oracle {

class COracleProps {
 public:
  virtual ~COracleProps() = default;
  // A new document whose one root element stands for this record.
  virtual xml::xml_doc_ptr_t ToXml() const = 0;

  bool isError = false;
  std::u16string errorDescription;
};

using oracle_props_ptr_t = std::shared_ptr<COracleProps>;

// One file of a database: path and size in bytes, as the server returned them.
class CDbFileProps : public COracleProps {
 public:
  CDbFileProps() = default;
  CDbFileProps(std::u16string path_, std::u16string size_)
      : path(std::move(path_)), size(std::move(size_)) {}
  xml::xml_doc_ptr_t ToXml() const override;  // <dbfile path size/>

  std::u16string path;
  std::u16string size;
};

using db_file_list_t = std::vector<std::shared_ptr<CDbFileProps>>;

// One plugged database of a container database.
struct SPdbProps {
  std::u16string name;
  std::u16string guid;
};

// One database: the `database` element, in its collected or its error form.
class CDatabaseProps : public COracleProps {
 public:
  // Zeroes the flags and stamps timeUtc with the current UTC time, "YYYY-MM-DDThh:mm:ss".
  CDatabaseProps();
  xml::xml_doc_ptr_t ToXml() const override;

  std::u16string name;
  std::u16string globalName;
  std::u16string recoveryFileDest;
  std::u16string sid;
  std::u16string localListener;
  std::u16string remoteListener;
  bool archiveLogsOn = false;
  bool isReadonly = false;
  bool reverted = false;
  std::u16string config;
  std::u16string id;
  std::u16string lastScn;
  std::u16string lastLogNum;
  std::u16string maxLogRecId;
  std::u16string maxLogStamp;
  db_file_list_t controlFiles;
  db_file_list_t dataFiles;
  db_file_list_t logFiles;
  db_file_list_t tempFiles;
  std::map<std::u16string, std::string> logGroups;  // redo member path -> group number
  arch_log_list_t archivedLogs;
  std::u16string timeUtc;
  std::u16string pwdFilePath;
  std::string pfile;  // base64 of the parameter file, already narrow
  std::vector<SPdbProps> pdbs;
};

// One disk of an ASM instance: its group's name, its path and its mode status.
class CAsmDiskProps : public COracleProps {
 public:
  xml::xml_doc_ptr_t ToXml() const override;  // <disk name path state/>

  std::u16string name;
  std::u16string path;
  std::u16string state;
};

// One ASM instance: the `asm` element with its disks.
class CAsmInstanceProps : public COracleProps {
 public:
  explicit CAsmInstanceProps(std::u16string sid_) : sid(std::move(sid_)) {}
  xml::xml_doc_ptr_t ToXml() const override;

  std::u16string sid;
  std::vector<std::shared_ptr<CAsmDiskProps>> disks;
};

// One Oracle home: the `home` element with its databases and ASM instances.
class CHomeProps : public COracleProps {
 public:
  explicit CHomeProps(std::u16string name_) : name(std::move(name_)) {}
  xml::xml_doc_ptr_t ToXml() const override;

  std::u16string name;
  std::u16string version;
  std::u16string path;
  std::u16string desc;
  std::vector<oracle_props_ptr_t> instances;
};

// Facts of the machine written on the root element.
struct CEnvProps {
  std::u16string serverName;  // fully qualified computer name
  std::u16string osName;      // operating system name
  int32_t timeZone = 0;       // current offset from UTC in quarter hours, positive east
};

// The root `OracleOverall` element.
class COverallProps : public COracleProps {
 public:
  xml::xml_doc_ptr_t ToXml() const override;

  std::vector<std::shared_ptr<CHomeProps>> homes;
  std::shared_ptr<CEnvProps> env;
};

}  // namespace specific::oracle
