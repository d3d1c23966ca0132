#include "settings/result_text.h"

#include <proreflax/result_text.h>

namespace proreflax::settings {

std::string_view result_name(std::uint32_t code) {
  return cfc_result_name(code);
}

std::string result_sentence(std::uint32_t code) {
  return cfc_result_text(code);
}

}  // namespace proreflax::settings
