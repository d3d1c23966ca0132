#include "settings/message_text.h"

#include <cstdarg>
#include <cstdio>

#include "settings/result_text.h"

namespace proreflax::settings {
namespace {

/// Control characters, and all that is not ASCII: what a terminal makes of it is not known here.
bool is_printable(char c) {
  return c >= ' ' && c <= '~';
}

void add_printable(std::string& text, char c) {
  constexpr const char* digits = "0123456789abcdef";
  if (is_printable(c)) {
    text += c;
    return;
  }
  const auto byte = static_cast<unsigned char>(c);
  text += "\\x";
  text += digits[byte >> 4];
  text += digits[byte & 0x0F];
}

}  // namespace

std::string formatted(const char* pattern, ...) {
  std::va_list values;
  std::va_list again;
  va_start(values, pattern);
  va_copy(again, values);
  const int length = std::vsnprintf(nullptr, 0, pattern, values);
  std::string text(length < 0 ? 0 : static_cast<std::size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, pattern, again);
  va_end(again);
  va_end(values);
  return text;
}

std::string in_words(std::uint32_t code, std::string_view sentence) {
  const std::string_view name = result_name(code);
  std::string words = formatted("%lu%s", static_cast<unsigned long>(code), name.empty() ? "" : " ");
  words += name;
  words += ": ";
  words += sentence;
  return words;
}

std::string printable(std::string_view text) {
  std::string shown;
  for (const char c : text) {
    add_printable(shown, c);
  }
  return shown;
}

std::string quoted(std::string_view text) {
  std::string shown = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      shown += '\\';
    }
    add_printable(shown, c);
  }
  shown += '"';
  return shown;
}

}  // namespace proreflax::settings
