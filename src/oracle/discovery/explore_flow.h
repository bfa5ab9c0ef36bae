// The explore flow: from the agent's input text to the explored document. It parses the input,
// finds the instances, groups them by home name, decides instance by instance whether to
// collect, skip or record an error, keeps or drops each home, and renders the document.
// Everything that reaches outside (the registry scan, sessions, collectors, the parameter-file
// lookup, the machine's facts) stands behind CExploreBackend, so that the logic can be run
// with fakes. One call runs on the caller's thread from start to end; instances are served one
// after the other.
#pragma once
#include <memory>
#include <string>
#include <vector>

#include "oracle/client/conn.h"
#include "oracle/discovery/explore_db_config.h"
#include "oracle/discovery/oracle_props.h"
#include "oracle/discovery/oracle_sid.h"

namespace specific::oracle {

// What one call carries from the export to the collectors.
struct SExploreContext {
  bool option = false;  // also gather archived logs and parameter file content
  conn_t conn;          // user and password for every session
  CExploreDbConfig config;
};

// The outcome of one instance. Three shapes: collected (false, open, false, ""), skipped
// (false, true, true, "") and failed (true, open, false, text).
struct CSidCollectionError {
  bool failed = false;
  bool instanceOpen = false;  // kept for the log's reader; no decision looks at it
  bool skipped = false;
  std::string text;
};

// One instance's session, as the flow uses it.
class CExploreSession {
 public:
  virtual ~CExploreSession() = default;
  virtual bool is_instance_open(bool assumeOpen) = 0;
  virtual bool is_database_active() = 0;
  // Reads the version first when it has not been read on this session.
  virtual bool is_version_below_11() = 0;
  virtual std::u16string get_database_name() = 0;
  // The log mode of get database options: true for ARCHIVELOG.
  virtual bool archive_log_on() = 0;
  // The SID the session was made for (the VSS skip set records this one).
  virtual std::u16string sid() const = 0;
  // "SELECT version FROM V$INSTANCE" and the banner, both upper-cased.
  virtual std::u16string instance_version() = 0;
  virtual std::u16string version_banner() = 0;
  // The database or ASM collector over this session.
  virtual oracle_props_ptr_t collect(const SOracleSid& instance,
                                     std::shared_ptr<SDbLogRecInfo> logRecInfo, bool option) = 0;
};

class CExploreBackend {
 public:
  virtual ~CExploreBackend() = default;
  // The instances of this machine, in discovery order.
  virtual std::vector<SOracleSid> find_instances() = 0;
  // A session for the instance with the call's credentials; throws when there is none.
  virtual std::unique_ptr<CExploreSession> connect(const SOracleSid& instance,
                                                   const conn_t& conn) = 0;
  // The parameter file found by name; looks at the file system only.
  virtual std::u16string parameter_file(const SOracleSid& instance) = 0;
  virtual std::shared_ptr<CEnvProps> environment() = 0;
};

// The backend of the product: COracleHomes, session holders, the collectors, the file system
// and the platform's facts.
std::unique_ptr<CExploreBackend> make_explore_backend();

// SIDs and database names with this prefix are the library's own temporary instances.
extern const char16_t kTempSidPrefix[];  // u"TreloTmp"

class COracleExplorer {
 public:
  explicit COracleExplorer(CExploreBackend& backend) : backend_(backend) {}

  // The whole call: parse `configText` into the context, explore, render. Returns the
  // document as wide text. A failure of a common step (input, registry scan, environment,
  // rendering) rises with the trace line "Failed to explore oracle instances."; a failing
  // instance never does.
  std::u16string explore(bool option, const conn_t& conn, const std::u16string& configText);

  // The document for an already parsed context (steps 2 to 7), not yet rendered.
  xml::xml_doc_ptr_t build_document(const SExploreContext& context);

  // One home's instances; fills `home` and answers whether the home stays in the document.
  bool explore_home(const SExploreContext& context, CHomeProps& home,
                    const std::vector<SOracleSid>& instances);

  // One instance, with every failure turned into the outcome.
  CSidCollectionError collect_instance(const SExploreContext& context, CHomeProps& home,
                                       const SOracleSid& instance);

 private:
  bool should_skip(CExploreSession& session, bool isAsm);
  void record_skipped_vss_state(CExploreSession& session);
  void add_error_record(CHomeProps& home, const SOracleSid& instance,
                        const CSidCollectionError& outcome);

  CExploreBackend& backend_;
};

// Renders a document as the explore hands it out: one compact line.
std::string render_explored_document(const xml::xml_doc_ptr_t& doc);

}  // namespace specific::oracle
