#include "vss_services.h"

#include "support/svc_machine.h"

namespace dsl_test {

vss_services_t::vss_services_t(const std::string& fixture)
    : machine_(std::make_unique<svc_machine_t>(fixture_path(fixture))) {}

vss_services_t::~vss_services_t() = default;

}  // namespace dsl_test
