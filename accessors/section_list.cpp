#include "accessors/section_list.h"

#include "accessors/device_tables.h"
#include "accessors/panel_tables.h"
#include "accessors/wireless_tables.h"

namespace proreflax {

// One row per field, even if several fit on a line.
// clang-format off

template <>
struct section<web_login> {
  using record = web_login;
  static constexpr char name[] = "WEBLOG";
  static constexpr row rows[] = {
      FIELD("user_name", user_name),
      FIELD("password", password),
  };
};

namespace {

template <typename Record>
constexpr listed_section listed() {
  return {table_of<Record>(), sizeof(Record), alignof(Record)};
}

constexpr listed_section sections[] = {
    listed<pal_wl_info>(),
    listed<pal_polling_info>(),
    listed<pal_ipvad_info>(),
    listed<pal_ddns_info>(),
    listed<center_ip_info>(),
    listed<version_info>(),
    listed<sntp_info>(),
    listed<opts_info>(),
    listed<upnp_info>(),
    listed<lan_info>(),
    listed<sntpc_info>(),
    listed<ddns_info>(),
    listed<smtpc_info>(),
    listed<system_uts_info>(),
    listed<surv_info>(),
    listed<surv2_info>(),
    listed<usersdb_info>(),
    listed<rptipsdb_info>(),
    listed<snxcam_info>(),
    listed<ovcam_info>(),
    listed<wls_domain_info>(),
    listed<wireless_config>(),
    listed<wileless_wepkey_cfg>(),
    listed<wls_cfg_ext>(),
    listed<wls_wpa_cfg>(),
    listed<wls_mac_ac>(),
    listed<wls_wds_cfg>(),
    listed<dhcp_cfg>(),
    listed<pppoe_cfg>(),
    listed<user_mgmt_cfg>(),
    listed<sysbase_info>(),
    listed<device_cfg>(),
    listed<sensors_cfg>(),
    listed<gsm_cfg>(),
    listed<reporting_cfg>(),
    listed<poll2_cfg>(),
    listed<poll3_cfg>(),
    listed<upload_cfg>(),
    listed<ipfilter_cfg>(),
    listed<xmpp_cfg>(),
    listed<psses_cfg>(),
    listed<smsgw_cfg>(),
    listed<harules_cfg>(),
    listed<db_cfg>(),
    listed<web_login>(),
};

// clang-format on

}  // namespace

std::span<const listed_section> all_sections() {
  return sections;
}

}  // namespace proreflax
