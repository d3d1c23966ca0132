// The twelve typed operations: each converts between a native type and a value string, with one raw
// get or set.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

#include <proreflax/config.h>
#include "transport/message.h"
#include "transport/names.h"
#include "transport/raw_value.h"
#include "values/hex_text.h"
#include "values/number_text.h"

namespace proreflax {
namespace {

std::uint32_t get_raw(int locked, const char* section, const char* key, char* out,
                      std::int32_t* length) {
  const auto get = locked != 0 ? __cfc_get_raw_sem : __cfc_get_raw_nosem;
  return get(section, key, out, length);
}

std::uint32_t set_raw(int locked, const char* section, const char* key, const char* value,
                      std::int32_t length) {
  const auto set = locked != 0 ? __cfc_set_raw_sem : __cfc_set_raw_nosem;
  return set(section, key, value, length);
}

/// Reads a value of at most N - 1 characters and terminates it.
template <std::size_t N>
std::uint32_t get_string(int locked, const char* section, const char* key, char (&string)[N]) {
  std::int32_t length = N - 1;
  const std::uint32_t result = get_raw(locked, section, key, string, &length);
  if (result == CFC_OK) {
    string[length] = '\0';
  }
  return result;
}

/// Room for the longest number or address that is read, with its NUL.
using short_string = char[16];

template <typename Number>
std::uint32_t get_number(int locked, const char* section, const char* key, Number* out) {
  short_string string;
  if (const std::uint32_t result = get_string(locked, section, key, string); result != CFC_OK) {
    return result;
  }
  std::uint32_t number = 0;
  if (const std::uint32_t result = cfc_str_to_u32(string, &number); result != CFC_OK) {
    return result;
  }
  if (number > std::numeric_limits<Number>::max()) {
    return CFC_ERR_BAD_VALUE;
  }
  if (out == nullptr) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  *out = static_cast<Number>(number);
  return CFC_OK;
}

/// Writes a number as "0x" and two digits per byte of its type.
template <typename Number>
std::uint32_t set_number(int locked, const char* section, const char* key, Number value) {
  short_string string;
  const int length =
      std::snprintf(string, sizeof string, "0x%0*x", static_cast<int>(2 * sizeof value),
                    static_cast<unsigned>(value));
  return set_raw(locked, section, key, string, length);
}

/// Length of the hexadecimal string of `count` bytes; 0 for an invalid count: below 1, or so large
/// that the length would overflow.
constexpr std::int32_t hex_length(std::int32_t count) {
  constexpr std::int32_t count_max = (std::numeric_limits<std::int32_t>::max() - 2) / 2;
  return count < 1 || count > count_max ? 0 : 2 * count + 2;
}

using allocated_string = std::unique_ptr<char, free_memory>;

allocated_string allocate_string(std::int32_t length) {
  return allocated_string{static_cast<char*>(std::malloc(static_cast<std::size_t>(length)))};
}

}  // namespace
}  // namespace proreflax

using namespace proreflax;

std::uint32_t __cfc_get_u8(int locked, const char* section, const char* key, std::uint8_t* out) {
  return get_number(locked, section, key, out);
}

std::uint32_t __cfc_get_u16(int locked, const char* section, const char* key, std::uint16_t* out) {
  return get_number(locked, section, key, out);
}

std::uint32_t __cfc_get_u32(int locked, const char* section, const char* key, std::uint32_t* out) {
  short_string string;
  if (const std::uint32_t result = get_string(locked, section, key, string); result != CFC_OK) {
    return result;
  }
  // Parsed straight into the caller's number: the parser begins by storing 0 there, so a string
  // that is not a number leaves 0, and a null output is refused for any string.
  if (out == nullptr) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  return cfc_str_to_u32(string, out);
}

std::uint32_t __cfc_get_ip(int locked, const char* section, const char* key, std::uint32_t* out) {
  short_string string;
  const std::uint32_t result = get_string(locked, section, key, string);
  // A malformed address, or a null output, returns the conversion's -1 unchanged, all ones: callers
  // distinguish it from 205.
  return result == CFC_OK ? static_cast<std::uint32_t>(translate_ip_to_u32(string, out)) : result;
}

std::uint32_t __cfc_get_string(int locked, const char* section, const char* key, char* out,
                               std::uint32_t size_bytes) {
  auto length = static_cast<std::int32_t>(size_bytes - 1);
  const std::uint32_t result = get_raw(locked, section, key, out, &length);
  if (result == CFC_OK) {
    out[length] = '\0';
  }
  return result;
}

std::uint32_t __cfc_get_binary(int locked, const char* section, const char* key, std::uint8_t* out,
                               std::int32_t* count) {
  if (out == nullptr || count == nullptr || hex_length(*count) == 0) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  std::int32_t length = hex_length(*count);
  const allocated_string string = allocate_string(length);
  if (string == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  if (const std::uint32_t result = get_raw(locked, section, key, string.get(), &length);
      result != CFC_OK) {
    return result;
  }
  std::memset(out, 0, static_cast<std::size_t>(*count));
  return cfc_hex_to_bin(string.get(), length, out);
}

std::uint32_t __cfc_set_u8(int locked, const char* section, const char* key, std::uint8_t value) {
  return set_number(locked, section, key, value);
}

std::uint32_t __cfc_set_u16(int locked, const char* section, const char* key, std::uint16_t value) {
  return set_number(locked, section, key, value);
}

std::uint32_t __cfc_set_u32(int locked, const char* section, const char* key, std::uint32_t value) {
  return set_number(locked, section, key, value);
}

std::uint32_t __cfc_set_ip(int locked, const char* section, const char* key,
                           std::uint32_t address) {
  short_string string;
  if (translate_u32_to_ip(string, sizeof string, address) != 0) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  return set_raw(locked, section, key, string, static_cast<std::int32_t>(std::strlen(string)));
}

std::uint32_t __cfc_set_string(int locked, const char* section, const char* key,
                               const char* value) {
  const std::int32_t length = cfc_value_len(value);
  if (length < 0) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  return set_raw(locked, section, key, value, length);
}

std::uint32_t __cfc_set_binary(int locked, const char* section, const char* key,
                               const std::uint8_t* data, std::int32_t count) {
  if (data == nullptr || hex_length(count) == 0) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  const std::int32_t length = hex_length(count);
  const allocated_string string = allocate_string(length);
  if (string == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  cfc_bin_to_hex(data, static_cast<std::uint32_t>(count), string.get());
  return set_raw(locked, section, key, string.get(), length);
}
