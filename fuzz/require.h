// Checks a property of the code under test: if it does not hold, the run ends and the input is
// kept.
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
