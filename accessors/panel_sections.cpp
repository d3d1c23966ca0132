// Getters and setters of the sections in panel_tables.h.
#include "accessors/panel_tables.h"
#include "accessors/section_engine.h"

using namespace proreflax;

std::uint32_t gui_get_pal_wl_info(pal_wl_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_pal_wl_info(const pal_wl_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_pal_polling_info(pal_polling_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_pal_polling_info(const pal_polling_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_pal_ipvad_info(pal_ipvad_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_pal_ipvad_info(const pal_ipvad_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_pal_ddns_info(pal_ddns_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_pal_ddns_info(const pal_ddns_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_center_ip_info(center_ip_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_center_ip_info(const center_ip_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_version_info(version_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_version_info(const version_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_sntp_info(sntp_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_sntp_info(const sntp_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_opts_info(opts_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_opts_info(const opts_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_upnp_info(upnp_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_upnp_info(const upnp_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_lan_info(lan_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_lan_info(const lan_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_sntpc_info(sntpc_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_sntpc_info(const sntpc_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_ddns_info(ddns_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_ddns_info(const ddns_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_smtpc_info(smtpc_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_smtpc_info(const smtpc_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_system_uts_info(system_uts_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_system_uts_info(const system_uts_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_surv_info(surv_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_surv_info(const surv_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_surv2_info(surv2_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_surv2_info(const surv2_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_usersdb_info(usersdb_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_usersdb_info(const usersdb_info* in) {
  return set_record(in);
}

std::uint32_t gui_get_rptipsdb_info(rptipsdb_info* out) {
  return get_record(out);
}

std::uint32_t gui_set_rptipsdb_info(const rptipsdb_info* in) {
  return set_record(in);
}
