// A section's table as the library keeps it: a few packed bytes, read field by field.
//
// The table of a section is a constant text: the section's name and its NUL, then for each field a
// tag byte, the element count of an array, the capacity of a text or of bytes, and the field's name
// and its NUL; a zero tag ends it. There is no pointer in it, so it lies in read-only memory that
// all programs of the device share, and the loader has nothing to relocate. section_rows.h makes
// such tables out of rows that read like the documentation, and proves them against the record.
//
// Offsets are not kept but counted: fields follow each other in the record with no gap but
// alignment, which section_rows.h asserts.
#ifndef PROREFLAX_ACCESSORS_SECTION_TABLE_H
#define PROREFLAX_ACCESSORS_SECTION_TABLE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace proreflax {

/// How a value stands in the record and in the store. 0 ends a packed table.
enum class value_kind : std::uint8_t { u8 = 1, u16, u32, ip, text, binary };

struct field {
  const char* name;        // of the record's member, and of the key
  value_kind kind;         // of the value, or of each element
  std::uint8_t count;      // elements of an array; 0 for a field that stands for itself
  std::uint16_t capacity;  // bytes of the value, or of each element, in the record
  std::size_t offset;      // of the first byte in the record

  constexpr bool is_array() const { return count != 0; }
  constexpr bool has_number() const { return kind < value_kind::text; }
  constexpr std::size_t alignment() const { return has_number() ? capacity : 1; }
  constexpr std::size_t end() const {
    return offset + std::size_t{capacity} * (is_array() ? count : 1);
  }
};

/// Bytes of a number in the record.
constexpr std::uint16_t number_bytes(value_kind kind) {
  return kind == value_kind::u8 ? 1 : kind == value_kind::u16 ? 2 : 4;
}

/// `offset`, or the next one behind it that is a multiple of `alignment`, a power of two.
constexpr std::size_t aligned(std::size_t offset, std::size_t alignment) {
  return (offset + alignment - 1) & ~(alignment - 1);
}

// The tag: kind in the low three bits, then one for an array, then the capacity's upper four.
inline constexpr unsigned tag_kind = 0x07;
inline constexpr unsigned tag_array = 0x08;
inline constexpr unsigned tag_capacity = 0xF0;
inline constexpr unsigned tag_capacity_shift = 4;
inline constexpr std::size_t most_capacity = 0xFFF;

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
using key_text = char[56];

/// The key of an element: the field's name, and for an array the index in brackets behind it.
const char* format_key(const field& which, unsigned index, key_text& key);

}  // namespace proreflax

#endif
