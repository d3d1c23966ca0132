// Pieces of messages, each safe to print on a line of a terminal or a log.
#ifndef PROREFLAX_SETTINGS_MESSAGE_TEXT_H
#define PROREFLAX_SETTINGS_MESSAGE_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace proreflax::settings {

/// What printf makes of a pattern. Smaller in the program than strings that are joined.
[[gnu::format(printf, 1, 2)]] std::string formatted(const char* pattern, ...);

/// "201 CFC_ERR_NO_KEY: " and the sentence; "32: " and the sentence for a code without a name.
std::string in_words(std::uint32_t code, std::string_view sentence);

/// The text with everything that could disturb a terminal or break a line written as \xNN.
std::string printable(std::string_view text);

/// printable() in double quotes, with the quotes and backslashes of the text escaped.
std::string quoted(std::string_view text);

}  // namespace proreflax::settings

#endif
