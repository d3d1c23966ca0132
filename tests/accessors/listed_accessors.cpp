#include "tests/accessors/listed_accessors.h"

#include <proreflax/sections.h>

#include <stdexcept>
#include <string>

namespace {

/// A getter takes the record that is named after it; a setter takes the same one, to read only.
template <typename Record, std::uint32_t (*Get)(Record*), std::uint32_t (*Set)(const Record*)>
constexpr accessor_pair on_record(std::string_view getter, std::string_view setter) {
  return {getter, setter, [](void* record) { return Get(static_cast<Record*>(record)); },
          [](const void* record) { return Set(static_cast<const Record*>(record)); }};
}

struct web_password {
  char user_name[32];
  char password[32];
};

std::uint32_t get_web_password(void* arguments) {
  auto* login = static_cast<web_password*>(arguments);
  return gui_get_web_password(login->user_name, login->password);
}

std::uint32_t set_web_password(const void* arguments) {
  const auto* login = static_cast<const web_password*>(arguments);
  return gui_set_web_password(login->user_name, login->password);
}

struct lan_ip_setting {
  std::uint32_t address;
  std::uint32_t netmask;
};

std::uint32_t get_lan_ip_setting(void* arguments) {
  auto* setting = static_cast<lan_ip_setting*>(arguments);
  return gui_get_lan_ip_setting(&setting->address, &setting->netmask);
}

std::uint32_t set_lan_ip_setting(const void* arguments) {
  const auto* setting = static_cast<const lan_ip_setting*>(arguments);
  return gui_set_lan_ip_setting(setting->address, setting->netmask);
}

#define ACCESSORS(record, getter, setter) on_record<record, getter, setter>(#getter, #setter),

constexpr accessor_pair pairs[] = {
#include "listed_accessors.inc"
    on_record<char, gui_get_sysbase_info, gui_set_sysbase_info>("gui_get_sysbase_info",
                                                                "gui_set_sysbase_info"),
    on_record<char, get_device_cfg, set_device_cfg>("get_device_cfg", "set_device_cfg"),
    {"gui_get_web_password", "gui_set_web_password", get_web_password, set_web_password},
    {"gui_get_lan_ip_setting", "gui_set_lan_ip_setting", get_lan_ip_setting, set_lan_ip_setting},
};

}  // namespace

const accessor_pair& accessors_of(std::string_view getter) {
  for (const accessor_pair& each : pairs) {
    if (each.getter == getter) {
      return each;
    }
  }
  throw std::runtime_error("no accessor: " + std::string{getter});
}
