// JSON holds text in UTF-8, the store holds bytes.
#ifndef PROREFLAX_SETTINGS_UTF8_TEXT_H
#define PROREFLAX_SETTINGS_UTF8_TEXT_H

#include <string>
#include <string_view>

namespace proreflax::settings {

bool is_utf8(std::string_view bytes);

/// The bytes with U+FFFD for each sequence that is not UTF-8.
std::string utf8_of(std::string_view bytes);

}  // namespace proreflax::settings

#endif
