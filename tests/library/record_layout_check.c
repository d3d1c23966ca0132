/* The records of record_layout.inc, held against what the compiler makes of them. This file is only
 * compiled, as C and as C++: a record that is laid out otherwise is an array of negative size. */
#include <proreflax/config.h>
#include <proreflax/store.h>
#include <proreflax/wireless.h>
#include <stddef.h>

#define LAID_DOWN(on_32, on_64) (sizeof(void*) == 4 ? (on_32) : (on_64))
#define RECORD(record, on_32, on_64) \
  typedef char size_of_##record[sizeof(record) == LAID_DOWN(on_32, on_64) ? 1 : -1];
#define MEMBER(record, member, on_32, on_64) \
  typedef char                               \
      offset_of_##record##_##member[offsetof(record, member) == LAID_DOWN(on_32, on_64) ? 1 : -1];
#include "tests/library/record_layout.inc"
