// The bytes of a driver's text as a naive reader walks them: a search ends at a NUL, a fixed
// distance passes it.
#ifndef PROREFLAX_FUZZ_NAIVE_BYTES_H
#define PROREFLAX_FUZZ_NAIVE_BYTES_H

#include <cstddef>
#include <string>

/// The bytes from a place on, none after the last.
inline std::string from(const std::string& bytes, std::size_t place) {
  return place < bytes.size() ? bytes.substr(place) : "";
}

/// Where a character is found from a place on, before the next NUL; npos if nowhere.
inline std::size_t find_before_nul(const std::string& bytes, char wanted, std::size_t place) {
  for (; place < bytes.size() && bytes[place] != '\0'; ++place) {
    if (bytes[place] == wanted) {
      return place;
    }
  }
  return std::string::npos;
}

#endif
