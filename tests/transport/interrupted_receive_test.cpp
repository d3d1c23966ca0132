// A signal that interrupts the wait for a reply: the reply comes all the same, and must not be
// taken for the reply to the next request.
#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <pthread.h>
#include <sys/msg.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <string>
#include <thread>

#include "tests/support/child.h"
#include "tests/support/faults.h"
#include "tests/support/request_queue.h"
#include "tests/support/scripted_service.h"

using faults::call;

namespace {

constexpr std::uint32_t interrupted = EINTR;

/// A service that holds the numbers 1 to 4 under keys of these names.
class InterruptedReceive : public testing::Test {
 protected:
  InterruptedReceive() {
    for (const char* key : {"1", "2", "3", "4"}) {
      service.holds("LAN", key, key);
    }
    faults::reset();
  }
  ~InterruptedReceive() override { faults::reset(); }

  /// The number, or the code and 1000.
  static std::uint32_t get(const char* key) {
    std::uint32_t number = 0;
    const std::uint32_t result = __cfc_get_u32(0, "LAN", key, &number);
    return result == 0 ? number : 1000 + result;
  }

  /// Waits until the service has taken so many requests since its start and so many messages, all
  /// of them replies, are on the queue.
  bool replies_wait(std::size_t requests, int replies) {
    return eventually([&] {
      return service.requests().size() == requests && service.queue().waiting() == replies;
    });
  }

  /// A get whose receive a signal interrupts; when it returns, its reply waits on the queue.
  void get_interrupted(const char* key, int waiting_then = 1) {
    const std::size_t before = service.requests().size();
    faults::fail(call::msgrcv, 1, EINTR);
    EXPECT_EQ(get(key), 1000 + interrupted);
    EXPECT_TRUE(replies_wait(before + 1, waiting_then));
    faults::reset();
  }

  /// How many receives a get of key "4" takes.
  static int receives_of_a_get() {
    faults::reset();
    EXPECT_EQ(get("4"), 4U);
    return faults::calls(call::msgrcv);
  }

  /// The process that sent the last message; the service runs in the test's own.
  pid_t last_sender() {
    msqid_ds state{};
    msgctl(service.queue().queue_id(), IPC_STAT, &state);
    return state.msg_lspid;
  }

  scripted_service service;
};

void ignore_signal(int) {}

/// Interrupts the system call that a thread waits in, until the thread says that it has returned.
class interruption {
 public:
  explicit interruption(int flags) : thread_{pthread_self()} {
    struct sigaction action {};
    action.sa_handler = ignore_signal;
    action.sa_flags = flags;
    sigaction(SIGUSR1, &action, nullptr);
  }

  void run() const {
    while (!has_returned) {
      pthread_kill(thread_, SIGUSR1);
      std::this_thread::sleep_for(std::chrono::milliseconds{1});
    }
  }

  std::atomic<bool> has_returned{false};

 private:
  pthread_t thread_;
};

}  // namespace

TEST_F(InterruptedReceive, reply_to_the_request_before_is_not_taken_for_the_next_ones) {
  std::size_t requests = 0;
  for (const int flags : {0, SA_RESTART}) {  // a receive is never restarted
    interruption signals{flags};
    service.before_answer(++requests, [&] { signals.run(); });
    EXPECT_EQ(get("1"), 1000 + interrupted);
    signals.has_returned = true;
    EXPECT_TRUE(replies_wait(requests++, 1));
    EXPECT_EQ(get("2"), 2U);
    EXPECT_EQ(service.queue().waiting(), 0);
  }
}

TEST_F(InterruptedReceive, reply_of_any_length_is_removed) {
  service.answers_too_long(1);
  get_interrupted("1");
  EXPECT_EQ(get("2"), 2U);
  EXPECT_EQ(service.queue().waiting(), 0);
}

TEST_F(InterruptedReceive, every_reply_that_waits_is_removed) {
  get_interrupted("1");
  service.queue().reply(bytes(300));
  service.queue().reply({});
  EXPECT_EQ(get("2"), 2U);
  EXPECT_EQ(service.queue().waiting(), 0);
}

TEST_F(InterruptedReceive, setters_and_requests_without_a_payload_remove_it_too) {
  get_interrupted("1");
  EXPECT_EQ(__cfc_set_u8(0, "LAN", "1", 7), 0U);
  EXPECT_EQ(get("1"), 7U);
  get_interrupted("1");
  service.answers(5, 215);
  EXPECT_EQ(cfc_flush_all_nosem(), 215U);
}

TEST_F(InterruptedReceive, costs_the_next_exchange_two_receives_and_the_ones_after_it_none) {
  EXPECT_EQ(receives_of_a_get(), 1);
  get_interrupted("1");
  EXPECT_EQ(receives_of_a_get(), 3) << "the old reply, nothing more, the new reply";
  EXPECT_EQ(receives_of_a_get(), 1);
}

TEST_F(InterruptedReceive, is_the_only_failure_that_makes_the_next_exchange_look) {
  for (const call kind : {call::msgsnd, call::msgrcv}) {
    for (const int error : {EINTR, EACCES, EIDRM, E2BIG}) {
      if (kind == call::msgrcv && error == EINTR) {
        continue;
      }
      SCOPED_TRACE(error);
      testing::internal::CaptureStdout();
      faults::fail(kind, 1, error);
      EXPECT_EQ(get("1"), 1000U + static_cast<std::uint32_t>(error));
      testing::internal::GetCapturedStdout();
      if (kind == call::msgrcv) {
        EXPECT_TRUE(eventually([&] { return service.queue().take(getpid() + 2).has_value(); }));
      }
      EXPECT_EQ(receives_of_a_get(), 1);
    }
  }
}

TEST_F(InterruptedReceive, reply_that_never_comes_is_looked_for_in_16_exchanges) {
  get_interrupted("1");
  ASSERT_TRUE(service.queue().take(getpid() + 2));
  for (int exchange = 1; exchange <= 16; ++exchange) {
    EXPECT_EQ(receives_of_a_get(), 2) << exchange;
  }
  EXPECT_EQ(receives_of_a_get(), 1);
}

TEST_F(InterruptedReceive, leaves_the_replies_to_other_processes) {
  const message_buffer foreign{getpid() + 3, {}};
  ASSERT_EQ(msgsnd(service.queue().queue_id(), &foreign, 20, 0), 0);
  get_interrupted("1", 2);
  EXPECT_EQ(get("2"), 2U);
  EXPECT_TRUE(service.queue().take(getpid() + 3));
}

TEST_F(InterruptedReceive, twice_leaves_two_replies_and_both_are_removed) {
  service.before_answer(1, [&] { eventually([&] { return service.queue().waiting() == 1; }); });
  faults::fail(call::msgrcv, 1, EINTR);
  EXPECT_EQ(get("1"), 1000 + interrupted);
  faults::fail(call::msgrcv, 2, EINTR);  // the first one finds nothing to remove
  EXPECT_EQ(get("2"), 1000 + interrupted);
  EXPECT_TRUE(replies_wait(2, 2));
  EXPECT_EQ(receives_of_a_get(), 4);
  EXPECT_EQ(receives_of_a_get(), 1);
}

TEST_F(InterruptedReceive,
       reply_that_comes_after_the_next_request_is_taken_for_its_reply_and_then_made_up_for) {
  service.before_answer(1, [&] { eventually([&] { return service.queue().waiting() == 1; }); });
  faults::fail(call::msgrcv, 1, EINTR);
  EXPECT_EQ(get("1"), 1000 + interrupted);
  EXPECT_EQ(get("2"), 1U) << "the window that config.h describes";
  EXPECT_TRUE(replies_wait(2, 1));
  EXPECT_EQ(get("3"), 3U);
  EXPECT_EQ(receives_of_a_get(), 1);
}

TEST_F(InterruptedReceive, concerns_no_child_that_is_forked_afterwards) {
  get_interrupted("1");
  child other{[] {
    faults::reset();
    return get("2") == 2 && faults::calls(call::msgrcv) == 1 ? 0 : 1;
  }};
  EXPECT_EQ(other.wait(), 0);
  EXPECT_EQ(service.queue().waiting(), 1);
  EXPECT_EQ(get("3"), 3U);
  EXPECT_EQ(service.queue().waiting(), 0);
}

TEST_F(InterruptedReceive, of_a_forked_child_is_counted_apart_from_its_parents) {
  get_interrupted("1");
  child other{[this] {
    faults::fail(call::msgrcv, 1, EINTR);
    const bool was_interrupted = get("1") == 1000 + interrupted;
    const bool has_reply = eventually([this] { return last_sender() == getppid(); });
    return was_interrupted && has_reply && get("2") == 2 && receives_of_a_get() == 1 ? 0 : 1;
  }};
  EXPECT_EQ(other.wait(), 0);
  EXPECT_EQ(receives_of_a_get(), 3);
}

TEST(InterruptedReceiveOnQueue, leaves_one_reply_to_come_for_each_interruption) {
  const request_queue queue;
  faults::fail(call::msgrcv, 1, EINTR);
  EXPECT_EQ(cfc_flush_all_nosem(), interrupted);
  faults::fail(call::msgrcv, 2, EINTR);
  EXPECT_EQ(cfc_flush_all_nosem(), interrupted);
  faults::reset();
  const std::int32_t client = getpid() + 2;
  child service{[&] {
    message_buffer buffer{};
    const auto answer_after = [&](int requests, std::uint32_t code) {
      for (; requests > 0; --requests) {
        msgrcv(queue.queue_id(), &buffer, sizeof buffer.text, 1, 0);
      }
      const bytes reply = row(i32(client), u32(code));
      buffer.type = client;
      std::copy(reply.begin(), reply.end(), buffer.text);
      msgsnd(queue.queue_id(), &buffer, reply.size(), 0);
    };
    answer_after(3, 1002);
    answer_after(1, 1004);
    return 0;
  }};
  queue.reply_with(1001);
  EXPECT_EQ(cfc_flush_all_nosem(), 1002U) << "1001 was removed, 1002 came too late for that";
  queue.reply_with(1003);
  EXPECT_EQ(cfc_flush_all_nosem(), 1004U) << "1003 was removed, and all is in step again";
  EXPECT_EQ(service.wait(), 0);
}

TEST(InterruptedReceiveOnQueue, that_was_removed_is_harmless) {
  request_queue old;
  faults::fail(call::msgrcv, 1, EINTR);
  EXPECT_EQ(cfc_flush_all_nosem(), interrupted);
  faults::reset();
  ASSERT_EQ(cfc_get_mutex(), 0U);
  old.remove_queue();
  testing::internal::CaptureStdout();
  EXPECT_EQ(cfc_flush_all_sem(), static_cast<std::uint32_t>(EINVAL));
  EXPECT_NE(testing::internal::GetCapturedStdout(), "");
  cfc_put_mutex();
  EXPECT_EQ(cfc_flush_all_nosem(), 231U);
}

TEST(InterruptedReceiveOnQueue, that_was_replaced_is_forgotten) {
  {
    const request_queue old;
    faults::fail(call::msgrcv, 1, EINTR);
    EXPECT_EQ(cfc_flush_all_nosem(), interrupted);
    faults::reset();
  }
  const request_queue replaced;
  replaced.reply_with(209);
  EXPECT_EQ(cfc_flush_all_nosem(), 209U);
  EXPECT_EQ(faults::calls(call::msgrcv), 1);
}
