// One table a value of TABLE; only that of TABLE 0 may compile. Each names what is wrong with it.
#include "accessors/section_rows.h"

struct sample {
  std::uint8_t small;
  std::uint16_t number;
  std::uint32_t address;
  char texts[3][8];
  std::uint8_t last;
  std::uint8_t padding_follows;
};

struct signed_number {
  int number;
};

struct text_of_nothing {
  char text[1];
};

struct too_many_bytes {
  unsigned char bytes[99];
};

struct too_many_elements {
  char texts[256][2];
};

struct array_of_arrays {
  char texts[2][3][4];
};

struct long_name {
  char a_name_of_46_characters_leaves_no_room_for_ten[11][2];
};

#if TABLE == 8
#define RECORD signed_number
#elif TABLE == 9
#define RECORD text_of_nothing
#elif TABLE == 10
#define RECORD too_many_bytes
#elif TABLE == 11
#define RECORD too_many_elements
#elif TABLE == 12
#define RECORD array_of_arrays
#elif TABLE == 13
#define RECORD long_name
#else
#define RECORD sample
#endif

#if TABLE == 14
#define NAME "A_NAME_OF_25_CHARACTERS__"
#else
#define NAME "SAMPLE"
#endif

// clang-format off
template <>
struct proreflax::section<RECORD> {
  using record = RECORD;
  static constexpr char name[] = NAME;
  static constexpr row rows[] = {
#if TABLE == 0 || TABLE == 14  // whole; or with a name that is too long
      FIELD("small", small), FIELD("number", number), IP_FIELD("address", address),
      FIELD("texts[%d]", texts), FIELD("last", last), FIELD("padding_follows", padding_follows),
#elif TABLE == 1  // skips a member that padding would hide
      FIELD("number", number), IP_FIELD("address", address), FIELD("texts[%d]", texts),
      FIELD("last", last), FIELD("padding_follows", padding_follows),
#elif TABLE == 2  // skips the last member, which padding would hide
      FIELD("small", small), FIELD("number", number), IP_FIELD("address", address),
      FIELD("texts[%d]", texts), FIELD("last", last),
#elif TABLE == 3  // repeats a member
      FIELD("small", small), FIELD("number", number), IP_FIELD("address", address),
      IP_FIELD("address", address), FIELD("texts[%d]", texts), FIELD("last", last),
      FIELD("padding_follows", padding_follows),
#elif TABLE == 4  // reorders members
      FIELD("small", small), FIELD("number", number), IP_FIELD("address", address),
      FIELD("texts[%d]", texts), FIELD("padding_follows", padding_follows), FIELD("last", last),
#elif TABLE == 5  // a key of another name
      FIELD("small", small), FIELD("numbers", number), IP_FIELD("address", address),
      FIELD("texts[%d]", texts), FIELD("last", last), FIELD("padding_follows", padding_follows),
#elif TABLE == 6  // an array without its pattern
      FIELD("small", small), FIELD("number", number), IP_FIELD("address", address),
      FIELD("texts", texts), FIELD("last", last), FIELD("padding_follows", padding_follows),
#elif TABLE == 7  // an address of 16 bits
      FIELD("small", small), IP_FIELD("number", number), IP_FIELD("address", address),
      FIELD("texts[%d]", texts), FIELD("last", last), FIELD("padding_follows", padding_follows),
#elif TABLE == 8
      FIELD("number", number),
#elif TABLE == 9
      FIELD("text", text),
#elif TABLE == 10
      FIELD("bytes", bytes),
#elif TABLE == 11 || TABLE == 12
      FIELD("texts[%d]", texts),
#elif TABLE == 13
      FIELD("a_name_of_46_characters_leaves_no_room_for_ten[%d]",
            a_name_of_46_characters_leaves_no_room_for_ten),
#elif TABLE == 15  // a scalar with an array's pattern
      FIELD("small", small), FIELD("number[%d]", number), IP_FIELD("address", address),
      FIELD("texts[%d]", texts), FIELD("last", last), FIELD("padding_follows", padding_follows),
#endif
  };
};
// clang-format on

const char* first_byte() {
  return proreflax::table_of<RECORD>().name();
}
