#include "tools/cfc/values/value_verbs.h"

#include "settings/message_text.h"
#include "tools/cfc/output/json_result.h"

namespace cfc {

using namespace proreflax::settings;

namespace {

void write_entry(json_writer& json, const std::string& section, const std::string& key,
                 value_kind kind) {
  json.member("section", section);
  json.member("key", key);
  json.member("type", name_of(kind));
}

struct name_writer {
  json_writer& json;

  void operator()(const get_request& get) const {
    write_entry(json, get.section, get.key, get.kind);
  }
  void operator()(const set_request& set) const {
    write_entry(json, set.section, set.key, set.kind);
  }
  void operator()(const register_request& application) const {
    json.member("section", application.name);
  }
  void operator()(flush_request /*flush*/) const {}
  void operator()(defaults_request /*defaults*/) const {}
};

}  // namespace

void write_names(json_writer& json, const request& asked) {
  std::visit(name_writer{json}, asked);
}

std::string json_of(const request& asked, const answer& result) {
  json_writer json;
  json.begin_object();
  write_names(json, asked);
  if (result.value) {
    json.value_member(*result.value);
  }
  write_code(json, result.code, result.sentence);
  json.end_object();
  return json.take();
}

exit_status run(const store_command& command, output& out) {
  const answer result = carry_out(command.asked, lock_flag::take);
  if (command.json) {
    out.result(json_of(command.asked, result));
  } else if (result.value) {
    out.result(show_value(*result.value));
  }
  if (!result.ok()) {
    out.complain("cfc: " + subject_of(command.asked) + ": " +
                 in_words(result.code, result.sentence));
  }
  return status_of(result.code);
}

}  // namespace cfc
