// Decimal numbers as the driver prints them.
#ifndef PROREFLAX_WIRELESS_DECIMAL_NUMBER_H
#define PROREFLAX_WIRELESS_DECIMAL_NUMBER_H

namespace proreflax {

/// What the platform's atoi() gives for a NUL-terminated text, numbers out of range included.
int decimal_number(const char* text);

}  // namespace proreflax

#endif
