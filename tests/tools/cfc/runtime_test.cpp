// What happens where the C++ library would throw. The source under test replaces operator new for
// the whole program.
#include <gtest/gtest.h>

#include <new>
#include <string>

#include "tests/support/faults.h"

namespace {

using testing::ExitedWithCode;

void* volatile memory = nullptr;

}  // namespace

TEST(Runtime, memory_that_cannot_be_had_ends_the_program_with_1) {
  EXPECT_EXIT(
      {
        faults::fail(faults::call::malloc, 1);
        memory = ::operator new(16);
      },
      ExitedWithCode(1), "^cfc: there is no memory left\n$");
}

TEST(Runtime, a_string_that_cannot_be_that_long_ends_it_too) {
  EXPECT_EXIT(std::string{}.resize(std::string::npos), ExitedWithCode(1),
              "^cfc: basic_string.*\n$");
}

TEST(Runtime, no_bytes_are_memory_of_their_own) {
  memory = ::operator new(0);
  EXPECT_NE(memory, nullptr);
  ::operator delete(memory);
}
