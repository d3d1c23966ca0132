#include <proreflax/sections.h>

#include "tests/accessors/layout.h"

#define RECORD(record, size) {#record, NULL, 0, sizeof(record)},
#define FIELD(record, member, offset) \
  {#record, #member, offsetof(record, member), sizeof(((record*)0)->member)},

const struct layout_row layout_in_c[] = {
#include "listed_layout.inc"
    {NULL, NULL, 0, 0}};
