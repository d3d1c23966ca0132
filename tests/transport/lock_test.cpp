#include "transport/lock.h"

#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <sched.h>
#include <sys/msg.h>
#include <sys/sem.h>

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/faults.h"
#include "tests/support/request_queue.h"
#include "tests/support/signal_storm.h"

using namespace proreflax;

namespace {

/// What the ids were before anything looked them up.
const int sem_id_at_start = g_cfc_sem_id;
const int msq_id_at_start = g_cfc_msq_id;

/// Whether a second has gone since it was made: as much as a test that repeats itself may take on a
/// busy machine.
class second_gone {
 public:
  explicit operator bool() const { return std::chrono::steady_clock::now() > end_; }

 private:
  std::chrono::steady_clock::time_point end_ =
      std::chrono::steady_clock::now() + std::chrono::seconds{1};
};

/// Counts that hold only as long as no two processes are between taking and giving the lock.
struct exclusion {
  std::atomic<long> counter = 0;
  std::atomic<long> entries = 0;
  std::atomic<int> inside = 0;
  std::atomic<int> met_another = 0;
  std::atomic<int> refused = 0;
  std::atomic<int> signals = 0;

  /// Takes the lock, adds one in two steps that another could come between, and gives it back.
  void enter_once() {
    if (cfc_get_mutex() != CFC_OK) {
      ++refused;
      return;
    }
    if (inside.fetch_add(1) != 0) {
      ++met_another;
    }
    const long seen = counter.load();
    sched_yield();
    counter.store(seen + 1);
    inside.fetch_sub(1);
    cfc_put_mutex();
    ++entries;
  }

  /// So many times, or as often as a busy machine allows in a second.
  int enter(int times) {
    const second_gone enough;
    for (int i = 0; i < times && !enough; ++i) {
      enter_once();
    }
    return 0;
  }

  void expect_excluded(int processes) const {
    EXPECT_GE(entries, processes);
    EXPECT_EQ(counter, entries);
    EXPECT_EQ(met_another, 0);
    EXPECT_EQ(refused, 0);
  }
};

template <typename Work>
void run_at_once(int processes, Work work) {
  std::vector<std::unique_ptr<child>> children;
  for (int i = 0; i < processes; ++i) {
    children.push_back(std::make_unique<child>(work));
  }
  for (const auto& each : children) {
    EXPECT_EQ(each->wait(), 0);
  }
}

struct victim_state {
  std::atomic<bool> holds = false;
  std::atomic<bool> began = false;
};

/// Holds the lock for about as long as it takes to get and give it, so that one kill in some meets
/// a holder.
int take_and_give_for_ever(victim_state& state) {
  for (;;) {
    state.holds = cfc_get_mutex() == CFC_OK;
    if (state.holds) {
      for (int i = 0; i < 5; ++i) {
        sched_yield();
      }
      state.holds = false;
      cfc_put_mutex();
      state.began = true;
    }
  }
}

}  // namespace

TEST(Lock, and_queue_have_their_fixed_keys) {
  const int lock = semget(0x083A030D, 1, IPC_CREAT | IPC_EXCL | 0600);
  const int queue = msgget(0x083A030E, IPC_CREAT | IPC_EXCL | 0600);
  ASSERT_EQ(semctl(lock, 0, SETVAL, 1), 0);
  EXPECT_EQ(cfc_get_mutex(), 0U);
  EXPECT_EQ(g_cfc_sem_id, lock);
  EXPECT_EQ(g_cfc_msq_id, queue);
  EXPECT_EQ(cfc_put_mutex(), 0U);
  semctl(lock, 0, IPC_RMID);
  msgctl(queue, IPC_RMID, nullptr);
}

TEST(Lock, ids_start_as_zero) {
  EXPECT_EQ(sem_id_at_start, 0);
  EXPECT_EQ(msq_id_at_start, 0);
}

TEST(Lock, without_a_semaphore_gives_230) {
  EXPECT_EQ(cfc_get_mutex(), 230U);
  EXPECT_EQ(g_cfc_sem_id, -1);
}

TEST(Lock, without_a_semaphore_leaves_the_queues_id_alone) {
  request_queue queue;
  queue.remove_lock();
  g_cfc_msq_id = 77;
  EXPECT_EQ(cfc_get_mutex(), 230U);
  EXPECT_EQ(g_cfc_msq_id, 77);
}

TEST(Lock, without_a_queue_gives_231_and_gives_the_lock_back) {
  request_queue queue;
  queue.remove_queue();
  EXPECT_EQ(cfc_get_mutex(), 231U);
  EXPECT_EQ(queue.lock_value(), 1);
  EXPECT_EQ(g_cfc_msq_id, -1);
}

TEST(Lock, is_looked_up_and_never_made) {
  EXPECT_EQ(cfc_get_mutex(), 230U);
  EXPECT_FALSE(request_queue::keys_in_use());
  request_queue queue;
  queue.remove_queue();
  EXPECT_EQ(cfc_get_mutex(), 231U);
  EXPECT_EQ(msgget(CFC_MSQ_KEY, 0), -1);
}

TEST(Lock, is_held_between_taking_and_giving) {
  request_queue queue;
  EXPECT_EQ(cfc_get_mutex(), 0U);
  EXPECT_EQ(queue.lock_value(), 0);
  EXPECT_EQ(cfc_put_mutex(), 0U);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(Lock, is_number_0_of_a_larger_set_of_semaphores) {
  request_queue queue;
  queue.remove_lock();
  const int set = semget(CFC_SEM_KEY, 3, IPC_CREAT | IPC_EXCL | 0600);
  std::array<unsigned short, 3> values{1, 5, 7};
  ASSERT_EQ(semctl(set, 0, SETALL, values.data()), 0);
  EXPECT_EQ(cfc_get_mutex(), 0U);
  EXPECT_EQ(semctl(set, 0, GETALL, values.data()), 0);
  EXPECT_EQ(values, (std::array<unsigned short, 3>{0, 5, 7}));
  EXPECT_EQ(cfc_put_mutex(), 0U);
  EXPECT_EQ(semctl(set, 0, GETALL, values.data()), 0);
  EXPECT_EQ(values, (std::array<unsigned short, 3>{1, 5, 7}));
  semctl(set, 0, IPC_RMID);
}

TEST(Lock, of_a_restarted_service_is_found_by_the_next_request) {
  auto before = std::make_unique<request_queue>();
  ASSERT_EQ(cfc_get_mutex(), 0U);
  cfc_put_mutex();
  const int old_lock = g_cfc_sem_id;
  const int old_queue = g_cfc_msq_id;
  before.reset();
  EXPECT_EQ(cfc_get_mutex(), 230U);
  request_queue after;
  EXPECT_EQ(cfc_get_mutex(), 0U);
  EXPECT_NE(g_cfc_sem_id, old_lock);
  EXPECT_NE(g_cfc_msq_id, old_queue);
  EXPECT_EQ(after.lock_value(), 0);
  cfc_put_mutex();
}

TEST(Lock, is_given_back_also_when_it_no_longer_exists) {
  request_queue queue;
  ASSERT_EQ(cfc_get_mutex(), 0U);
  queue.remove_lock();
  EXPECT_EQ(cfc_put_mutex(), 0U);
}

TEST(Lock, that_was_not_taken_is_raised_above_1_and_excludes_no_longer) {
  request_queue queue;
  ASSERT_EQ(cfc_get_mutex(), 0U);
  EXPECT_EQ(cfc_put_mutex(), 0U);
  EXPECT_EQ(cfc_put_mutex(), 0U);
  EXPECT_EQ(queue.lock_value(), 2);
  EXPECT_EQ(cfc_get_mutex(), 0U);
  EXPECT_EQ(cfc_get_mutex(), 0U) << "no wait";
  EXPECT_EQ(queue.lock_value(), 0);
}

TEST(Lock, wait_that_a_signal_interrupts_is_taken_up_again) {
  request_queue queue;
  faults::fail(faults::call::semop, 1, EINTR);
  EXPECT_EQ(cfc_get_mutex(), 0U);
  EXPECT_EQ(faults::calls(faults::call::semop), 2);
  EXPECT_EQ(queue.lock_value(), 0);
  cfc_put_mutex();
}

TEST(Lock, wait_that_fails_otherwise_counts_as_success) {
  request_queue queue;
  for (const int error : {EIDRM, EINVAL, EACCES, ENOSPC}) {
    faults::fail(faults::call::semop, 1, error);
    EXPECT_EQ(cfc_get_mutex(), 0U);
    EXPECT_EQ(faults::calls(faults::call::semop), 1);
    EXPECT_EQ(g_cfc_msq_id, queue.queue_id());
    EXPECT_EQ(queue.lock_value(), 1);
  }
}

TEST(Lock, that_vanishes_during_the_wait_ends_it) {
  request_queue queue;
  queue.set_lock_value(0);
  child waiter{[] { return static_cast<int>(cfc_get_mutex()); }};
  ASSERT_TRUE(eventually([&] { return queue.waiting_for_lock() == 1; }));
  queue.remove_queue();
  queue.remove_lock();
  EXPECT_EQ(waiter.wait(), 231);
}

TEST(Lock, giving_that_fails_is_not_reported) {
  request_queue queue;
  ASSERT_EQ(cfc_get_mutex(), 0U);
  faults::fail(faults::call::semop, 1);
  EXPECT_EQ(cfc_put_mutex(), 0U);
  EXPECT_EQ(faults::calls(faults::call::semop), 1);
}

TEST(Lock, lookup_that_fails_gives_230_or_231_and_leaves_it_free) {
  request_queue queue;
  faults::fail(faults::call::semget, 1, EACCES);
  EXPECT_EQ(cfc_get_mutex(), 230U);
  EXPECT_EQ(faults::calls(faults::call::semop), 0);
  faults::fail(faults::call::msgget, 1, EACCES);
  EXPECT_EQ(cfc_get_mutex(), 231U);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(Lock, held_by_another_process_is_waited_for) {
  request_queue queue;
  queue.set_lock_value(0);
  shared<std::atomic<bool>> taken;
  child waiter{[&] {
    const bool got_it = cfc_get_mutex() == 0;
    *taken = got_it;
    return got_it ? 0 : 1;
  }};
  ASSERT_TRUE(eventually([&] { return queue.waiting_for_lock() == 1; }));
  EXPECT_FALSE(*taken);
  queue.set_lock_value(1);
  EXPECT_EQ(waiter.wait(), 0);
  EXPECT_TRUE(*taken);
}

TEST(Lock, wait_outlasts_any_number_of_signals) {
  request_queue queue;
  queue.set_lock_value(0);
  shared<std::atomic<int>> signals;
  shared<std::atomic<bool>> returned;
  child waiter{[&] {
    const signal_storm storm{*signals, 1000};
    const auto result = static_cast<int>(cfc_get_mutex());
    *returned = true;
    return result;
  }};
  EXPECT_TRUE(eventually([&] { return *signals >= 20; }));
  EXPECT_FALSE(*returned);
  EXPECT_EQ(queue.lock_value(), 0);
  queue.set_lock_value(1);
  EXPECT_EQ(waiter.wait(), 0);
}

TEST(Lock, of_a_process_that_took_and_gave_it_stays_free_when_it_ends) {
  request_queue queue;
  run_at_once(1, [] { return static_cast<int>(cfc_get_mutex() + cfc_put_mutex()); });
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(Lock, of_a_process_that_ends_while_it_holds_it_is_free) {
  request_queue queue;
  run_at_once(1, [] { return static_cast<int>(cfc_get_mutex()); });
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(Lock, of_a_killed_process_goes_to_the_one_that_waits) {
  request_queue queue;
  child holder{[] {
    if (cfc_get_mutex() == 0) {
      pause();
    }
    return 1;
  }};
  ASSERT_TRUE(eventually([&] { return queue.lock_value() == 0; }));
  child waiter{[] { return static_cast<int>(cfc_get_mutex()); }};
  ASSERT_TRUE(eventually([&] { return queue.waiting_for_lock() == 1; }));
  holder.kill_and_wait();
  EXPECT_EQ(waiter.wait(), 0);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(Lock, is_free_after_a_process_ends_behind_any_of_its_system_calls) {
  request_queue queue;
  bool cut = true;
  int calls = 0;
  for (; cut && calls < 100; ++calls) {
    child asker{[&] {
      queue.reply_with(0);
      faults::cut_after(calls + 1);
      return static_cast<int>(cfc_flush_all_nosem());
    }};
    cut = asker.wait() == faults::exit_cut;
    EXPECT_EQ(queue.lock_value(), 1) << "after call " << calls + 1;
  }
  EXPECT_EQ(calls, 7) << "semget, semop, msgget, msgsnd, msgrcv, semop, and one run to the end";
}

TEST(Lock, is_free_after_a_process_is_killed_at_any_moment) {
  request_queue queue;
  const second_gone enough;
  int killed_as_holders = 0;
  for (useconds_t moment = 0; moment < 200 && !(enough && killed_as_holders > 0); ++moment) {
    shared<victim_state> state;
    child victim{[&] { return take_and_give_for_ever(*state); }};
    ASSERT_TRUE(eventually([&] { return state->began.load(); }));
    usleep(moment * 7 % 1000);
    victim.kill_and_wait();
    killed_as_holders += state->holds ? 1 : 0;
    ASSERT_EQ(queue.lock_value(), 1) << "victim " << moment;
  }
  EXPECT_GT(killed_as_holders, 0);
}

TEST(Lock, excludes_among_many_processes) {
  request_queue queue;
  shared<exclusion> board;
  run_at_once(12, [&] { return board->enter(500); });
  board->expect_excluded(12);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(Lock, excludes_in_a_storm_of_signals) {
  request_queue queue;
  shared<exclusion> board;
  run_at_once(8, [&] {
    const signal_storm storm{board->signals, 300};
    while (board->signals < 3000) {
      board->enter_once();
    }
    return 0;
  });
  board->expect_excluded(8);
  EXPECT_EQ(queue.lock_value(), 1);
}

TEST(Lock, excludes_while_other_holders_are_killed) {
  request_queue queue;
  shared<exclusion> board;
  child killer{[] {
    const second_gone enough;
    for (int i = 0; i < 100 && !enough; ++i) {
      shared<victim_state> state;
      child victim{[&] { return take_and_give_for_ever(*state); }};
      usleep(1000);
      victim.kill_and_wait();
    }
    return 0;
  }};
  run_at_once(4, [&] { return board->enter(500); });
  EXPECT_EQ(killer.wait(), 0);
  board->expect_excluded(4);
  EXPECT_EQ(queue.lock_value(), 1);
}
