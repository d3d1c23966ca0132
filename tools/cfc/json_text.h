// What --json prints: one JSON object a line.
//
// JSON holds text in UTF-8, the store holds bytes. A value that is no UTF-8 is shown with U+FFFD
// for what cannot be said, and its bytes stand beside it under "bytes", as hexadecimal digits.
#ifndef PROREFLAX_TOOLS_CFC_JSON_TEXT_H
#define PROREFLAX_TOOLS_CFC_JSON_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/cfc/batch.h"
#include "tools/cfc/check.h"
#include "tools/cfc/firmware_image.h"
#include "tools/cfc/section_values.h"
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

/// The image of a file, its parts in it, and what the device would say to it.
std::string json_of(const std::string& file, const image_view& image,
                    const std::optional<image_fault>& fault);

/// What a section holds, a value a key; a secret is null unless secrets are asked for.
std::string json_of(const section_values& values, bool secrets);
/// What a section is made of.
std::string json_of(const proreflax::listed_section& section);

std::string json_of_time(std::int32_t offset_seconds, const std::string& local_time);

/// The sections as an object of objects, each value the text that the store keeps, a key a line.
std::string json_of_export(const std::vector<section_values>& sections);
/// Reads it back; a sentence in `failure` when the text is no such object. Numbers stand for their
/// decimal texts.
std::vector<set_command> read_export(const std::string& text, std::string& failure);

}  // namespace cfc

#endif
