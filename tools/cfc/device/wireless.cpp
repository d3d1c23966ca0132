#include "tools/cfc/device/wireless.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>

#include "settings/json_writer.h"
#include "settings/message_text.h"
#include "settings/typed_value.h"
#include "tools/cfc/output/text_table.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

using side = text_table::side;

constexpr const char* status_file = "/proc/wireless";
constexpr const char* log_file = "/proc/wirelesslog";

/// No driver counts to this: a counter that still has it was not in the text.
constexpr std::uint32_t untold = 0x80000001;

/// The sentence to a reader's failure; `complaint` is for a text that could be read. To be asked
/// right behind the reader, whose errno still stands.
std::string failure_of(std::uint32_t code, const char* file, std::string_view complaint) {
  if (code == CFC_OK) {
    return {};
  }
  std::string sentence{file};
  return errno != 0 ? sentence.append(" cannot be read: ").append(std::strerror(errno))
                    : sentence.append(complaint);
}

std::optional<std::uint32_t> told(std::uint32_t counter) {
  return counter == untold ? std::nullopt : std::optional{counter};
}

std::string mac_of(const std::uint8_t (&mac)[WLS_MAC_SIZE]) {
  return show_value(binary_data{std::begin(mac), std::end(mac)});
}

/// Whether the reader filled a row: it ends every message with a NUL, and there was none before.
bool was_read(const wls_event_log_entry& row) {
  return std::memchr(row.message, '\0', sizeof row.message) != nullptr;
}

exit_status end(const std::string& failure, std::string_view verb, const output& out) {
  if (failure.empty()) {
    return exit_status::done;
  }
  out.complain(std::string{"cfc: wireless "}.append(verb).append(": ").append(failure));
  return exit_status::failed;
}

std::string show(const std::string& text) {
  return text.empty() ? "not told" : printable(text);
}

std::string show(const std::optional<std::uint32_t>& counter) {
  return counter ? std::to_string(*counter) : "not told";
}

void print(const wireless_status_report& report, output& out) {
  out.result("interface    " + show(report.interface));
  out.result("MAC address  " + show(report.mac_address));
  out.result("");
  text_table table{{{"frames"}, {"received", side::right}, {"sent", side::right}}};
  const wireless_counts& in = report.received;
  const wireless_counts& away = report.sent;
  table.add({"unicast", show(in.unicast), show(away.unicast)});
  table.add({"multicast", show(in.multicast), show(away.multicast)});
  table.add({"dropped", show(in.dropped), show(away.dropped)});
  table.add({"failed", show(in.failed), show(away.failed)});
  table.print(out);
}

void print(const wireless_event_report& report, output& out) {
  text_table table{{{"event", side::right}, {"station"}, {"message"}}};
  for (const wireless_event& each : report.events) {
    table.add({std::to_string(each.number), each.mac, printable(each.message)});
  }
  table.print(out);
}

void print(const wireless_station_report& report, output& out) {
  text_table table{{{"station", side::right}, {"MAC address"}}};
  for (const wireless_station& each : report.stations) {
    table.add({std::to_string(each.number), each.mac});
  }
  table.print(out);
}

void print(const wireless_channel_report& report, output& out) {
  text_table table{{{"region", side::right},
                    {"channels", side::right},
                    {"first", side::right},
                    {"last", side::right}}};
  table.add({std::to_string(report.region), std::to_string(report.count),
             std::to_string(report.first), std::to_string(report.first + report.count - 1)});
  table.print(out);
}

void write_json(json_writer& json, const std::string& text) {
  if (text.empty()) {
    json.null();
  } else {
    json.text(text);
  }
}

void write_json(json_writer& json, const std::optional<std::uint32_t>& counter) {
  if (counter) {
    json.number(*counter);
  } else {
    json.null();
  }
}

void write_json(json_writer& json, const wireless_counts& counts) {
  json.begin_object();
  write_json(json.key("unicast"), counts.unicast);
  write_json(json.key("multicast"), counts.multicast);
  write_json(json.key("dropped"), counts.dropped);
  write_json(json.key("failed"), counts.failed);
  json.end_object();
}

void write_members(json_writer& json, const wireless_status_report& report) {
  write_json(json.key("interface"), report.interface);
  write_json(json.key("mac"), report.mac_address);
  write_json(json.key("received"), report.received);
  write_json(json.key("sent"), report.sent);
}

void write_members(json_writer& json, const wireless_event_report& report) {
  json.number_member("announced", report.announced);
  json.key("events").begin_array();
  for (const wireless_event& each : report.events) {
    json.begin_object();
    json.number_member("number", each.number);
    json.member("mac", each.mac);
    json.member("message", each.message);
    json.end_object();
  }
  json.end_array();
}

void write_members(json_writer& json, const wireless_station_report& report) {
  json.key("stations").begin_array();
  for (const wireless_station& each : report.stations) {
    json.begin_object();
    json.number_member("number", each.number);
    json.member("mac", each.mac);
    json.end_object();
  }
  json.end_array();
}

void write_members(json_writer& json, const wireless_channel_report& report) {
  json.number_member("region", report.region);
  json.number_member("first", report.first);
  json.number_member("count", report.count);
}

template <typename Report>
std::string json_of(const Report& report) {
  json_writer json;
  json.begin_object();
  write_members(json, report);
  json.end_object();
  return json.take();
}

/// A report with a failure prints nothing: what a broken text left filled is no answer.
template <typename Report>
void print_either_way(const Report& report, bool json, output& out) {
  if (json) {
    out.result(json_of(report));
  } else {
    print(report, out);
  }
}

void remark_missing_rows(const wireless_event_report& report, const output& out) {
  const auto follow = static_cast<int>(report.events.size());
  if (report.announced != follow) {
    out.complain("cfc: wireless events: " + std::string{log_file} + " announces " +
                 std::to_string(report.announced) + " events, and " + std::to_string(follow) +
                 (follow == 1 ? " was found" : " were found"));
  }
}

exit_status carry_out(const wireless_status_command& command, output& out) {
  const wireless_status_report report = read_wireless_status();
  if (report.failure.empty()) {
    print_either_way(report, command.json, out);
  }
  return end(report.failure, "status", out);
}

exit_status carry_out(const wireless_events_command& command, output& out) {
  const wireless_event_report report = read_wireless_events();
  if (report.failure.empty()) {
    print_either_way(report, command.json, out);
    remark_missing_rows(report, out);
  }
  return end(report.failure, "events", out);
}

exit_status carry_out(const wireless_stations_command& command, output& out) {
  const wireless_station_report report = read_wireless_stations();
  if (report.failure.empty()) {
    print_either_way(report, command.json, out);
  }
  return end(report.failure, "stations", out);
}

exit_status carry_out(const wireless_channels_command& command, output& out) {
  print_either_way(wireless_channels_of(command.region), command.json, out);
  return exit_status::done;
}

}  // namespace

wireless_status_report read_wireless_status() {
  const auto told_by_driver = std::make_unique<wls_11g_status>();
  wls_11g_status& status = *told_by_driver;
  for (std::uint32_t* const each :
       {&status.recv_unicast, &status.recv_multicast, &status.recv_dropped, &status.recv_failed,
        &status.trans_unicast, &status.trans_multicast, &status.trans_dropped,
        &status.trans_failed}) {
    *each = untold;
  }
  errno = 0;
  const std::uint32_t code = gui_get_wls_11g_status(&status);
  std::string failure =
      failure_of(code, status_file, " does not begin with ten lines of a name, '=' and a value");
  return {.interface = status.if_status,
          .mac_address = status.mac_addr,
          .received = {told(status.recv_unicast), told(status.recv_multicast),
                       told(status.recv_dropped), told(status.recv_failed)},
          .sent = {told(status.trans_unicast), told(status.trans_multicast),
                   told(status.trans_dropped), told(status.trans_failed)},
          .failure = std::move(failure)};
}

wireless_event_report read_wireless_events() {
  std::vector<wls_event_log_entry> rows(WLS_EVENT_LOG_ROWS_MAX);
  for (wls_event_log_entry& each : rows) {
    std::memset(each.message, ' ', sizeof each.message);
  }
  wireless_event_report report;
  errno = 0;
  const std::uint32_t code = gui_get_wls_event_log_table(&report.announced, rows.data());
  report.failure = failure_of(code, log_file, " is too short for a log, or has a row without ':'");
  for (auto row = rows.begin(); row != rows.end() && was_read(*row); ++row) {
    // The blank between address and message belongs to neither, but the reader keeps it.
    const char* const message = row->message + std::strspn(row->message, " ");
    report.events.push_back({row->number, mac_of(row->mac), message});
  }
  return report;
}

wireless_station_report read_wireless_stations() {
  std::vector<wls_associate_entry> rows(WLS_ASSOCIATE_ROWS_MAX);
  int count = 0;
  errno = 0;
  const std::uint32_t code = gui_get_wls_associate(rows.data(), &count);
  wireless_station_report report;
  report.failure = failure_of(code, status_file, " holds no table of associated stations");
  for (auto row = rows.begin(); row != rows.begin() + count; ++row) {
    report.stations.push_back({row->number, mac_of(row->mac)});
  }
  return report;
}

wireless_channel_report wireless_channels_of(int region) {
  wireless_channel_report report{.region = region};
  gui_get_wls_channel_info(region, &report.first, &report.count);
  return report;
}

exit_status run(const wireless_command& command, output& out) {
  return std::visit([&](const auto& each) { return carry_out(each, out); }, command);
}

}  // namespace cfc
