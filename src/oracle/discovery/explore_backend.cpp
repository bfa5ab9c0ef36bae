// The product's side of the explore flow: the registry scan, real sessions and collectors,
// the file system and the platform's facts.
#include "oracle/client/oracle_query.h"
#include "oracle/client/oracle_session.h"
#include "oracle/client/session_holder.h"
#include "oracle/discovery/env_props.h"
#include "oracle/discovery/explore_flow.h"
#include "oracle/discovery/ora_sid_collector.h"
#include "oracle/discovery/oracle_homes.h"

namespace specific::oracle {

namespace {

class CHolderSession : public CExploreSession {
 public:
  explicit CHolderSession(std::shared_ptr<COracleSessionHolder> holder)
      : holder_(std::move(holder)), session_(holder_->get_session()) {}

  bool is_instance_open(bool assumeOpen) override { return session_->is_instance_open(assumeOpen); }
  bool is_database_active() override { return session_->is_database_active(); }
  bool is_version_below_11() override {
    if (!session_->is_version_below_11()) session_->read_version();
    return *session_->is_version_below_11();
  }
  std::u16string get_database_name() override { return session_->get_database_name(); }
  bool archive_log_on() override {
    bool readOnly = false;
    bool archiveLog = false;
    session_->get_database_options(readOnly, archiveLog);
    return archiveLog;
  }
  std::u16string sid() const override { return holder_->get_sid(); }
  std::u16string instance_version() override {
    return holder_->make_query()->single_value("SELECT version FROM V$INSTANCE", true);
  }
  std::u16string version_banner() override {
    return holder_->make_query()->single_value(
        "SELECT * FROM V$VERSION WHERE BANNER LIKE 'Oracle%'", true);
  }
  oracle_props_ptr_t collect(const SOracleSid& instance, std::shared_ptr<SDbLogRecInfo> logRecInfo,
                             bool option) override {
    if (instance.isAsm) return CAsmInfoCollector(holder_, instance).Collect();
    return CDbInfoCollector(holder_, instance, std::move(logRecInfo), option).Collect();
  }

 private:
  std::shared_ptr<COracleSessionHolder> holder_;
  std::shared_ptr<COracleSession> session_;
};

class CProductBackend : public CExploreBackend {
 public:
  std::vector<SOracleSid> find_instances() override {
    const COracleHomes homes;
    return std::vector<SOracleSid>(homes.begin(), homes.end());
  }
  std::unique_ptr<CExploreSession> connect(const SOracleSid& instance, const conn_t& conn) override {
    return std::make_unique<CHolderSession>(std::make_shared<COracleSessionHolder>(
        instance.sid, instance.home, conn, /*prelimAuth=*/false));
  }
  std::u16string parameter_file(const SOracleSid& instance) override {
    return find_parameter_file(instance);
  }
  std::shared_ptr<CEnvProps> environment() override { return collect_env_props(); }
};

}  // namespace

std::unique_ptr<CExploreBackend> make_explore_backend() {
  return std::make_unique<CProductBackend>();
}

}  // namespace specific::oracle
