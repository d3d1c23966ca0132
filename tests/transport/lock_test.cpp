#include <gtest/gtest.h>
#include <proreflax/config.h>

#include "tests/support/faults.h"
#include "tests/support/request_queue.h"
#include "transport/lock.h"

using namespace proreflax;

TEST(Lock, without_a_semaphore_gives_230) {
  EXPECT_EQ(cfc_get_mutex(), 230U);
  EXPECT_EQ(g_cfc_sem_id, -1);
}

TEST(Lock, without_a_queue_gives_231_and_gives_the_lock_back) {
  request_queue queue;
  queue.remove_queue();
  EXPECT_EQ(cfc_get_mutex(), 231U);
  EXPECT_EQ(queue.lock_value(), 1);
  EXPECT_EQ(g_cfc_msq_id, -1);
}
