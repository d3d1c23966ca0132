#include "tools/cfc/device/local_time.h"

#include <proreflax/sections.h>

#include <array>
#include <cstdio>
#include <cstdlib>

#include "settings/json_writer.h"
#include "settings/message_text.h"
#include "settings/result_text.h"
#include "settings/service_state.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

/// The library's helpers report no failure: the section is read for its result first.
std::uint32_t look_for_zone() {
  sntpc_info info;
  return gui_get_sntpc_info(&info);
}

std::string json_of(std::int32_t offset_seconds, const std::string& local_time) {
  json_writer json;
  json.begin_object();
  json.number_member("offset_seconds", offset_seconds);
  json.member("local_time", local_time);
  json.end_object();
  return json.take();
}

std::string local_time() {
  std::string text = gui_get_localtime();
  text.erase(text.find_last_not_of('\n') + 1);
  return text;
}

}  // namespace

std::string show_offset(std::int32_t seconds) {
  const int magnitude = std::abs(seconds);
  std::array<char, 24> text{};
  std::snprintf(text.data(), text.size(), "%c%02d:%02d", seconds < 0 ? '-' : '+', magnitude / 3600,
                magnitude / 60 % 60);
  std::string shown = text.data();
  if (magnitude % 60 != 0) {
    std::snprintf(text.data(), text.size(), ":%02d", magnitude % 60);
    shown += text.data();
  }
  return shown;
}

exit_status run(const time_command& command, output& out) {
  const bool killed = service_was_killed();
  const std::uint32_t code = killed ? std::uint32_t{CFC_ERR_NO_SEM} : look_for_zone();
  if (code != CFC_OK) {
    out.complain("cfc: time: section \"SNTPC\": " +
                 in_words(code, killed ? std::string{killed_service} : result_sentence(code)));
    return status_of(code);
  }
  const std::int32_t offset = gui_get_offsetTime();
  if (command.json) {
    out.result(json_of(offset, local_time()));
  } else {
    out.result("offset: " + show_offset(offset) + " (" + std::to_string(offset) + " seconds)");
    out.result("local time: " + local_time());
  }
  return exit_status::done;
}

}  // namespace cfc
