// wireless: what the wireless driver tells, as tables.
//
// The library's readers have one code for every failure. errno tells the two kinds apart: it says
// why the driver's file cannot be read, and stays 0 when the file was read and its text is wrong.
#ifndef PROREFLAX_TOOLS_CFC_DEVICE_WIRELESS_H
#define PROREFLAX_TOOLS_CFC_DEVICE_WIRELESS_H

#include <proreflax/wireless.h>

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct wireless_status_command {
  bool json = false;
};

struct wireless_events_command {
  bool json = false;
};

struct wireless_stations_command {
  bool json = false;
};

struct wireless_channels_command {
  int region = 0;
  bool json = false;
};

using wireless_command = std::variant<wireless_status_command, wireless_events_command,
                                      wireless_stations_command, wireless_channels_command>;

/// A counter that the driver left out is nothing, and a text that it left out empty.
struct wireless_counts {
  std::optional<std::uint32_t> unicast;
  std::optional<std::uint32_t> multicast;
  std::optional<std::uint32_t> dropped;
  std::optional<std::uint32_t> failed;
};

struct wireless_status_report {
  std::string interface;
  std::string mac_address;
  wireless_counts received;
  wireless_counts sent;
  std::string failure;  // a sentence that names the file; empty when all is well
};

struct wireless_event {
  int number = 0;
  std::string mac;
  std::string message;
};

struct wireless_event_report {
  int announced = 0;  // by the log's first line
  std::vector<wireless_event> events;
  std::string failure;
};

struct wireless_station {
  int number = 0;
  std::string mac;
};

struct wireless_station_report {
  std::vector<wireless_station> stations;
  std::string failure;
};

struct wireless_channel_report {
  int region = 0;
  int first = 0;
  int count = 0;
};

wireless_status_report read_wireless_status();
wireless_event_report read_wireless_events();
wireless_station_report read_wireless_stations();
wireless_channel_report wireless_channels_of(int region);

exit_status run(const wireless_command& command, output& out);

}  // namespace cfc

#endif
