#include "service/access_lock.h"

#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <signal.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/faults.h"
#include "transport/ipc_keys.h"

using namespace proreflax;

namespace {

using claim_result = access_lock::claim_result;

int present_set() {
  return semget(CFC_SEM_KEY, 0, 0);
}
int value_of(unsigned short semaphore) {
  return semctl(present_set(), semaphore, GETVAL);
}

class AccessLock : public testing::Test {
 protected:
  ~AccessLock() override {
    faults::reset();
    semctl(present_set(), 0, IPC_RMID);
  }

  /// A service that gets as far as `work` and is killed.
  template <typename Work>
  void killed_service(Work work) {
    const shared<std::atomic<bool>> done;
    const child service{[&] {
      access_lock its_lock;
      if (its_lock.claim(allowed) != claim_result::claimed) {
        return 1;
      }
      work(its_lock);
      *done = true;
      return pause();
    }};
    ASSERT_TRUE(eventually([&] { return done->load(); }));
  }

  permissions allowed;
  access_lock lock;
};

}  // namespace

TEST_F(AccessLock, a_new_set_is_held_until_it_is_released) {
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  EXPECT_EQ(value_of(lock_semaphore), 0);
  EXPECT_EQ(value_of(marker_semaphore), 1);
  ASSERT_TRUE(lock.release());
  EXPECT_EQ(value_of(lock_semaphore), 1);
}

TEST_F(AccessLock, of_a_service_killed_before_it_was_ready_is_free_again) {
  killed_service([](access_lock&) {});
  EXPECT_EQ(value_of(lock_semaphore), 1) << "clients go on to find no queue";
  EXPECT_EQ(value_of(marker_semaphore), 0);
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  EXPECT_EQ(value_of(lock_semaphore), 1);
}

TEST_F(AccessLock, of_a_creator_that_was_killed_at_once_is_claimed_like_a_new_one) {
  ASSERT_NE(semget(CFC_SEM_KEY, 2, IPC_CREAT | IPC_EXCL | 0600), -1);
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  EXPECT_EQ(value_of(lock_semaphore), 0);
  ASSERT_TRUE(lock.release());
  EXPECT_EQ(value_of(lock_semaphore), 1);
}

TEST_F(AccessLock, of_a_killed_service_is_taken_over_with_mode_and_group_set_anew) {
  killed_service([](access_lock& its_lock) { its_lock.release(); });
  const int set = present_set();
  allowed = {.mode = 0640, .has_group = true, .group = getuid() == 0 ? gid_t{12} : getgid()};
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  EXPECT_EQ(present_set(), set);
  semid_ds state{};
  ASSERT_EQ(semctl(set, 0, IPC_STAT, &state), 0);
  EXPECT_EQ(state.sem_perm.mode & 0777, 0640);
  EXPECT_EQ(state.sem_perm.gid, allowed.group);
  EXPECT_EQ(value_of(marker_semaphore), 1);
}

TEST_F(AccessLock, that_a_client_holds_stays_held_when_it_is_taken_over) {
  killed_service([](access_lock& its_lock) { its_lock.release(); });
  sembuf take{lock_semaphore, -1, SEM_UNDO};
  ASSERT_EQ(semop(present_set(), &take, 1), 0);
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  EXPECT_EQ(value_of(lock_semaphore), 0);
  ASSERT_TRUE(lock.release());
  EXPECT_EQ(value_of(lock_semaphore), 0) << "the service never held it";
  cfc_put_mutex();
}

TEST_F(AccessLock, raised_above_1_is_lowered_to_1_when_it_is_taken_over) {
  killed_service([](access_lock& its_lock) { its_lock.release(); });
  sembuf raise{lock_semaphore, 4, 0};
  ASSERT_EQ(semop(present_set(), &raise, 1), 0);
  ASSERT_EQ(value_of(lock_semaphore), 5);
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  EXPECT_EQ(value_of(lock_semaphore), 1);
}

TEST_F(AccessLock, of_one_killed_service_after_another_is_taken_over_each_time) {
  for (int i = 0; i < 3; ++i) {
    killed_service([](access_lock& its_lock) {
      its_lock.hold();
      its_lock.release();
    });
    EXPECT_EQ(value_of(marker_semaphore), 0);
    EXPECT_EQ(value_of(lock_semaphore), 1);
  }
}

TEST_F(AccessLock, of_a_service_killed_before_it_was_ready_after_a_takeover_is_free_again) {
  killed_service([](access_lock& its_lock) { its_lock.release(); });
  killed_service([](access_lock& its_lock) { its_lock.hold(); });
  EXPECT_EQ(value_of(lock_semaphore), 1);
  EXPECT_EQ(value_of(marker_semaphore), 0);
}

TEST_F(AccessLock, that_was_never_used_but_has_a_value_is_taken_over) {
  const int set = semget(CFC_SEM_KEY, 2, IPC_CREAT | IPC_EXCL | 0600);
  ASSERT_EQ(semctl(set, lock_semaphore, SETVAL, 1), 0);
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  EXPECT_EQ(present_set(), set);
  lock.hold();
  ASSERT_TRUE(lock.release());
  EXPECT_EQ(value_of(lock_semaphore), 1);
}

TEST_F(AccessLock, without_a_marker_is_replaced) {
  ASSERT_NE(semget(CFC_SEM_KEY, 1, IPC_CREAT | IPC_EXCL | 0600), -1);
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  semid_ds state{};
  ASSERT_EQ(semctl(present_set(), 0, IPC_STAT, &state), 0);
  EXPECT_EQ(state.sem_nsems, 2U);
}

TEST_F(AccessLock, of_a_live_service_is_not_claimed) {
  const child service{[&] {
    access_lock its_lock;
    return its_lock.claim(allowed) == claim_result::claimed && its_lock.release() ? pause() : 1;
  }};
  ASSERT_TRUE(eventually([] { return present_set() != -1 && value_of(lock_semaphore) == 1; }));
  EXPECT_EQ(lock.claim(allowed), claim_result::live_service);
  EXPECT_EQ(value_of(lock_semaphore), 1);
}

TEST_F(AccessLock, is_refused_with_the_call_and_the_error_that_stand_in_the_way) {
  const struct {
    faults::call call;
    int error;
    const char* name;
  } rows[] = {{faults::call::semget, ENOSPC, "semget"},
              {faults::call::semget, EACCES, "semget"},
              {faults::call::semop, ENOSYS, "semop"},
              {faults::call::semop, ENOSPC, "semop"},
              {faults::call::semop, ENOMEM, "semop"}};
  for (const auto& row : rows) {
    access_lock refused;
    faults::fail(row.call, 1, row.error);
    EXPECT_EQ(refused.claim(allowed), claim_result::failed) << row.name << ' ' << row.error;
    EXPECT_EQ(errno, row.error);
    EXPECT_STREQ(refused.failed_call(), row.name);
    semctl(present_set(), 0, IPC_RMID);
  }
}

TEST_F(AccessLock, is_claimed_though_it_vanishes_meanwhile) {
  for (const int error : {EIDRM, EINVAL, EINTR, EAGAIN}) {
    access_lock claimed;
    faults::fail(faults::call::semop, 1, error);
    EXPECT_EQ(claimed.claim(allowed), claim_result::claimed) << error;
    EXPECT_TRUE(faults::happened());
    semctl(present_set(), 0, IPC_RMID);
  }
}

TEST_F(AccessLock, is_held_after_a_takeover_once_its_clients_have_left) {
  killed_service([](access_lock& its_lock) { its_lock.release(); });
  const child client{[] {
    sembuf step{lock_semaphore, -1, SEM_UNDO};
    semop(present_set(), &step, 1);
    usleep(100000);
    return 0;
  }};
  ASSERT_TRUE(eventually([] { return value_of(lock_semaphore) == 0; }));
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  lock.hold();
  EXPECT_EQ(semctl(present_set(), lock_semaphore, GETPID), getpid());
  EXPECT_EQ(value_of(lock_semaphore), 0);
  ASSERT_TRUE(lock.release());
  EXPECT_EQ(value_of(lock_semaphore), 1);
}

TEST_F(AccessLock, is_not_waited_for_without_end) {
  killed_service([](access_lock& its_lock) { its_lock.release(); });
  const child client{[] {
    sembuf step{lock_semaphore, -1, SEM_UNDO};
    semop(present_set(), &step, 1);
    return pause();
  }};
  ASSERT_TRUE(eventually([] { return value_of(lock_semaphore) == 0; }));
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  lock.hold();
  ASSERT_TRUE(lock.release());
  EXPECT_EQ(value_of(lock_semaphore), 0) << "it is still the client's";
  lock.remove();
  EXPECT_EQ(present_set(), -1) << "nor at the end";
}

TEST_F(AccessLock, lets_all_who_wait_come_through_before_it_is_removed) {
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  std::vector<pid_t> clients;
  for (int i = 0; i < 8; ++i) {
    clients.push_back(start_child([] { return static_cast<int>(cfc_get_mutex()); }));
  }
  ASSERT_TRUE(eventually([] { return semctl(present_set(), lock_semaphore, GETNCNT) == 8; }));
  child witness{[] {
    sembuf step{lock_semaphore, -1, SEM_UNDO};
    return semop(present_set(), &step, 1) == 0 ? 0 : errno;
  }};
  ASSERT_TRUE(eventually([] { return semctl(present_set(), lock_semaphore, GETNCNT) == 9; }));
  lock.remove();
  for (const pid_t client : clients) {
    EXPECT_EQ(wait_for_child(client), 231);
  }
  EXPECT_EQ(witness.wait(), 0) << "its semop succeeded: the lock was there";
  EXPECT_EQ(present_set(), -1);
}

TEST_F(AccessLock, is_not_removed_while_a_client_holds_it_for_some_time) {
  ASSERT_EQ(lock.claim(allowed), claim_result::claimed);
  const auto enter_and_leave = [] {
    sembuf step{lock_semaphore, -1, SEM_UNDO};
    const bool entered = semop(present_set(), &step, 1) == 0;
    usleep(100000);
    return entered ? 0 : errno;
  };
  child first{enter_and_leave};
  child second{enter_and_leave};
  ASSERT_TRUE(eventually([] { return semctl(present_set(), lock_semaphore, GETNCNT) == 2; }));
  lock.remove();
  EXPECT_EQ(first.wait(), 0);
  EXPECT_EQ(second.wait(), 0);
  EXPECT_EQ(present_set(), -1);
}
