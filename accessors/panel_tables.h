// The tables of the alarm panel's and the network's sections.
//
// section_rows.h defines the rows, sections.h describes the fields. The getters and setters
// that walk these tables are in panel_sections.cpp.
#ifndef PROREFLAX_ACCESSORS_PANEL_TABLES_H
#define PROREFLAX_ACCESSORS_PANEL_TABLES_H

#include <proreflax/sections.h>

#include "accessors/section_rows.h"

namespace proreflax {

// One row per field, even if several fit on a line.
// clang-format off

template <>
struct section<pal_wl_info> {
  using record = pal_wl_info;
  static constexpr char name[] = "PANEL_WIRELESS";
  static constexpr row rows[] = {
      FIELD("wep_encryption", wep_encryption),
      FIELD("key_mode", key_mode),
  };
};

template <>
struct section<pal_polling_info> {
  using record = pal_polling_info;
  static constexpr char name[] = "PANEL_POLLING";
  static constexpr row rows[] = {
      FIELD("host", host),
      FIELD("port", port),
      FIELD("url", url),
      FIELD("url1", url1),
      FIELD("interval", interval),
  };
};

template <>
struct section<pal_ipvad_info> {
  using record = pal_ipvad_info;
  static constexpr char name[] = "PANEL_IPVAD";
  static constexpr row rows[] = {
      FIELD("enable", enable),
      FIELD("host", host),
      FIELD("port", port),
      FIELD("name", name),
      FIELD("desc", desc),
  };
};

template <>
struct section<pal_ddns_info> {
  using record = pal_ddns_info;
  static constexpr char name[] = "PANEL_DDNS";
  static constexpr row rows[] = {
      FIELD("domain", domain),
      FIELD("port", port),
  };
};

template <>
struct section<center_ip_info> {
  using record = center_ip_info;
  static constexpr char name[] = "PANEL_CENTER_IP";
  static constexpr row rows[] = {
      FIELD("center_ip", center_ip),
      FIELD("center_port", center_port),
  };
};

template <>
struct section<version_info> {
  using record = version_info;
  static constexpr char name[] = "PANEL_VERSION";
  static constexpr row rows[] = {
      FIELD("signature", signature),
  };
};

template <>
struct section<sntp_info> {
  using record = sntp_info;
  static constexpr char name[] = "PANEL_SNTP_TIME";
  static constexpr row rows[] = {
      FIELD("sync", sync),
      FIELD("tz", tz),
      FIELD("timesvr", timesvr),
  };
};

template <>
struct section<opts_info> {
  using record = opts_info;
  static constexpr char name[] = "PANEL_OPTS";
  static constexpr row rows[] = {
      FIELD("key01", key01),
      FIELD("key02", key02),
      FIELD("key03", key03),
      FIELD("key04", key04),
      FIELD("key05", key05),
      FIELD("key06", key06),
      FIELD("key07", key07),
      FIELD("key08", key08),
      FIELD("key09", key09),
      FIELD("key10", key10),
  };
};

template <>
struct section<upnp_info> {
  using record = upnp_info;
  static constexpr char name[] = "UPNP";
  static constexpr row rows[] = {
      FIELD("upnpd", upnpd),
      FIELD("port_redir", port_redir),
      FIELD("web_port", web_port),
      FIELD("web_ext_port", web_ext_port),
      FIELD("web_proto", web_proto),
  };
};

template <>
struct section<lan_info> {
  using record = lan_info;
  static constexpr char name[] = "LAN";
  static constexpr row rows[] = {
      FIELD("ConnType", ConnType),
      IP_FIELD("LanIPAddr", LanIPAddr),
      IP_FIELD("LanNetmask", LanNetmask),
      IP_FIELD("LanGw", LanGw),
      IP_FIELD("DnsSrv1", DnsSrv1),
      IP_FIELD("DnsSrv2", DnsSrv2),
  };
};

template <>
struct section<sntpc_info> {
  using record = sntpc_info;
  static constexpr char name[] = "SNTPC";
  static constexpr row rows[] = {
      FIELD("enable", enable),
      FIELD("ipsel", ipsel),
      IP_FIELD("server_ip", server_ip),
      IP_FIELD("server_ip2", server_ip2),
      FIELD("tzid", tzid),
      FIELD("tzdetail", tzdetail),
      FIELD("dststatus", dststatus),
  };
};

template <>
struct section<ddns_info> {
  using record = ddns_info;
  static constexpr char name[] = "DDNS";
  static constexpr row rows[] = {
      FIELD("enable", enable),
      FIELD("user", user),
      FIELD("passwd", passwd),
      FIELD("domain", domain),
      FIELD("server", server),
  };
};

template <>
struct section<smtpc_info> {
  using record = smtpc_info;
  static constexpr char name[] = "SMTPC";
  static constexpr row rows[] = {
      FIELD("enable", enable),
      FIELD("user", user),
      FIELD("passwd", passwd),
      FIELD("sender", sender),
      FIELD("receipt", receipt),
      FIELD("server", server),
  };
};

template <>
struct section<system_uts_info> {
  using record = system_uts_info;
  static constexpr char name[] = "SYSTEMUTS";
  static constexpr row rows[] = {
      FIELD("hostname", hostname),
      FIELD("domainname", domainname),
      FIELD("realm_name", realm_name),
      FIELD("webs_port", webs_port),
  };
};

template <>
struct section<surv_info> {
  using record = surv_info;
  static constexpr char name[] = "SURVEILLANCE";
  static constexpr row rows[] = {
      FIELD("ip[%d]", ip),
      FIELD("port[%d]", port),
      FIELD("user[%d]", user),
      FIELD("passwd[%d]", passwd),
      FIELD("name[%d]", name),
  };
};

template <>
struct section<surv2_info> {
  using record = surv2_info;
  static constexpr char name[] = "SURV2";
  static constexpr row rows[] = {
      FIELD("opt[%d]", opt),
  };
};

template <>
struct section<usersdb_info> {
  using record = usersdb_info;
  static constexpr char name[] = "USERS_DB";
  static constexpr row rows[] = {
      FIELD("name[%d]", name),
      FIELD("passwd[%d]", passwd),
      FIELD("policy[%d]", policy),
  };
};

template <>
struct section<rptipsdb_info> {
  using record = rptipsdb_info;
  static constexpr char name[] = "RPTIPS_DB";
  static constexpr row rows[] = {
      FIELD("host[%d]", host),
      FIELD("port[%d]", port),
  };
};

// clang-format on

}  // namespace proreflax

#endif
