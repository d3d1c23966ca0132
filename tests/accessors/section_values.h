// Values for the sections of the listing, each as it stands in the store and as it stands in the
// record. The two forms are written here on their own, without the library's conversions.
#ifndef PROREFLAX_TESTS_ACCESSORS_SECTION_VALUES_H
#define PROREFLAX_TESTS_ACCESSORS_SECTION_VALUES_H

#include <cstdint>
#include <iosfwd>
#include <random>
#include <string>
#include <vector>

#include "tests/accessors/listing.h"
#include "tests/support/request_queue.h"
#include "tests/support/scripted_service.h"

/// A value: the text that a setter writes, and the bytes that a getter writes (of a text, those up
/// to its NUL; what stands behind it in the field is nobody's).
struct section_value {
  std::string text;
  bytes content;
};

section_value number_value(const listed_field& field, std::uint32_t number);
section_value text_value(const std::string& characters);
section_value binary_value(const bytes& content);

/// Any value that the field can hold and the store can keep.
section_value random_value(const listed_field& field, std::mt19937& random);

/// One for each element of the section, in visiting order.
std::vector<section_value> random_values(const listed_section& section, std::mt19937& random);

/// Makes the service hold them.
void hold(scripted_service& service, const listed_section& section,
          const std::vector<section_value>& values);

/// A record between guards, all filled with one byte. Comparing two compares every byte of both:
/// members, the gaps between them, what stands behind a text's NUL, and the guards.
class guarded_record {
 public:
  explicit guarded_record(const listed_section& section, std::uint8_t fill = 0xA5);

  void* get() { return all_.data() + guard_bytes; }
  const void* get() const { return all_.data() + guard_bytes; }

  void put(const element& where, const section_value& value);
  void put(const element& where, const bytes& content);

  friend bool operator==(const guarded_record&, const guarded_record&) = default;
  friend void PrintTo(const guarded_record& record, std::ostream* out);

 private:
  static constexpr std::size_t guard_bytes = 256;

  bytes all_;
};

#endif
