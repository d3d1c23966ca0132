/* The records of the public headers as C and as C++ see them, in rows that a test compares. */
#ifndef PROREFLAX_TESTS_LIBRARY_RECORD_LAYOUT_H
#define PROREFLAX_TESTS_LIBRARY_RECORD_LAYOUT_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

struct layout_row {
  const char* what;
  size_t bytes; /* what the compiler makes of it */
  size_t on_32; /* what it has to be on 32-bit platforms */
  size_t on_64; /* and on 64-bit ones */
};

extern const struct layout_row layout_in_c[];
extern const struct layout_row layout_in_cpp[];

/* Both lists end with a row whose `what` is null. */

#ifdef __cplusplus
}
#endif

#endif
