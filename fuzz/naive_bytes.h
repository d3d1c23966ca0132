// How a naive reader moves through the bytes of a driver's file: a search ends at a NUL, a step of
// a fixed distance passes it.
#ifndef PROREFLAX_FUZZ_NAIVE_BYTES_H
#define PROREFLAX_FUZZ_NAIVE_BYTES_H

#include <cstddef>
#include <string>

/// The bytes from an offset on; none after the end.
inline std::string from(const std::string& bytes, std::size_t offset) {
  return offset < bytes.size() ? bytes.substr(offset) : "";
}

/// The offset of a character at or after `offset` and before the next NUL; npos if there is none.
inline std::size_t find_before_nul(const std::string& bytes, char wanted, std::size_t offset) {
  for (; offset < bytes.size() && bytes[offset] != '\0'; ++offset) {
    if (bytes[offset] == wanted) {
      return offset;
    }
  }
  return std::string::npos;
}

#endif
