#include "tools/cfc/values/transaction_report.h"

#include "settings/message_text.h"

namespace cfc {

using namespace proreflax::settings;

exit_status status_of(const step_result& result) {
  if (result.state != step_state::failed) {
    return exit_status::done;
  }
  return result.given.ok() ? exit_status::wrong_usage : status_of(result.given.code);
}

exit_status status_of(const outcome& result) {
  const step_result* const failed = result.first_failure();
  return failed == nullptr ? status_of(result.code) : status_of(*failed);
}

void complain(const std::string& verb, const std::string& text_name, const outcome& result,
              output& out) {
  for (const step_result& each : result.steps) {
    const std::string place = each.step.number == 0
                                  ? text_name + ": "
                                  : formatted("%s:%zu: ", text_name.c_str(), each.step.number);
    if (each.state == step_state::failed) {
      out.complain(place + failure_of(each));
    }
    if (!each.left_behind.empty()) {
      out.complain(place + each.left_behind);
    }
  }
  if (!result.summary.empty()) {
    out.complain("cfc: " + verb + ": " + text_name + ": " + result.summary);
  }
}

}  // namespace cfc
