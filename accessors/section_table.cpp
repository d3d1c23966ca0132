#include "accessors/section_table.h"

#include <cstring>

namespace proreflax {

void section_table::iterator::read() {
  const unsigned tag = next_byte();
  if (tag == 0) {
    field_.name = nullptr;
    return;
  }
  const std::size_t previous_end = field_.end();
  field_.type = static_cast<value_type>(tag & tag_type);
  field_.count = static_cast<std::uint8_t>((tag & tag_array) != 0 ? next_byte() : 0);
  field_.capacity =
      field_.has_number()
          ? number_bytes(field_.type)
          : static_cast<std::uint16_t>((tag & tag_capacity) << tag_capacity_shift | next_byte());
  field_.offset = aligned(previous_end, field_.alignment());
  field_.name = at_;
  at_ += std::strlen(at_) + 1;
}

// Without printf, which would take most of the time that a section of two hundred values costs
// beyond its exchanges. An index is at most 255, and the tables' keys are checked to fit.
const char* format_key(const field& which, unsigned index, key_string& key) {
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
