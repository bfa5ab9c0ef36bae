// Until the rendering of the property records is in this tree, the two members the collector
// needs of them are stood in for here: the constructor's stamp and the vtables. The records'
// own file replaces this one as soon as it exists; these tests never render a record.
#if !__has_include("oracle/discovery/oracle_props.cpp")
#include <ctime>
#include <stdexcept>

#include "common/text/convert.h"
#include "oracle/discovery/oracle_props.h"

namespace specific::oracle {

CDatabaseProps::CDatabaseProps() {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
#if defined(_WIN32)
  gmtime_s(&utc, &now);
#else
  gmtime_r(&now, &utc);
#endif
  char text[64];
  std::snprintf(text, sizeof text, "%4d-%02d-%02dT%02d:%02d:%02d", utc.tm_year + 1900,
                utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min, utc.tm_sec);
  timeUtc = util::from_utf8(text);
}

xml::xml_doc_ptr_t CDatabaseProps::ToXml() const {
  throw std::logic_error("record rendering is not part of this build");
}

xml::xml_doc_ptr_t CDbFileProps::ToXml() const {
  throw std::logic_error("record rendering is not part of this build");
}

}  // namespace specific::oracle
#endif
