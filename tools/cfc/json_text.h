// What --json prints: one JSON object a line.
//
// JSON holds text in UTF-8, the store holds bytes. A value that is no UTF-8 is shown with U+FFFD for
// what cannot be said, and its bytes stand beside it under "bytes", as hexadecimal digits.
#ifndef PROREFLAX_TOOLS_CFC_JSON_TEXT_H
#define PROREFLAX_TOOLS_CFC_JSON_TEXT_H

#include <string>

#include "tools/cfc/batch.h"
#include "tools/cfc/check.h"
#include "tools/cfc/status.h"
#include "tools/cfc/value_verbs.h"
#include "tools/cfc/wireless.h"

namespace cfc {

std::string json_of(const get_command& get, const answer& result);
std::string json_of(const batch_result& result);
std::string json_of(const check_report& report);
std::string json_of(const status_report& report);
std::string json_of(const wireless_status_report& report);
std::string json_of(const wireless_event_report& report);
std::string json_of(const wireless_station_report& report);
std::string json_of(const wireless_channel_report& report);

}  // namespace cfc

#endif
