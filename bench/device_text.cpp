#include "bench/device_text.h"

#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "store/paths.h"

namespace bench {
namespace {

constexpr std::array<std::string_view, device_section_count> names{
    "PANEL_WIRELESS",  "PANEL_POLLING", "PANEL_IPVAD", "PANEL_DDNS", "PANEL_CENTER_IP",
    "PANEL_SNTP_TIME", "PANEL_VERSION", "PANEL_OPTS",  "UPNP",       "LAN",
    "SNTPC",           "DDNS",          "SMTPC",       "SYSTEMUTS",  "SURVEILLANCE",
    "SURV2",           "USERS_DB",      "RPTIPS_DB",   "SNXCAM",     "OVCAM",
    "WLS_DOMAIN",      "WIRELESS",      "WLS_WEP",     "WLS_EXT",    "WLS_WPA",
    "WLS_ACL",         "WLS_WDS",       "DHCP",        "PPPOE",      "USER_MGMT",
    "SYSBASE",         "DEVICE",        "SENSORS",     "GSM",        "REPORTING",
    "POLL2",           "POLL3",         "UPLOAD",      "IPFILTER",   "XMPP",
    "PSSES",           "SMSGW",         "HARULES",     "DB",         "WEBLOG",
    "ALARM_DAEMON"};

struct stored_entry {
  std::string_view key;
  std::string_view value;
};

constexpr std::array vocabulary{
    std::to_array<stored_entry>({{"ConnType", "0x00000001"},
                                 {"LanIPAddr", "192.168.62.1"},
                                 {"LanNetmask", "255.255.255.0"},
                                 {"LanGw", "192.168.62.254"},
                                 {"DnsSrv1", "10.0.0.53"},
                                 {"enable", "0x00000001"},
                                 {"host", "center.example.net"},
                                 {"port", "0x00000050"},
                                 {"url", "http://center.example.net/report"},
                                 {"interval", "0x0000003c"},
                                 {"tz", "CET-1CEST,M3.5.0,M10.5.0/3"},
                                 {"hostname", "gateway"},
                                 {"user", "operator"},
                                 {"passwd", "correct-horse"},
                                 {"framerate", "0x0019"},
                                 {"brightness", "0x0080"},
                                 {"essid", "front-door"},
                                 {"apmac", "0x5a0c4e9b7d00"},
                                 {"beacon_interval", "0x00000064"},
                                 {"rts_threshold", "0x0000092b"},
                                 {"preamble_type_flag", "0x00000000"},
                                 {"wep_passphrase", "0x000000000000000000000000007961746e69726f"},
                                 {"svr_shared_secret", "0x73656372657473656372657473656372"},
                                 {"key_timeout", "0x00000e10"},
                                 {"macFilters[0]", "0x00224fd6a1b0"},
                                 {"macFilters[1]", "0x00224fd6a1b1"},
                                 {"choiced_channel_numbers", "0x000b"},
                                 {"domain_name", "ETSI"},
                                 {"sdata[0]", "door,1,0,front hall"},
                                 {"sdata[1]", "window,2,0,kitchen"},
                                 {"sname[0]", "front hall"},
                                 {"sname[1]", "kitchen"},
                                 {"url[0]", "sip:alarm@center.example.net"},
                                 {"rule[0]", "allow 192.168.62.0/24"},
                                 {"rule[1]", "deny 0.0.0.0/0"},
                                 {"opt", ""},
                                 {"firmware_ver", "2.4.17"},
                                 {"Lease_Time", "0x00015180"},
                                 {"start_ip", "192.168.62.100"},
                                 {"end_ip", "192.168.62.199"}})};
static_assert(vocabulary.size() >= entries_per_section);

/// Consecutive entries of the vocabulary, from a different start for each section, so that no
/// section has a key twice.
std::vector<entry> entries_of(std::size_t section_number) {
  std::vector<entry> entries;
  for (std::size_t i = 0; i < entries_per_section; ++i) {
    const stored_entry& each = vocabulary[(7 * section_number + i) % vocabulary.size()];
    entries.push_back({std::string{each.key}, std::string{each.value}});
  }
  return entries;
}

std::string name_of(std::size_t section_number) {
  const std::string name{names[section_number % names.size()]};
  const std::size_t turn = section_number / names.size();
  return turn == 0 ? name : name + "_" + std::to_string(turn);
}

std::vector<section> sections_of_the_device(std::size_t count) {
  std::vector<section> sections;
  for (std::size_t i = 0; i < count; ++i) {
    sections.push_back({name_of(i), entries_of(i)});
  }
  return sections;
}

std::string new_temporary_file() {
  std::string path = std::filesystem::temp_directory_path() / "proreflax-bench-XXXXXX";
  const int file = mkstemp(path.data());
  if (file == -1) {
    throw std::runtime_error("cannot create a temporary file like " + path);
  }
  close(file);
  return path;
}

}  // namespace

std::vector<section> device_sections() {
  return sections_of_the_device(device_section_count);
}

std::vector<section> many_sections() {
  return sections_of_the_device(many_section_count);
}

std::vector<section> factory_sections() {
  std::ifstream file{proreflax::factory_file};
  std::vector<section> sections;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('[')) {
      sections.push_back({line.substr(1, line.size() - 2), {}});
    } else if (const std::size_t equals = line.find('='); equals != std::string::npos) {
      sections.back().entries.push_back({line.substr(0, equals), line.substr(equals + 1)});
    }
  }
  return sections;
}

text_file::text_file(const std::vector<section>& sections) : path_{new_temporary_file()} {
  std::ofstream file{path_};
  for (const section& section : sections) {
    file << "\n[" << section.name << "]\n";
    for (const entry& entry : section.entries) {
      file << entry.key << '=' << entry.value << '\n';
    }
  }
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + path_);
  }
}

text_file::~text_file() {
  std::filesystem::remove(path_);
}

}  // namespace bench
