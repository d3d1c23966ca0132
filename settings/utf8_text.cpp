// A sequence is refused at the first byte that cannot continue it, and that byte begins the next
// one: the replacement that the Unicode standard recommends.
#include "settings/utf8_text.h"

#include <algorithm>

namespace proreflax::settings {
namespace {

/// What the first byte of a sequence asks of the bytes after it.
struct sequence_rule {
  std::size_t length;          // 0 for a byte that begins no sequence
  unsigned char least = 0x80;  // of the second byte
  unsigned char most = 0xBF;
};

/// No overlong forms, no surrogates, nothing above U+10FFFF.
sequence_rule rule_of(unsigned char first) {
  if (first < 0x80) {
    return {.length = 1};
  }
  if (first < 0xC2 || first > 0xF4) {
    return {.length = 0};
  }
  if (first < 0xE0) {
    return {.length = 2};
  }
  if (first < 0xF0) {
    return {.length = 3,
            .least = static_cast<unsigned char>(first == 0xE0 ? 0xA0 : 0x80),
            .most = static_cast<unsigned char>(first == 0xED ? 0x9F : 0xBF)};
  }
  return {.length = 4,
          .least = static_cast<unsigned char>(first == 0xF0 ? 0x90 : 0x80),
          .most = static_cast<unsigned char>(first == 0xF4 ? 0x8F : 0xBF)};
}

/// The bytes that belong together from the first on.
struct sequence {
  std::size_t length;
  bool complete;
};

sequence first_sequence(std::string_view bytes) {
  sequence_rule rule = rule_of(static_cast<unsigned char>(bytes[0]));
  for (std::size_t i = 1; i < rule.length; ++i) {
    const auto byte = i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0;
    if (byte < rule.least || byte > rule.most) {
      return {i, false};
    }
    rule.least = 0x80;
    rule.most = 0xBF;
  }
  return {std::max<std::size_t>(rule.length, 1), rule.length != 0};
}

}  // namespace

bool is_utf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const sequence next = first_sequence(bytes);
    if (!next.complete) {
      return false;
    }
    bytes.remove_prefix(next.length);
  }
  return true;
}

std::string utf8_of(std::string_view bytes) {
  std::string text;
  while (!bytes.empty()) {
    const sequence next = first_sequence(bytes);
    text += next.complete ? bytes.substr(0, next.length) : std::string_view{"\xef\xbf\xbd"};
    bytes.remove_prefix(next.length);
  }
  return text;
}

}  // namespace proreflax::settings
