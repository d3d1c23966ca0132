#include "tools/cfc/device/status.h"

#include <proreflax/result.h>

#include <cstring>

#include "settings/json_writer.h"
#include "settings/message_text.h"
#include "tools/cfc/output/json_result.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

std::string show_process(int id, const std::string& name) {
  if (id <= 0) {
    return "a process that cannot be seen from here";
  }
  const std::string process = "process " + std::to_string(id);
  return name.empty() ? process + ", which no longer runs" : process + " (" + printable(name) + ")";
}

std::string show_value(const lock_status& lock) {
  if (lock.value == 0) {
    return "held by " + show_process(lock.holder, lock.holder_name);
  }
  return lock.value == 1
             ? "free"
             : "raised to " + std::to_string(lock.value) + ", so that it excludes nobody";
}

void write_json(json_writer& json, const service_status& service) {
  json.begin_object();
  if (service.state == service_status::life::alive) {
    json.flag_member("alive", true);
    json.number_member("pid", service.process);
    json.member("name", service.name);
  } else if (service.state == service_status::life::dead) {
    json.flag_member("alive", false);
  } else {
    json.key("alive").null();
  }
  json.end_object();
}

void write_json(json_writer& json, const lock_status& lock) {
  json.begin_object();
  json.flag_member("present", lock.present);
  if (lock.present && lock.error == 0) {
    json.number_member("value", lock.value);
    json.flag_member("held", lock.value == 0);
    if (lock.value == 0) {
      json.key("holder").begin_object();
      json.number_member("pid", lock.holder);
      json.member("name", lock.holder_name);
      json.end_object();
    }
    json.number_member("waiting", lock.waiting);
  }
  json.end_object();
}

void write_json(json_writer& json, const queue_status& queue) {
  json.begin_object();
  json.flag_member("present", queue.present);
  if (queue.present && queue.error == 0) {
    json.number_member("messages", static_cast<std::int64_t>(queue.messages));
    json.number_member("bytes", static_cast<std::int64_t>(queue.bytes));
  }
  json.end_object();
}

void write_json(json_writer& json, const served_status& served) {
  json.begin_object();
  json.member("source", served.from_flash ? "flash" : "factory");
  json.flag_member("flash_unreadable", served.flash_unreadable);
  json.end_object();
}

}  // namespace

std::string show_service(const service_status& service) {
  switch (service.state) {
    case service_status::life::alive:
      return "service: " + show_process(service.process, service.name);
    case service_status::life::dead:
      return "service: killed, its lock is still there";
    case service_status::life::unknown:
      break;
  }
  return "service: nothing tells whether it runs";
}

std::string show_served(const served_status& served) {
  if (served.flash_unreadable) {
    return "configuration: factory settings in memory; the saved configuration could not be read, "
           "and is kept until a flush or a reset overwrites it";
  }
  return served.from_flash ? "configuration: loaded from flash" : "configuration: factory settings";
}

std::string show_lock(const lock_status& lock) {
  if (!lock.present) {
    return "lock: not there";
  }
  if (lock.error != 0) {
    return std::string{"lock: there, but not to be looked at: "} + std::strerror(lock.error);
  }
  const std::string state = "lock: " + show_value(lock);
  return lock.waiting > 0 ? state + "; " + std::to_string(lock.waiting) + " waiting for it" : state;
}

std::string show_queue(const queue_status& queue) {
  if (!queue.present) {
    return "queue: not there";
  }
  if (queue.error != 0) {
    return std::string{"queue: there, but not to be looked at: "} + std::strerror(queue.error);
  }
  return "queue: " + std::to_string(queue.messages) +
         (queue.messages == 1 ? " message waiting" : " messages waiting");
}

std::string json_of(const status_report& report) {
  json_writer json;
  json.begin_object();
  write_json(json.key("service"), report.service);
  if (report.served.known) {
    write_json(json.key("configuration"), report.served);
  }
  write_json(json.key("lock"), report.lock);
  write_json(json.key("queue"), report.queue);
  write_code(json, report.code(), report.sentence());
  json.end_object();
  return json.take();
}

exit_status run(const status_command& command, output& out) {
  const status_report report = look_at_device();
  if (command.json) {
    out.result(json_of(report));
  } else {
    out.result(show_service(report.service));
    if (report.served.known) {
      out.result(show_served(report.served));
    }
    out.result(show_lock(report.lock));
    out.result(show_queue(report.queue));
  }
  const std::uint32_t code = report.code();
  if (code != CFC_OK) {
    out.complain("cfc: status: " + in_words(code, report.sentence()));
  }
  return status_of(code);
}

}  // namespace cfc
