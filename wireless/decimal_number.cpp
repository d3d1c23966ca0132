#include "wireless/decimal_number.h"

// Declared here instead of including <stdlib.h>, which may turn atoi() into an inline call of
// strtol() and so bypass a program that interposes atoi().
extern "C" int atoi(const char* text) noexcept;  // NOLINT(readability-redundant-declaration)

namespace proreflax {

int decimal_number(const char* text) {
  return atoi(text);
}

}  // namespace proreflax
