// Result codes in words: the name of result.h, and a sentence.
#ifndef PROREFLAX_SETTINGS_RESULT_TEXT_H
#define PROREFLAX_SETTINGS_RESULT_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace proreflax::settings {

/// The name that result.h gives to a code; empty for an errno value and for an unknown code.
std::string_view result_name(std::uint32_t code);

/// What a code says, without a full stop. An errno value speaks as the platform does.
std::string result_sentence(std::uint32_t code);

}  // namespace proreflax::settings

#endif
