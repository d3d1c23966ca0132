// The tables of the camera's and the access point's sections.
//
// section_rows.h defines the rows, sections.h describes the fields. The getters and setters
// that walk these tables are in wireless_sections.cpp.
#ifndef PROREFLAX_ACCESSORS_WIRELESS_TABLES_H
#define PROREFLAX_ACCESSORS_WIRELESS_TABLES_H

#include <proreflax/sections.h>

#include "accessors/section_rows.h"

namespace proreflax {

// One row per field, even if several fit on a line.
// clang-format off

template <>
struct section<snxcam_info> {
  using record = snxcam_info;
  static constexpr char name[] = "SNXCAM";
  static constexpr row rows[] = {
      FIELD("framerate", framerate),
      FIELD("width", width),
      FIELD("height", height),
      FIELD("compress", compress),
      FIELD("brightness", brightness),
      FIELD("contrast", contrast),
      FIELD("gamma", gamma),
      FIELD("hue", hue),
      FIELD("saturation", saturation),
      FIELD("sharpness", sharpness),
      FIELD("flicker", flicker),
  };
};

template <>
struct section<ovcam_info> {
  using record = ovcam_info;
  static constexpr char name[] = "OVCAM";
  static constexpr row rows[] = {
      FIELD("framerate", framerate),
      FIELD("width", width),
      FIELD("height", height),
      FIELD("compress", compress),
      FIELD("brightness", brightness),
      FIELD("contrast", contrast),
      FIELD("saturation", saturation),
      FIELD("light_freq", light_freq),
      FIELD("mirror", mirror),
      FIELD("flip", flip),
      FIELD("led_control", led_control),
  };
};

template <>
struct section<wls_domain_info> {
  using record = wls_domain_info;
  static constexpr char name[] = "WLS_DOMAIN";
  static constexpr row rows[] = {
      FIELD("test[%d]", test),
      FIELD("status", status),
      FIELD("zone_num", zone_num),
      FIELD("channel_list", channel_list),
      FIELD("choiced_channel_numbers", choiced_channel_numbers),
      FIELD("choiced_channel_list", choiced_channel_list),
      FIELD("domain_name", domain_name),
  };
};

template <>
struct section<wireless_config> {
  using record = wireless_config;
  static constexpr char name[] = "WIRELESS";
  static constexpr row rows[] = {
      FIELD("enabled", enabled),
      FIELD("conn_type", conn_type),
      FIELD("domain", domain),
      FIELD("channel", channel),
      FIELD("essid", essid),
      FIELD("apmac", apmac),
      FIELD("hessid", hessid),
      FIELD("beacon_interval", beacon_interval),
      FIELD("rts_threshold", rts_threshold),
      FIELD("fg_threshold", fg_threshold),
      FIELD("dtim_interval", dtim_interval),
      FIELD("basic_rate_flag", basic_rate_flag),
      FIELD("tx_rate_flag", tx_rate_flag),
      FIELD("preamble_type_flag", preamble_type_flag),
      FIELD("ap_power", ap_power),
      FIELD("wan_port_link", wan_port_link),
      FIELD("user_isolate", user_isolate),
      FIELD("user_access", user_access),
      FIELD("load_balance", load_balance),
      FIELD("ssid_any", ssid_any),
      FIELD("enhanced_security", enhanced_security),
      FIELD("auth_type", auth_type),
      FIELD("accesscontrol", accesscontrol),
      FIELD("wepkey", wepkey),
      FIELD("default_key", default_key),
      FIELD("wepkey_1", wepkey_1),
      FIELD("wepkey_2", wepkey_2),
      FIELD("wepkey_3", wepkey_3),
      FIELD("wepkey_4", wepkey_4),
      FIELD("encryModeSel", encryModeSel),
      FIELD("max_users_allow", max_users_allow),
      FIELD("rfmode", rfmode),
      FIELD("wds_mode", wds_mode),
      FIELD("tx_rate", tx_rate),
      FIELD("key_select", key_select),
  };
};

template <>
struct section<wileless_wepkey_cfg> {
  using record = wileless_wepkey_cfg;
  static constexpr char name[] = "WLS_WEP";
  static constexpr row rows[] = {
      FIELD("keylength", keylength),
      FIELD("keytype", keytype),
      FIELD("manualtype", manualtype),
      FIELD("default_key", default_key),
      FIELD("wep_passphrase", wep_passphrase),
      FIELD("wep_key_0", wep_key_0),
      FIELD("wep_key_1", wep_key_1),
      FIELD("wep_key_2", wep_key_2),
      FIELD("wep_key_3", wep_key_3),
  };
};

template <>
struct section<wls_cfg_ext> {
  using record = wls_cfg_ext;
  static constexpr char name[] = "WLS_EXT";
  static constexpr row rows[] = {
      FIELD("ext_flag", ext_flag),
      FIELD("op_mode", op_mode),
      FIELD("hostap_1x_flags", hostap_1x_flags),
      FIELD("svr_addr", svr_addr),
      FIELD("svr_port", svr_port),
      FIELD("svr_shared_secret", svr_shared_secret),
      FIELD("key_timeout", key_timeout),
  };
};

template <>
struct section<wls_wpa_cfg> {
  using record = wls_wpa_cfg;
  static constexpr char name[] = "WLS_WPA";
  static constexpr row rows[] = {
      FIELD("wpa_key_type", wpa_key_type),
      FIELD("wpa_key_auto", wpa_key_auto),
      FIELD("passphrase", passphrase),
      FIELD("PMK", PMK),
      FIELD("key_timeout", key_timeout),
  };
};

template <>
struct section<wls_mac_ac> {
  using record = wls_mac_ac;
  static constexpr char name[] = "WLS_ACL";
  static constexpr row rows[] = {
      FIELD("macFilters[%d]", macFilters),
  };
};

template <>
struct section<wls_wds_cfg> {
  using record = wls_wds_cfg;
  static constexpr char name[] = "WLS_WDS";
  static constexpr row rows[] = {
      FIELD("enable", enable),
      FIELD("macaddr[%d]", macaddr),
  };
};

template <>
struct section<dhcp_cfg> {
  using record = dhcp_cfg;
  static constexpr char name[] = "DHCP";
  static constexpr row rows[] = {
      FIELD("srv_flag", srv_flag),
      IP_FIELD("start_ip", start_ip),
      IP_FIELD("end_ip", end_ip),
      FIELD("Lease_Time", Lease_Time),
      FIELD("interface", interface),
  };
};

template <>
struct section<pppoe_cfg> {
  using record = pppoe_cfg;
  static constexpr char name[] = "PPPOE";
  static constexpr row rows[] = {
      FIELD("interface", interface),
      FIELD("user", user),
      FIELD("passwd", passwd),
      FIELD("mss", mss),
  };
};

template <>
struct section<user_mgmt_cfg> {
  using record = user_mgmt_cfg;
  static constexpr char name[] = "USER_MGMT";
  static constexpr row rows[] = {
      FIELD("records[%d]", records),
  };
};

// clang-format on

}  // namespace proreflax

#endif
