#include "tests/library/record_layout_rows.h"

const struct layout_row layout_in_c[] = {
#include "tests/library/record_layout.inc"
    {NULL, 0, 0, 0}};
