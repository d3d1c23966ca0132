#include "wireless/decimal_number.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace proreflax;

TEST(DecimalNumber, is_what_atoi_gives) {
  for (const char* text : {"0",
                           "7",
                           "007",
                           "-7",
                           "+7",
                           "--7",
                           "+-7",
                           "- 7",
                           "12x",
                           "x12",
                           "",
                           " ",
                           "-",
                           "\t\n\v\f\r 12",
                           "0x10",
                           "2147483647",
                           "-2147483648",
                           "2147483648",
                           "-2147483649",
                           "4294967296",
                           "9223372036854775808",
                           "-99999999999999999999999999999999"}) {
    EXPECT_EQ(decimal_number(text), std::atoi(text)) << text;
  }
}
