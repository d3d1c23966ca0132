#include "wireless/decimal_text.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace proreflax;

TEST(DecimalText, in_range_is_read_as_atoi_reads_it) {
  for (const char* text :
       {"0",           "7",          "007",           "-7",   "+7",    "--7",
        "+-7",         "- 7",        "12x",           "x12",  "",      " ",
        "-",           " 12",        "\t\n\v\f\r 12", "0x10", "1e3",   "2147483647",
        "-2147483648", "2147483646", "-2147483647",   "9 9",  "\x85 5"}) {
    EXPECT_EQ(decimal_number(text), std::atoi(text)) << text;
  }
}

TEST(DecimalText, out_of_range_is_the_nearest_number_in_it) {
  for (const char* text : {"2147483648", "4294967295", "4294967296", "9223372036854775808",
                           "99999999999999999999999999999999"}) {
    EXPECT_EQ(decimal_number(text), INT32_MAX) << text;
    EXPECT_EQ(decimal_number(("-" + std::string{text}).c_str()), INT32_MIN) << text;
  }
}
