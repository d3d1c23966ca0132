// The rows of the sections' tables, and the conditions under which a table compiles.
//
//   template <>
//   struct section<surv_info> {
//     using record = surv_info;
//     static constexpr char name[] = "SURVEILLANCE";
//     static constexpr row rows[] = {
//         FIELD("ip[%d]", ip),
//         ...
//     };
//   };
//
// A row names a key and a member of the record. Value type, capacity and count are deduced from the
// member's C++ type; only an IPv4 address must be marked, with IP_FIELD. packed<surv_info> is the
// table as the library stores it. It compiles only if the rows are all members of the record, in
// their order and with their names. The rows themselves exist at compile time only.
#ifndef PROREFLAX_ACCESSORS_SECTION_ROWS_H
#define PROREFLAX_ACCESSORS_SECTION_ROWS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "accessors/section_table.h"
#include "transport/names.h"

namespace proreflax {

struct row {
  std::string_view key;
  field member;
};

/// The rows of a record's section.
template <typename Record>
struct section;

template <typename Number>
struct number_value {
  static constexpr std::uint16_t capacity = sizeof(Number);
  static constexpr std::uint8_t count = 0;
};

/// Value type, capacity and count of a member. A C++ type without them cannot be a member of a
/// record.
template <typename Member>
struct value_of;

template <>
struct value_of<std::uint8_t> : number_value<std::uint8_t> {
  static constexpr value_type type = value_type::u8;
};

template <>
struct value_of<std::uint16_t> : number_value<std::uint16_t> {
  static constexpr value_type type = value_type::u16;
};

template <>
struct value_of<std::uint32_t> : number_value<std::uint32_t> {
  static constexpr value_type type = value_type::u32;
};

template <std::size_t N>
struct value_of<char[N]> {
  static_assert(N >= 2 && N <= capacity_max,
                "a string of this capacity can be neither read nor packed");
  static constexpr value_type type = value_type::string;
  static constexpr std::uint16_t capacity = N;
  static constexpr std::uint8_t count = 0;
};

template <std::size_t N>
struct value_of<unsigned char[N]> {
  static_assert(2 * N + 2 <= value_max, "more bytes than a hexadecimal value can hold");
  static constexpr value_type type = value_type::binary;
  static constexpr std::uint16_t capacity = N;
  static constexpr std::uint8_t count = 0;
};

template <typename Element, std::size_t N>
struct value_of<Element[N]> : value_of<Element> {
  static_assert(value_of<Element>::count == 0, "an array of arrays has no keys");
  static_assert(N <= 0xFF, "an array of more elements than its count can express");
  static constexpr std::uint8_t count = N;
};

template <typename Member>
constexpr row row_of(std::string_view key, const char* name, std::size_t offset) {
  using value = value_of<Member>;
  return {key, {name, value::type, value::count, value::capacity, offset}};
}

template <typename Member>
constexpr row ip_row_of(std::string_view key, const char* name, std::size_t offset) {
  static_assert(value_of<Member>::type == value_type::u32, "an IPv4 address has 32 bits");
  row address = row_of<Member>(key, name, offset);
  address.member.type = value_type::ip;
  return address;
}

#define FIELD(key, member) \
  ::proreflax::row_of<decltype(record::member)>(key, #member, offsetof(record, member))
#define IP_FIELD(key, member) \
  ::proreflax::ip_row_of<decltype(record::member)>(key, #member, offsetof(record, member))

// ---- Checks of a table --------------------------------------------------------------------------

/// The key is the member's name, followed by "[%d]" for an array.
constexpr bool names_its_member(const row& each) {
  const std::string_view index = each.member.is_array() ? "[%d]" : "";
  const std::string_view name = each.member.name;
  return each.key.starts_with(name) && each.key.substr(name.size()) == index;
}

/// Number of characters that the longest index of an array adds to its name, brackets included.
constexpr std::int32_t index_characters(const field& member) {
  return !member.is_array() ? 0 : member.count > 100 ? 5 : member.count > 10 ? 4 : 3;
}

template <typename Section>
constexpr bool keys_name_their_members() {
  for (const row& each : Section::rows) {
    if (!names_its_member(each)) {
      return false;
    }
  }
  return true;
}

template <typename Section>
constexpr bool keys_obey_their_rules() {
  for (const row& each : Section::rows) {
    const field& member = each.member;
    if (!is_name_len(cfc_key_len(member.name) + index_characters(member), key_max)) {
      return false;
    }
  }
  return true;
}

template <typename Section>
constexpr bool members_are_in_order() {
  std::size_t end = 0;
  for (const row& each : Section::rows) {
    if (each.member.offset != aligned(end, each.member.alignment())) {
      return false;
    }
    end = each.member.end();
  }
  return aligned(end, alignof(typename Section::record)) == sizeof(typename Section::record);
}

template <std::size_t>
inline constexpr char zero = 0;

/// Whether the record has at least as many members as the sequence has numbers.
template <typename Record, std::size_t... Member>
constexpr bool has_members(std::index_sequence<Member...> /*numbers*/) {
  return requires {
    Record{{zero<Member>}...};
  };
}

/// Offsets cannot distinguish a small missing member at the end from the padding there.
template <typename Section>
constexpr bool every_member_has_a_row() {
  constexpr std::size_t rows = std::size(Section::rows);
  return has_members<typename Section::record>(std::make_index_sequence<rows>{}) &&
         !has_members<typename Section::record>(std::make_index_sequence<rows + 1>{});
}

// ---- Packing ------------------------------------------------------------------------------------

/// Passes the bytes of a packed table to `take`, one by one.
template <typename Section, typename Take>
constexpr void pack_into(Take take) {
  const auto take_string = [&](const char* characters) {
    do {
      take(static_cast<unsigned char>(*characters));
    } while (*characters++ != '\0');
  };
  take_string(Section::name);
  for (const row& each : Section::rows) {
    const field& member = each.member;
    const unsigned capacity = member.has_number() ? 0 : member.capacity;
    take(static_cast<unsigned>(member.type) | (member.is_array() ? tag_array : 0) |
         (capacity >> tag_capacity_shift & tag_capacity));
    if (member.is_array()) {
      take(member.count);
    }
    if (!member.has_number()) {
      take(capacity & 0xFF);
    }
    take_string(member.name);
  }
  take(0U);
}

template <typename Section>
consteval std::size_t packed_bytes() {
  std::size_t bytes = 0;
  pack_into<Section>([&](unsigned) { ++bytes; });
  return bytes;
}

template <typename Section>
consteval auto pack() {
  static_assert(is_name_len(length_without(Section::name, is_line_break) + 1, section_name_max),
                "the name breaks the rules of section names");
  static_assert(keys_name_their_members<Section>(), "a key is not the name of its member");
  static_assert(keys_obey_their_rules<Section>(), "a key breaks the rules of keys");
  static_assert(members_are_in_order<Section>(), "the table skips, repeats or reorders a member");
  static_assert(every_member_has_a_row<Section>(), "the table lacks the record's last member");
  std::array<char, packed_bytes<Section>()> packed{};
  std::size_t at = 0;
  pack_into<Section>([&](unsigned byte) { packed[at++] = static_cast<char>(byte); });
  return packed;
}

template <typename Record>
inline constexpr auto packed = pack<section<Record>>();

/// The table of a record's section.
template <typename Record>
constexpr section_table table_of() {
  return section_table{packed<Record>.data()};
}

}  // namespace proreflax

#endif
