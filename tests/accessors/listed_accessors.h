// The accessors behind the names of the listing, callable alike.
#ifndef PROREFLAX_TESTS_ACCESSORS_LISTED_ACCESSORS_H
#define PROREFLAX_TESTS_ACCESSORS_LISTED_ACCESSORS_H

#include <cstdint>
#include <string_view>

/// A getter and its setter on a record's bytes. A pair without a record takes one laid out as the
/// listing tells; the bytes need no alignment beyond malloc's.
struct accessor_pair {
  std::string_view getter;
  std::string_view setter;
  std::uint32_t (*get)(void* record);
  std::uint32_t (*set)(const void* record);
};

/// The pair to which a getter belongs; throws when there is none.
const accessor_pair& accessors_of(std::string_view getter);

#endif
