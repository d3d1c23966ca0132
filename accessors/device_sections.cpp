// Getters and setters of the sections in device_tables.h, and the two pairs that have no record:
// the web login, and the two addresses of section LAN that make the device reachable.
#include <proreflax/config.h>

#include "accessors/device_tables.h"
#include "accessors/section_engine.h"
#include "transport/lock.h"

using namespace proreflax;

namespace {

/// The two sections of a single string: their accessors take the string, which is the whole record.
template <typename Record>
std::uint32_t get_string(char* string) {
  return get_section(table_of<Record>(), string);
}

template <typename Record>
std::uint32_t set_string(const char* string) {
  return set_section(table_of<Record>(), string);
}

constexpr int locked = 1;
constexpr std::uint32_t login_bytes = 32;  // size of a name or a password, NUL included

}  // namespace

std::uint32_t gui_get_sysbase_info(char* firmware_ver) {
  return get_string<sysbase_info>(firmware_ver);
}

std::uint32_t gui_set_sysbase_info(const char* firmware_ver) {
  return set_string<sysbase_info>(firmware_ver);
}

std::uint32_t get_device_cfg(char* opt) {
  return get_string<device_cfg>(opt);
}

std::uint32_t set_device_cfg(const char* opt) {
  return set_string<device_cfg>(opt);
}

std::uint32_t get_sensors_cfg(sensors_cfg* out) {
  return get_record(out);
}

std::uint32_t set_sensors_cfg(const sensors_cfg* in) {
  return set_record(in);
}

std::uint32_t get_gsm_cfg(gsm_cfg* out) {
  return get_record(out);
}

std::uint32_t set_gsm_cfg(const gsm_cfg* in) {
  return set_record(in);
}

std::uint32_t get_reporting_cfg(reporting_cfg* out) {
  return get_record(out);
}

std::uint32_t set_reporting_cfg(const reporting_cfg* in) {
  return set_record(in);
}

std::uint32_t get_poll2_cfg(poll2_cfg* out) {
  return get_record(out);
}

std::uint32_t set_poll2_cfg(const poll2_cfg* in) {
  return set_record(in);
}

std::uint32_t get_poll3_cfg(poll3_cfg* out) {
  return get_record(out);
}

std::uint32_t set_poll3_cfg(const poll3_cfg* in) {
  return set_record(in);
}

std::uint32_t get_upload_cfg(upload_cfg* out) {
  return get_record(out);
}

std::uint32_t set_upload_cfg(const upload_cfg* in) {
  return set_record(in);
}

std::uint32_t get_ipfilter_cfg(ipfilter_cfg* out) {
  return get_record(out);
}

std::uint32_t set_ipfilter_cfg(const ipfilter_cfg* in) {
  return set_record(in);
}

std::uint32_t get_xmpp_cfg(xmpp_cfg* out) {
  return get_record(out);
}

std::uint32_t set_xmpp_cfg(const xmpp_cfg* in) {
  return set_record(in);
}

std::uint32_t get_psses_cfg(psses_cfg* out) {
  return get_record(out);
}

std::uint32_t set_psses_cfg(const psses_cfg* in) {
  return set_record(in);
}

std::uint32_t get_smsgw_cfg(smsgw_cfg* out) {
  return get_record(out);
}

std::uint32_t set_smsgw_cfg(const smsgw_cfg* in) {
  return set_record(in);
}

std::uint32_t get_harules_cfg(harules_cfg* out) {
  return get_record(out);
}

std::uint32_t set_harules_cfg(const harules_cfg* in) {
  return set_record(in);
}

std::uint32_t get_db_cfg(db_cfg* out) {
  return get_record(out);
}

std::uint32_t set_db_cfg(const db_cfg* in) {
  return set_record(in);
}

// ---- Without a record ---------------------------------------------------------------------------

std::uint32_t gui_get_web_password(char* user_name, char* password) {
  if (user_name == nullptr || password == nullptr) {
    return CFC_FAILED;
  }
  return with_lock([=] {
    const std::uint32_t result =
        __cfc_get_string(locked, "WEBLOG", "user_name", user_name, login_bytes);
    return result != CFC_OK ? result
                            : __cfc_get_string(locked, "WEBLOG", "password", password, login_bytes);
  });
}

// Unlike the getter, this does not test for null: the typed operation of each value refuses it.
std::uint32_t gui_set_web_password(const char* user_name, const char* password) {
  return with_lock([=] {
    const std::uint32_t result = __cfc_set_string(locked, "WEBLOG", "user_name", user_name);
    return result != CFC_OK ? result : __cfc_set_string(locked, "WEBLOG", "password", password);
  });
}

std::uint32_t gui_get_lan_ip_setting(std::uint32_t* address, std::uint32_t* netmask) {
  return with_lock([=] {
    const std::uint32_t result = __cfc_get_ip(locked, "LAN", "LanIPAddr", address);
    return result != CFC_OK ? result : __cfc_get_ip(locked, "LAN", "LanNetmask", netmask);
  });
}

std::uint32_t gui_set_lan_ip_setting(std::uint32_t address, std::uint32_t netmask) {
  return with_lock([=] {
    const std::uint32_t result = __cfc_set_ip(locked, "LAN", "LanIPAddr", address);
    return result != CFC_OK ? result : __cfc_set_ip(locked, "LAN", "LanNetmask", netmask);
  });
}
