#include <proreflax/sections.h>

#include "tests/accessors/layout.h"

#define RECORD(record, size) {#record, nullptr, 0, sizeof(record)},
#define FIELD(record, member, offset) \
  {#record, #member, offsetof(record, member), sizeof(record::member)},

const layout_row layout_in_cpp[] = {
#include "listed_layout.inc"
    {nullptr, nullptr, 0, 0}};
