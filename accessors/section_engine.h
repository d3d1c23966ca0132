// The engine that walks a section's table, for every getter and every setter.
//
// It takes the access lock once, copies each field with the typed operation of its type, and
// releases the lock. Two rules determine the result, each in one place of the engine: the array
// rule and the stop rule. Cost: one exchange per value, and no memory other than the stack.
#ifndef PROREFLAX_ACCESSORS_SECTION_ENGINE_H
#define PROREFLAX_ACCESSORS_SECTION_ENGINE_H

#include <cstdint>

#include "accessors/section_rows.h"

namespace proreflax {

/// Reads a section into the record that its table describes.
std::uint32_t get_section(section_table table, void* record);

/// Writes the record, which is only read, to its section.
std::uint32_t set_section(section_table table, const void* record);

template <typename Record>
std::uint32_t get_record(Record* record) {
  return get_section(table_of<Record>(), record);
}

template <typename Record>
std::uint32_t set_record(const Record* record) {
  return set_section(table_of<Record>(), record);
}

}  // namespace proreflax

#endif
