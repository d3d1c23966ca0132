#include "settings/service_state.h"

#include <gtest/gtest.h>

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
