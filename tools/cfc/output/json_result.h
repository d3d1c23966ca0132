// What the results of all verbs have in common in JSON.
#ifndef PROREFLAX_TOOLS_CFC_OUTPUT_JSON_RESULT_H
#define PROREFLAX_TOOLS_CFC_OUTPUT_JSON_RESULT_H

#include <cstdint>
#include <string_view>

#include "settings/json_writer.h"

namespace cfc {

/// Members "code", "name" of a code that has one, and "message" of one other than CFC_OK.
void write_code(proreflax::settings::json_writer& json, std::uint32_t code,
                std::string_view sentence);

}  // namespace cfc

#endif
