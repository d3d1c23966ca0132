// Decimal numbers as the driver prints them.
#ifndef PROREFLAX_WIRELESS_DECIMAL_NUMBER_H
#define PROREFLAX_WIRELESS_DECIMAL_NUMBER_H

namespace proreflax {

/// The result of the platform's atoi() for a NUL-terminated string, also for numbers out of range.
int decimal_number(const char* text);

}  // namespace proreflax

#endif
