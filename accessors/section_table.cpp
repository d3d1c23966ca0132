#include "accessors/section_table.h"

#include <cstring>

namespace proreflax {

void section_table::iterator::read() {
  const unsigned tag = next_byte();
  if (tag == 0) {
    field_.name = nullptr;
    return;
  }
  const std::size_t behind = field_.end();
  field_.kind = static_cast<value_kind>(tag & tag_kind);
  field_.count = static_cast<std::uint8_t>((tag & tag_array) != 0 ? next_byte() : 0);
  field_.capacity =
      field_.has_number()
          ? number_bytes(field_.kind)
          : static_cast<std::uint16_t>((tag & tag_capacity) << tag_capacity_shift | next_byte());
  field_.offset = aligned(behind, field_.alignment());
  field_.name = at_;
  at_ += std::strlen(at_) + 1;
}

// By hand, since printf would take most of the time that a section of two hundred values costs
// above its exchanges. An index is at most 255, and the tables' keys are known to fit.
const char* format_key(const field& which, unsigned index, key_text& key) {
  if (!which.is_array()) {
    return which.name;
  }
  const auto digit = [](unsigned value) { return static_cast<char>('0' + value % 10); };
  char* end = stpcpy(key, which.name);
  *end++ = '[';
  if (index >= 100) {
    *end++ = digit(index / 100);
  }
  if (index >= 10) {
    *end++ = digit(index / 10);
  }
  *end++ = digit(index);
  *end++ = ']';
  *end = '\0';
  return key;
}

}  // namespace proreflax
