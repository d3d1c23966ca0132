/* Turns the list of record_layout.inc into rows. Included by a C file and by a C++ file. */
#include <proreflax/config.h>
#include <proreflax/store.h>
#include <proreflax/wireless.h>
#include <stddef.h>

#include "tests/library/record_layout.h"

#define RECORD(record, on_32, on_64) {"size of " #record, sizeof(record), on_32, on_64},
#define MEMBER(record, member, on_32, on_64) \
  {#record "." #member, offsetof(record, member), on_32, on_64},
