#include "tools/cfc/sections/check.h"

#include "settings/json_writer.h"
#include "settings/line_reader.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

check_report check_text(line_reader& lines) {
  ini_check check;
  while (const auto line = check.gave_up() ? std::nullopt : lines.next()) {
    check.line(line->text);
  }
  check_report report{.file = lines.name(), .faults = {}, .failure = lines.failure()};
  if (check.gave_up()) {
    report.failure = "more faults than can be of use: the rest was not looked at";
  } else if (report.failure.empty()) {
    check.end();
  }
  report.faults = check.faults();
  return report;
}

std::string place_of(const check_report& report, const ini_fault& fault) {
  return fault.line == 0 ? report.file : report.file + ":" + std::to_string(fault.line);
}

void complain(const check_report& report, output& out) {
  for (const ini_fault& fault : report.faults) {
    out.complain(place_of(report, fault) + ": " + fault.sentence);
  }
  if (!report.failure.empty()) {
    out.complain("cfc: check: " + report.file + ": " + report.failure);
  }
}

void write_json(json_writer& json, const ini_fault& fault) {
  json.begin_object();
  if (fault.line != 0) {
    json.number_member("line", static_cast<std::int64_t>(fault.line));
  }
  json.member("rule", fault.rule);
  json.member("message", fault.sentence);
  json.end_object();
}

}  // namespace

std::string json_of(const check_report& report) {
  json_writer json;
  json.begin_object();
  json.member("file", report.file);
  json.flag_member("accepted", report.accepted());
  json.key("faults").begin_array();
  for (const ini_fault& each : report.faults) {
    write_json(json, each);
  }
  json.end_array();
  if (!report.failure.empty()) {
    json.member("failure", report.failure);
  }
  json.end_object();
  return json.take();
}

exit_status run(const check_command& command, output& out) {
  line_reader lines{command.file};
  const check_report report = check_text(lines);
  complain(report, out);
  if (command.json) {
    out.result(json_of(report));
  }
  return report.accepted() ? exit_status::done : exit_status::failed;
}

}  // namespace cfc
