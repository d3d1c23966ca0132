/* Where a compiler puts the records' members: told by C and by C++, in the listing's order. */
#ifndef PROREFLAX_TESTS_ACCESSORS_LAYOUT_H
#define PROREFLAX_TESTS_ACCESSORS_LAYOUT_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

struct layout_row {
  const char* record;
  const char* member; /* null: the record itself; behind the last row both are */
  size_t offset;
  size_t bytes;
};

extern const struct layout_row layout_in_c[];
extern const struct layout_row layout_in_cpp[];

#ifdef __cplusplus
}
#endif

#endif
