// A section's table as the library stores it: packed bytes, read field by field.
//
// The table of a section is a constant byte string: the section's name and its NUL, then for each
// field a tag byte, the element count of an array, the capacity of a string or of bytes, and the
// field's name and its NUL; a zero tag ends it. It contains no pointers, so it is in read-only
// memory that all programs of the device share, and the loader has nothing to relocate.
// section_rows.h generates such tables from rows that read like the documentation, and checks them
// against the record.
//
// Offsets are computed instead of stored: fields follow each other in the record with no gap other
// than alignment, which section_rows.h asserts.
#ifndef PROREFLAX_ACCESSORS_SECTION_TABLE_H
#define PROREFLAX_ACCESSORS_SECTION_TABLE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace proreflax {

/// The type of a value in the record and in the store. 0 ends a packed table.
enum class value_type : std::uint8_t { u8 = 1, u16, u32, ip, string, binary };

struct field {
  const char* name;        // of the record's member, and of the key
  value_type type;         // of the value, or of each element
  std::uint8_t count;      // elements of an array; 0 for a single value
  std::uint16_t capacity;  // bytes of the value, or of each element, in the record
  std::size_t offset;      // of the first byte in the record

  constexpr bool is_array() const { return count != 0; }
  constexpr bool has_number() const { return type < value_type::string; }
  constexpr std::size_t alignment() const { return has_number() ? capacity : 1; }
  constexpr std::size_t end() const {
    return offset + std::size_t{capacity} * (is_array() ? count : 1);
  }
};

/// Size of a number in the record, in bytes.
constexpr std::uint16_t number_bytes(value_type type) {
  return type == value_type::u8 ? 1 : type == value_type::u16 ? 2 : 4;
}

/// `offset` rounded up to a multiple of `alignment`, a power of two.
constexpr std::size_t aligned(std::size_t offset, std::size_t alignment) {
  return (offset + alignment - 1) & ~(alignment - 1);
}

// The tag: the type in the low three bits, then one bit for an array, then the capacity's upper
// four.
inline constexpr unsigned tag_type = 0x07;
inline constexpr unsigned tag_array = 0x08;
inline constexpr unsigned tag_capacity = 0xF0;
inline constexpr unsigned tag_capacity_shift = 4;
inline constexpr std::size_t capacity_max = 0xFFF;

/// A view of a packed table; its fields are read by a range-based for.
class section_table {
 public:
  explicit constexpr section_table(const char* packed) : packed_{packed} {}

  const char* name() const { return packed_; }

  class iterator {
   public:
    explicit iterator(const char* at) : at_{at} { read(); }
    const field& operator*() const { return field_; }
    const field* operator->() const { return &field_; }
    iterator& operator++() {
      read();
      return *this;
    }
    bool operator==(std::default_sentinel_t) const { return field_.name == nullptr; }

   private:
    unsigned next_byte() { return static_cast<unsigned char>(*at_++); }
    void read();

    const char* at_;
    field field_{};
  };

  iterator begin() const { return iterator{packed_ + std::strlen(packed_) + 1}; }
  static std::default_sentinel_t end() { return {}; }

 private:
  const char* packed_;
};

/// Room for the longest key and its NUL.
using key_string = char[56];

/// The key of an element: the field's name, followed by the index in brackets for an array.
const char* format_key(const field& which, unsigned index, key_string& key);

}  // namespace proreflax

#endif
