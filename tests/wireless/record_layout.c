/* What a C program sees of the records: the C++ half compares it. */
#include <proreflax/wireless.h>
#include <stddef.h>

#include "tests/wireless/record_layout.h"

const size_t wireless_layout_in_c[] = {WIRELESS_LAYOUT};
const size_t wireless_layout_length = sizeof wireless_layout_in_c / sizeof wireless_layout_in_c[0];
