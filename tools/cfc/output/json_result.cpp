#include "tools/cfc/output/json_result.h"

#include <proreflax/result.h>

#include "settings/result_text.h"

namespace cfc {

using namespace proreflax::settings;

void write_code(json_writer& json, std::uint32_t code, std::string_view sentence) {
  json.number_member("code", code);
  if (const std::string_view name = result_name(code); !name.empty()) {
    json.member("name", name);
  }
  if (code != CFC_OK) {
    json.member("message", sentence);
  }
}

}  // namespace cfc
