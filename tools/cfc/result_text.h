// Result codes in words: the number, the name of result.h, and a sentence.
#ifndef PROREFLAX_TOOLS_CFC_RESULT_TEXT_H
#define PROREFLAX_TOOLS_CFC_RESULT_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/cfc/exit_status.h"

namespace cfc {

/// The name that result.h gives to a code; empty for an errno value and for an unknown code.
std::string_view result_name(std::uint32_t code);

/// What a code says, without a full stop. An errno value speaks as the platform does.
std::string result_sentence(std::uint32_t code);

/// "201 CFC_ERR_NO_KEY: " and the sentence; "32: " and the sentence for a code without a name.
std::string in_words(std::uint32_t code, std::string_view sentence);

exit_status status_of(std::uint32_t code);

/// The text with everything that could disturb a terminal or break a line written as \xNN.
std::string printable(std::string_view text);

/// printable() in double quotes, with the quotes and backslashes of the text escaped.
std::string quoted(std::string_view text);

}  // namespace cfc

#endif
