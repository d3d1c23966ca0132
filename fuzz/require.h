// A property that a fuzz target holds its subject to: when it does not hold, the run ends there and
// the input is kept.
#ifndef PROREFLAX_FUZZ_REQUIRE_H
#define PROREFLAX_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

inline void require(bool holds, const char* property) {
  if (!holds) {
    std::fprintf(stderr, "does not hold: %s\n", property);
    std::abort();
  }
}

#endif
