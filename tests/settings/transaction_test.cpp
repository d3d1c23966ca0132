#include "settings/transaction.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/faults.h"
#include "tests/support/scripted_service.h"

using namespace proreflax::settings;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

/// Sets a key of section A to "2".
transaction_step step(std::size_t number, const char* key) {
  return {.number = number,
          .asked = set_request{.section = "A", .key = key, .value = "2"},
          .fault = {}};
}

}  // namespace

TEST(Transaction, a_set_that_was_never_sent_is_not_put_back) {
  scripted_service service;
  service.holds("A", "b", "1");
  service.holds("A", "c", "1");
  const std::vector<transaction_step> steps{step(1, "b"), step(2, "c")};
  faults::fail(faults::call::malloc, 4);  // each request takes one: two gets, then the sets
  const outcome result = carry_out_all_or_nothing(steps);
  EXPECT_TRUE(faults::happened());
  faults::reset();
  EXPECT_EQ(result.steps[1].given.code, 12U);
  EXPECT_THAT(service.requests(), ElementsAre("get A b", "get A c", "set A b=2", "set A b=1"));
}

TEST(Transaction, the_first_failure_is_the_step_that_stopped_the_others) {
  scripted_service service;
  service.holds("A", "b", "1");
  service.holds("A", "c", "1");
  service.answers(4, 208);
  const outcome result = carry_out_all_or_nothing({step(1, "b"), step(2, "c")});
  ASSERT_NE(result.first_failure(), nullptr);
  EXPECT_EQ(result.first_failure()->step.number, 2U);
  EXPECT_THAT(failure_of(*result.first_failure()), StartsWith("set section \"A\" key \"c\": 208 "));
  EXPECT_EQ(result.steps[0].state, step_state::undone);
  EXPECT_EQ(result.code, 0U);
}

TEST(Transaction, without_a_service_nothing_is_tried_and_the_code_says_why) {
  const outcome result = carry_out_all_or_nothing({step(1, "b")});
  EXPECT_EQ(result.code, 230U);
  EXPECT_EQ(result.first_failure(), nullptr);
  EXPECT_EQ(result.steps[0].state, step_state::skipped);
}

TEST(Transaction, steps_without_a_request_are_all_found_before_anything_is_sent) {
  scripted_service service;
  service.holds("A", "b", "1");
  const transaction_step bad{.number = 2, .asked = {}, .fault = "bad"};
  const outcome result = carry_out_all_or_nothing({step(1, "b"), bad, bad});
  EXPECT_EQ(result.first_failure(), &result.steps[1]);
  EXPECT_EQ(result.steps[2].state, step_state::failed);
  EXPECT_EQ(failure_of(result.steps[2]), "bad");
  EXPECT_EQ(result.summary, "nothing was changed");
  EXPECT_THAT(service.requests(), ElementsAre());
}
