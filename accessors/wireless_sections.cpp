// Getters and setters of the sections in wireless_tables.h.
#include "accessors/section_engine.h"
#include "accessors/wireless_tables.h"

using namespace proreflax;

std::uint32_t gui_get_snxcam_info(snxcam_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_snxcam_info(const snxcam_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_ovcam_info(ovcam_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_ovcam_info(const ovcam_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_wls_domain_info(wls_domain_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_wls_domain_info(const wls_domain_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_wireless_config(wireless_config* out) {
  return get_record(out);
}

std::uint32_t gui_set_wireless_config(const wireless_config* in) {
  return set_record(in);
}

std::uint32_t gui_get_wileless_wepkey_cfg(wileless_wepkey_cfg* out) {
  return get_record(out);
}

std::uint32_t gui_set_wileless_wepkey_cfg(const wileless_wepkey_cfg* in) {
  return set_record(in);
}

std::uint32_t gui_get_wls_cfg_ext(wls_cfg_ext* out) {
  return get_record(out);
}

std::uint32_t gui_set_wls_cfg_ext(const wls_cfg_ext* in) {
  return set_record(in);
}

std::uint32_t gui_get_wls_wpa_cfg(wls_wpa_cfg* out) {
  return get_record(out);
}

std::uint32_t gui_set_wls_wpa_cfg(const wls_wpa_cfg* in) {
  return set_record(in);
}

std::uint32_t gui_get_wls_mac_ac(wls_mac_ac* out) {
  return get_record(out);
}

std::uint32_t gui_set_wls_mac_ac(const wls_mac_ac* in) {
  return set_record(in);
}

std::uint32_t gui_get_wls_wds_cfg(wls_wds_cfg* out) {
  return get_record(out);
}

std::uint32_t gui_set_wls_wds_cfg(const wls_wds_cfg* in) {
  return set_record(in);
}

std::uint32_t gui_get_dhcp_cfg(dhcp_cfg* out) {
  return get_record(out);
}

std::uint32_t gui_set_dhcp_cfg(const dhcp_cfg* in) {
  return set_record(in);
}

std::uint32_t gui_get_pppoe_cfg(pppoe_cfg* out) {
  return get_record(out);
}

std::uint32_t gui_set_pppoe_cfg(const pppoe_cfg* in) {
  return set_record(in);
}

std::uint32_t gui_get_user_mgmt_cfg(user_mgmt_cfg* out) {
  return get_record(out);
}

std::uint32_t gui_set_user_mgmt_cfg(const user_mgmt_cfg* in) {
  return set_record(in);
}
