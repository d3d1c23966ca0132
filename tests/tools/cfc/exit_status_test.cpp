#include "tools/cfc/exit_status.h"

#include <gtest/gtest.h>
#include <proreflax/result.h>

using namespace cfc;

TEST(ExitStatus, only_a_missing_section_or_key_is_nothing_there) {
  for (std::uint32_t code = 0; code < 300; ++code) {
    const exit_status expected = code == 0                    ? exit_status::done
                                 : code == 201 || code == 209 ? exit_status::nothing_there
                                                              : exit_status::failed;
    EXPECT_EQ(status_of(code), expected) << code;
  }
  EXPECT_EQ(status_of(CFC_ERR_NOT_AN_ADDRESS), exit_status::failed);
}

TEST(ExitStatus, has_the_numbers_that_scripts_know) {
  EXPECT_EQ(static_cast<int>(exit_status::done), 0);
  EXPECT_EQ(static_cast<int>(exit_status::failed), 1);
  EXPECT_EQ(static_cast<int>(exit_status::wrong_usage), 2);
  EXPECT_EQ(static_cast<int>(exit_status::nothing_there), 3);
}
