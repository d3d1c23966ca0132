#include "accessors/section_engine.h"

#include <proreflax/config.h>

#include "transport/lock.h"

namespace proreflax {
namespace {

/// The lock argument of every typed operation: this process already holds the lock.
constexpr int locked = 1;

/// Copies one value between the store and its place in the record.
using move_value = std::uint32_t (*)(const char* section, const char* key, const field& which,
                                     void* place);

std::uint32_t get_value(const char* section, const char* key, const field& which, void* place) {
  switch (which.type) {
    case value_type::u8:
      return __cfc_get_u8(locked, section, key, static_cast<std::uint8_t*>(place));
    case value_type::u16:
      return __cfc_get_u16(locked, section, key, static_cast<std::uint16_t*>(place));
    case value_type::u32:
      return __cfc_get_u32(locked, section, key, static_cast<std::uint32_t*>(place));
    case value_type::ip:
      return __cfc_get_ip(locked, section, key, static_cast<std::uint32_t*>(place));
    case value_type::string:
      return __cfc_get_string(locked, section, key, static_cast<char*>(place), which.capacity);
    case value_type::binary:
      break;
  }
  std::int32_t count = which.capacity;
  return __cfc_get_binary(locked, section, key, static_cast<std::uint8_t*>(place), &count);
}

std::uint32_t set_value(const char* section, const char* key, const field& which, void* place) {
  switch (which.type) {
    case value_type::u8:
      return __cfc_set_u8(locked, section, key, *static_cast<std::uint8_t*>(place));
    case value_type::u16:
      return __cfc_set_u16(locked, section, key, *static_cast<std::uint16_t*>(place));
    case value_type::u32:
      return __cfc_set_u32(locked, section, key, *static_cast<std::uint32_t*>(place));
    case value_type::ip:
      return __cfc_set_ip(locked, section, key, *static_cast<std::uint32_t*>(place));
    case value_type::string:
      return __cfc_set_string(locked, section, key, static_cast<const char*>(place));
    case value_type::binary:
      break;
  }
  return __cfc_set_binary(locked, section, key, static_cast<const std::uint8_t*>(place),
                          which.capacity);
}

/// Copies a field, the elements of an array one by one.
std::uint32_t move_field(const char* section, const field& which, char* record, move_value move) {
  std::uint32_t result = CFC_OK;
  unsigned index = 0;
  do {
    key_string key;
    // The array rule: every element is copied, and only the last one's result counts, so that a
    // list with missing elements can be read.
    result = move(section, format_key(which, index, key), which,
                  record + which.offset + std::size_t{index} * which.capacity);
  } while (++index < which.count);
  return result;
}

std::uint32_t move_section(section_table table, void* record, move_value move) {
  return with_lock([=] {
    std::uint32_t result = CFC_OK;
    for (const field& each : table) {
      result = move_field(table.name(), each, static_cast<char*>(record), move);
      if (result != CFC_OK) {  // the stop rule: the first failure ends the walk
        break;
      }
    }
    return result;
  });
}

}  // namespace

std::uint32_t get_section(section_table table, void* record) {
  return move_section(table, record, get_value);
}

std::uint32_t set_section(section_table table, const void* record) {
  return move_section(table, const_cast<void*>(record), set_value);  // set_value() only reads
}

}  // namespace proreflax
