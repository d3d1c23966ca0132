// Prints the device's addresses, and again what has changed whenever a program changes them.
//
//   watch_lan [SECONDS]    asks every so many seconds, 5 unless told otherwise
//
// The service sends no notices: a watcher asks. A section is read as one, so a change is never seen
// halfway. A service that is being restarted is waited for.
#include <proreflax/config.h>
#include <proreflax/result_text.h>
#include <proreflax/sections.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <thread>

namespace {

std::string dotted(std::uint32_t address) {
  char text[16];
  return translate_u32_to_ip(text, sizeof text, address) == 0 ? text : "?";
}

void print_if_changed(const char* name, std::uint32_t lan_info::*field, const lan_info& now,
                      const std::optional<lan_info>& before) {
  if (!before) {
    std::cout << name << ' ' << dotted(now.*field) << std::endl;
  } else if ((*before).*field != now.*field) {
    std::cout << name << ' ' << dotted((*before).*field) << " -> " << dotted(now.*field)
              << std::endl;
  }
}

void print_changes(const lan_info& now, const std::optional<lan_info>& before) {
  print_if_changed("address", &lan_info::LanIPAddr, now, before);
  print_if_changed("netmask", &lan_info::LanNetmask, now, before);
  print_if_changed("gateway", &lan_info::LanGw, now, before);
  print_if_changed("dns1", &lan_info::DnsSrv1, now, before);
  print_if_changed("dns2", &lan_info::DnsSrv2, now, before);
}

}  // namespace

int main(int argc, char** argv) {
  const std::chrono::seconds pause{argc > 1 ? std::atoi(argv[1]) : 5};
  std::optional<lan_info> before;
  for (;; std::this_thread::sleep_for(pause)) {
    lan_info now;
    const std::uint32_t result = gui_get_lan_info(&now);
    if (result == CFC_OK) {
      print_changes(now, before);
      before = now;
    } else if (result != CFC_ERR_NO_SEM && result != CFC_ERR_NO_MSQ) {
      std::cerr << "watch_lan: cannot read section LAN: " << cfc_result_text(result) << " ("
                << result << ")\n";
      return 1;
    }
  }
}
