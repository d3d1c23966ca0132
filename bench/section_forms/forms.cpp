// How large are the sections' tables when they are stored in another form? The same rows, the same
// engine and the same getters and setters; FORM selects how a table is stored:
//
//   0  as in the library: tag bytes and names in one byte string
//   1  rows with a pointer to the key
//   2  rows with the key stored inline
//   3  rows with the key as an offset into one pool for all sections
//   4  rows without a key, and the names one after the other
//   5  as 0, with one tag for a run of similar fields
//
// measure.sh builds one shared object per form and prints its size. Nothing here is shipped.
#include <algorithm>
#include <array>
#include <iterator>

#include "accessors/device_tables.h"
#include "accessors/panel_tables.h"
#include "accessors/section_engine.cpp"
#include "accessors/section_table.cpp"
#include "accessors/wireless_tables.h"

namespace proreflax {
namespace {

template <typename Record>
inline constexpr std::size_t row_count = std::size(section<Record>::rows);

/// What every form except 0 and 5 stores for a field in addition to its key.
struct shape {
  std::uint16_t capacity = 0;
  value_type type{};
  std::uint8_t count = 0;
};

constexpr shape shape_of(const field& member) {
  return {member.capacity, member.type, member.count};
}

/// Replaces the field in `which` with the next one.
void place(field& which, const char* name, const shape& next) {
  const std::size_t previous_end = which.end();
  which = {name, next.type, next.count, next.capacity, 0};
  which.offset = aligned(previous_end, which.alignment());
}

#if FORM == 0

using stored = const char*;
template <typename Record>
inline constexpr const auto& kept = packed<Record>;

template <typename Visit>
std::uint32_t visit_fields(stored table, Visit visit) {
  const section_table fields{table};
  for (const field& each : fields) {
    if (const std::uint32_t result = visit(fields.name(), each); result != CFC_OK) {
      return result;
    }
  }
  return CFC_OK;
}

template <typename Record>
stored stored_table() {
  return kept<Record>.data();
}

#elif FORM == 1 || FORM == 2 || FORM == 3

#if FORM == 1
using kept_key = const char*;
constexpr kept_key keep_key(const char* name) {
  return name;
}
const char* key_of(const kept_key& key) {
  return key;
}
#elif FORM == 2
using kept_key = std::array<char, 24>;
constexpr kept_key keep_key(const char* name) {
  kept_key key{};
  std::copy_n(name, std::char_traits<char>::length(name), key.begin());
  return key;
}
const char* key_of(const kept_key& key) {
  return key.data();
}
#else
using kept_key = std::uint16_t;
struct name_pool {
  std::array<char, 4096> text{};
  std::size_t size = 0;

  constexpr std::size_t find(std::string_view name) const {
    for (std::size_t at = 0; at + name.size() < size; ++at) {
      if (std::string_view(&text[at], name.size()) == name && text[at + name.size()] == '\0') {
        return at;
      }
    }
    return size;
  }
  constexpr void add(std::string_view name) {
    if (find(name) == size) {
      std::copy(name.begin(), name.end(), text.begin() + static_cast<std::ptrdiff_t>(size));
      size += name.size() + 1;
    }
  }
  template <typename Record>
  constexpr void add_section() {
    for (const row& each : section<Record>::rows) {
      add(each.member.name);
    }
  }
};
#define ADD(record) pool.add_section<record>();
constexpr name_pool whole_pool = [] {
  name_pool pool;
#define SECTION ADD
#include "bench/section_forms/records.inc"
#undef SECTION
  return pool;
}();
constexpr auto pool = [] {
  std::array<char, whole_pool.size> cut{};
  std::copy_n(whole_pool.text.begin(), cut.size(), cut.begin());
  return cut;
}();
constexpr kept_key keep_key(const char* name) {
  return static_cast<kept_key>(whole_pool.find(name));
}
const char* key_of(const kept_key& key) {
  return &pool[key];
}
#endif

struct kept_row {
  kept_key key{};
  shape what;
};

template <std::size_t Rows>
struct kept_table {
  char name[section_name_max + 1]{};
  std::uint8_t count = Rows;
  kept_row rows[Rows]{};
};

template <typename Record>
inline constexpr auto kept = [] {
  kept_table<row_count<Record> > table;
  std::copy(std::begin(section<Record>::name), std::end(section<Record>::name), table.name);
  for (std::size_t i = 0; i < row_count<Record>; ++i) {
    const field& member = section<Record>::rows[i].member;
    table.rows[i] = {keep_key(member.name), shape_of(member)};
  }
  return table;
}();

using stored = const kept_table<1>*;

template <typename Visit>
std::uint32_t visit_fields(stored table, Visit visit) {
  field which{};
  for (const kept_row* each = table->rows; each != table->rows + table->count; ++each) {
    place(which, key_of(each->key), each->what);
    if (const std::uint32_t result = visit(table->name, which); result != CFC_OK) {
      return result;
    }
  }
  return CFC_OK;
}

template <typename Record>
stored stored_table() {
  return reinterpret_cast<stored>(&kept<Record>);
}

#elif FORM == 4

template <typename Record>
inline constexpr std::size_t names_bytes = [] {
  std::size_t bytes = std::size(section<Record>::name);
  for (const row& each : section<Record>::rows) {
    bytes += std::string_view{each.member.name}.size() + 1;
  }
  return bytes;
}();

template <std::size_t Rows, std::size_t Names>
struct kept_table {
  std::uint16_t count = Rows;
  shape rows[Rows]{};
  char names[Names]{};
};

template <typename Record>
inline constexpr auto kept = [] {
  kept_table<row_count<Record>, names_bytes<Record> > table;
  char* end =
      std::copy(std::begin(section<Record>::name), std::end(section<Record>::name), table.names);
  for (std::size_t i = 0; i < row_count<Record>; ++i) {
    const field& member = section<Record>::rows[i].member;
    table.rows[i] = shape_of(member);
    const std::string_view name = member.name;
    end = std::copy(name.begin(), name.end(), end) + 1;
  }
  return table;
}();

using stored = const kept_table<1, 1>*;

template <typename Visit>
std::uint32_t visit_fields(stored table, Visit visit) {
  const char* section_name = reinterpret_cast<const char*>(table->rows + table->count);
  const char* name = section_name;
  field which{};
  for (const shape* each = table->rows; each != table->rows + table->count; ++each) {
    name += std::strlen(name) + 1;
    place(which, name, *each);
    if (const std::uint32_t result = visit(section_name, which); result != CFC_OK) {
      return result;
    }
  }
  return CFC_OK;
}

template <typename Record>
stored stored_table() {
  return reinterpret_cast<stored>(&kept<Record>);
}

#elif FORM == 5

constexpr bool alike(const field& one, const field& other) {
  return one.type == other.type && one.count == other.count && one.capacity == other.capacity;
}

template <typename Section, typename Take>
constexpr void pack_runs_into(Take take) {
  const auto take_string = [&](std::string_view text) {
    for (const char c : text) {
      take(static_cast<unsigned char>(c));
    }
    take(0U);
  };
  take_string(Section::name);
  const row* const end = std::end(Section::rows);
  for (const row* run = Section::rows; run != end;) {
    const field& first = run->member;
    const row* end_of_run = run;
    while (end_of_run != end && alike(end_of_run->member, first)) {
      ++end_of_run;
    }
    const unsigned capacity = first.has_number() ? 0 : first.capacity;
    take(static_cast<unsigned>(first.type) | (first.is_array() ? tag_array : 0) |
         (capacity >> tag_capacity_shift & tag_capacity));
    take(static_cast<unsigned>(end_of_run - run));
    if (first.is_array()) {
      take(first.count);
    }
    if (!first.has_number()) {
      take(capacity & 0xFF);
    }
    for (; run != end_of_run; ++run) {
      take_string(run->member.name);
    }
  }
  take(0U);
}

template <typename Record>
inline constexpr auto kept = [] {
  constexpr std::size_t size = [] {
    std::size_t bytes = 0;
    pack_runs_into<section<Record> >([&](unsigned) { ++bytes; });
    return bytes;
  }();
  std::array<char, size> table{};
  std::size_t at = 0;
  pack_runs_into<section<Record> >([&](unsigned byte) { table[at++] = static_cast<char>(byte); });
  return table;
}();

using stored = const char*;

template <typename Visit>
std::uint32_t visit_fields(stored table, Visit visit) {
  const char* at = table + std::strlen(table) + 1;
  const auto next_byte = [&at] { return static_cast<unsigned char>(*at++); };
  field which{};
  while (const unsigned tag = next_byte()) {
    unsigned run = next_byte();
    shape what;
    what.type = static_cast<value_type>(tag & tag_type);
    what.count = (tag & tag_array) != 0 ? next_byte() : std::uint8_t{0};
    what.capacity =
        what.type < value_type::string
            ? number_bytes(what.type)
            : static_cast<std::uint16_t>((tag & tag_capacity) << tag_capacity_shift | next_byte());
    for (; run > 0; --run) {
      place(which, at, what);
      at += std::strlen(at) + 1;
      if (const std::uint32_t result = visit(table, which); result != CFC_OK) {
        return result;
      }
    }
  }
  return CFC_OK;
}

template <typename Record>
stored stored_table() {
  return kept<Record>.data();
}

#endif

std::uint32_t __attribute__((noinline)) move_stored(stored table, void* record, move_value move) {
  return with_lock([=] {
    return visit_fields(table, [=](const char* section, const field& each) {
      return move_field(section, each, static_cast<char*>(record), move);
    });
  });
}

std::uint32_t __attribute__((noinline)) get_stored(stored table, void* record) {
  return move_stored(table, record, get_value);
}

std::uint32_t __attribute__((noinline)) set_stored(stored table, void* record) {
  return move_stored(table, record, set_value);
}

}  // namespace
}  // namespace proreflax

#define SECTION(record)                                                   \
  extern "C" PROREFLAX_API std::uint32_t form_get_##record(void* out) {   \
    return proreflax::get_stored(proreflax::stored_table<record>(), out); \
  }                                                                       \
  extern "C" PROREFLAX_API std::uint32_t form_set_##record(void* in) {    \
    return proreflax::set_stored(proreflax::stored_table<record>(), in);  \
  }
#include "bench/section_forms/records.inc"
