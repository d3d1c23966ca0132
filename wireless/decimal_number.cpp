#include "wireless/decimal_number.h"

// Declared here and not included, on purpose: <stdlib.h> may turn atoi() into an inline call of
// strtol(), and a program that interposes atoi() would be bypassed.
extern "C" int atoi(const char* text) noexcept;  // NOLINT(readability-redundant-declaration)

namespace proreflax {

int decimal_number(const char* text) {
  return atoi(text);
}

}  // namespace proreflax
