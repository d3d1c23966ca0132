#include "settings/service_state.h"

#include <gtest/gtest.h>

#include "tests/support/files.h"

using namespace proreflax::settings;

TEST(ServiceState, a_lock_that_a_killed_service_left_counts_as_none) {
  const status_report report{.service = {.state = service_status::life::dead},
                             .lock = {.present = true},
                             .queue = {.present = true}};
  EXPECT_EQ(report.code(), 230U);
  EXPECT_EQ(report.sentence(), killed_service);
}

TEST(ServiceState, the_code_tells_what_is_missing_first) {
  EXPECT_EQ(status_report{}.code(), 230U);
  EXPECT_EQ((status_report{.service = {}, .lock = {}, .queue = {.present = true}}.code()), 230U);
  EXPECT_EQ((status_report{.service = {}, .lock = {.present = true}, .queue = {}}.code()), 231U);
  EXPECT_EQ(
      (status_report{.service = {}, .lock = {.present = true}, .queue = {.present = true}}.code()),
      0U);
  EXPECT_EQ((status_report{
                .service = {}, .lock = {.present = true, .error = 13}, .queue = {.present = true}}
                 .code()),
            13U);
  EXPECT_EQ((status_report{
                .service = {}, .lock = {.present = true}, .queue = {.present = true, .error = 13}}
                 .code()),
            13U);
}

TEST(ServiceState, what_is_served_is_read_from_the_status_file_of_that_very_service) {
  const files::temporary_file flash{"pid=71\nstarted=5\nsource=flash\nflash=ok\n"};
  EXPECT_TRUE(read_served_status(flash.path(), 71).known);
  EXPECT_TRUE(read_served_status(flash.path(), 71).from_flash);
  EXPECT_FALSE(read_served_status(flash.path(), 71).flash_unreadable);
  for (const int other : {7, 711, 0}) {
    EXPECT_FALSE(read_served_status(flash.path(), other).known) << other;
    EXPECT_FALSE(read_served_status(flash.path(), other).from_flash) << other;
  }
  const files::temporary_file memory{"pid=71\nsource=factory\nflash=unreadable\n"};
  EXPECT_FALSE(read_served_status(memory.path(), 71).from_flash);
  EXPECT_TRUE(read_served_status(memory.path(), 71).flash_unreadable);
}

TEST(ServiceState, what_is_served_is_not_known_without_a_status_file) {
  EXPECT_FALSE(read_served_status("/no/such/file", 71).known);
  const files::temporary_file garbage{std::string_view{"\0\xff garbage", 10}};
  EXPECT_FALSE(read_served_status(garbage.path(), 71).known);
}
