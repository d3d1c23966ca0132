#include "settings/request.h"

#include <gtest/gtest.h>

#include <cerrno>

#include "tests/support/faults.h"
#include "tests/support/request_queue.h"

using namespace proreflax::settings;

TEST(Request, every_call_that_fails_once_is_reported_and_leaves_the_lock_free) {
  for (const value_kind kind : {value_kind::string, value_kind::u8, value_kind::binary}) {
    for (const auto call : {faults::call::msgsnd, faults::call::msgrcv, faults::call::malloc}) {
      const request_queue queue;
      faults::fail(call, 1, EIO);
      const answer result = carry_out(get_request{"A", "b", kind}, lock_flag::take);
      EXPECT_TRUE(faults::happened());
      EXPECT_EQ(result.code, call == faults::call::malloc ? 12U : static_cast<std::uint32_t>(EIO));
      EXPECT_FALSE(result.value);
      EXPECT_EQ(queue.lock_value(), 1);
      faults::reset();
    }
  }
}
