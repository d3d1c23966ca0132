/* The listed layout, held against what the compiler makes of the records. This file is only
 * compiled, as C and as C++, for 32-bit and for 64-bit targets: a record that is laid out otherwise
 * is an array of negative size. */
#include <proreflax/sections.h>
#include <stddef.h>

#define RECORD(record, size) typedef char size_of_##record[sizeof(record) == (size) ? 1 : -1];
#define FIELD(record, member, offset) \
  typedef char offset_of_##record##_##member[offsetof(record, member) == (offset) ? 1 : -1];
#include "listed_layout.inc"
