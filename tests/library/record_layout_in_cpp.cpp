#include "tests/library/record_layout_rows.h"

const layout_row layout_in_cpp[] = {
#include "tests/library/record_layout.inc"
    {nullptr, 0, 0, 0}};
