#include "service/request_channel.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/child.h"
#include "tests/support/faults.h"
#include "tests/support/request_queue.h"
#include "transport/ipc_keys.h"

using namespace proreflax;

using claimed = request_channel::claim_result;
using waited = request_channel::wait_result;

namespace {

struct wire_message {
  long type;
  char text[4096];
};

int lock_id() {
  return semget(CFC_SEM_KEY, 0, 0);
}
int queue_id() {
  return msgget(CFC_MSQ_KEY, 0);
}

bool put(long type, const bytes& content) {
  wire_message message{type, {}};
  std::copy(content.begin(), content.end(), message.text);
  return msgsnd(queue_id(), &message, content.size(), IPC_NOWAIT) == 0;
}

/// The text of the next message of a type; empty when there is none.
std::string take(long type) {
  wire_message message{};
  const ssize_t length = msgrcv(queue_id(), &message, sizeof message.text, type, IPC_NOWAIT);
  return length < 0 ? std::string{} : std::string(message.text, static_cast<std::size_t>(length));
}

std::size_t waiting() {
  msqid_ds state{};
  msgctl(queue_id(), IPC_STAT, &state);
  return state.msg_qnum;
}

bytes request_of(pid_t asker) {
  return row(i32(asker + 2), u32(10), u32(0), u32(0));
}

reply reply_to(pid_t asker, std::uint32_t result = 0) {
  const bytes request = request_of(asker);
  reply answer;
  answer.type = asker + 2;
  answer.length = request.size();
  std::memcpy(answer.text, request.data(), request.size());
  set_result(answer, result);
  return answer;
}

/// The id of a process that has ended and was collected.
pid_t dead_process() {
  const pid_t pid = start_child([] { return 0; });
  wait_for_child(pid);
  return pid;
}

/// A process that lives until the test ends, and never asks for its replies.
child bystander() {
  return child{[] { return pause(); }};
}

class RequestChannel : public testing::Test {
 protected:
  RequestChannel() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGALRM, &action, nullptr);
  }
  ~RequestChannel() override { channel.close(); }

  void open_channel() {
    ASSERT_EQ(channel.claim(allowed), claimed::claimed);
    ASSERT_TRUE(channel.open(allowed));
  }

  permissions allowed;
  request_channel channel;
};

}  // namespace

TEST_F(RequestChannel, holds_the_lock_until_it_is_open) {
  ASSERT_EQ(channel.claim(allowed), claimed::claimed);
  EXPECT_EQ(semctl(lock_id(), 0, GETVAL), 0);
  EXPECT_EQ(queue_id(), -1);
  ASSERT_TRUE(channel.open(allowed));
  EXPECT_EQ(semctl(lock_id(), 0, GETVAL), 1);
  EXPECT_NE(queue_id(), -1);
}

TEST_F(RequestChannel, is_for_its_own_user_unless_told_otherwise) {
  open_channel();
  semid_ds lock{};
  msqid_ds queue{};
  ASSERT_EQ(semctl(lock_id(), 0, IPC_STAT, &lock), 0);
  ASSERT_EQ(msgctl(queue_id(), IPC_STAT, &queue), 0);
  EXPECT_EQ(lock.sem_perm.mode & 0777, 0600);
  EXPECT_EQ(queue.msg_perm.mode & 0777, 0600);
}

TEST_F(RequestChannel, takes_the_mode_and_the_group_it_is_told) {
  allowed = {.mode = 0660, .has_group = true, .group = getuid() == 0 ? gid_t{12} : getgid()};
  open_channel();
  semid_ds lock{};
  msqid_ds queue{};
  ASSERT_EQ(semctl(lock_id(), 0, IPC_STAT, &lock), 0);
  ASSERT_EQ(msgctl(queue_id(), IPC_STAT, &queue), 0);
  EXPECT_EQ(lock.sem_perm.mode & 0777, 0660);
  EXPECT_EQ(queue.msg_perm.mode & 0777, 0660);
  EXPECT_EQ(lock.sem_perm.gid, allowed.group);
  EXPECT_EQ(queue.msg_perm.gid, allowed.group);
}

TEST_F(RequestChannel, is_not_claimed_beside_a_live_service) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  const pid_t other = start_child([&] {
    request_channel live;
    const bool is_claimed = live.claim(allowed) == claimed::claimed && live.open(allowed);
    static_cast<void>(!write(ready[1], is_claimed ? "y" : "n", 1));
    return pause();
  });
  char answer = 0;
  ASSERT_EQ(read(ready[0], &answer, 1), 1);
  ASSERT_EQ(answer, 'y');
  const int its_lock = lock_id();
  EXPECT_EQ(channel.claim(allowed), claimed::live_service);
  EXPECT_EQ(lock_id(), its_lock) << "the live service keeps its lock";
  EXPECT_NE(queue_id(), -1) << "and its queue";

  // Killed, it leaves both: the lock is taken over, the queue replaced.
  kill(other, SIGKILL);
  wait_for_child(other);
  const int its_queue = queue_id();
  ASSERT_TRUE(put(1, request_of(getpid())));
  open_channel();
  EXPECT_EQ(lock_id(), its_lock);
  EXPECT_NE(queue_id(), its_queue);
  EXPECT_EQ(waiting(), 0U);
  EXPECT_EQ(semctl(lock_id(), 0, GETVAL), 1);
}

TEST_F(RequestChannel, holds_what_it_takes_over_until_it_is_open) {
  const shared<std::atomic<bool>> is_open;
  child killed{[&] {
    request_channel earlier;
    *is_open = earlier.claim(allowed) == claimed::claimed && earlier.open(allowed);
    return pause();
  }};
  ASSERT_TRUE(eventually([&] { return is_open->load(); }));
  killed.kill_and_wait();
  ASSERT_EQ(channel.claim(allowed), claimed::claimed);
  EXPECT_EQ(semctl(lock_id(), 0, GETVAL), 0) << "clients wait until the service is ready";
  EXPECT_EQ(queue_id(), -1) << "and wait no longer for replies of the killed one";
  ASSERT_TRUE(channel.open(allowed));
  EXPECT_EQ(semctl(lock_id(), 0, GETVAL), 1);
}

TEST_F(RequestChannel, is_claimed_by_one_of_many_that_start_at_once) {
  ASSERT_NE(semget(CFC_SEM_KEY, 2, IPC_CREAT | IPC_EXCL | 0600), -1) << "a left-over one";
  int results[2];
  ASSERT_EQ(pipe(results), 0);
  std::vector<pid_t> rivals;
  for (int i = 0; i < 12; ++i) {
    rivals.push_back(start_child([&] {
      request_channel rival;
      const char outcome = rival.claim(allowed) == claimed::claimed ? 'c' : 'l';
      static_cast<void>(!write(results[1], &outcome, 1));
      return pause();
    }));
  }
  std::string outcomes;
  for (int i = 0; i < 12; ++i) {
    char outcome = 0;
    ASSERT_EQ(read(results[0], &outcome, 1), 1);
    outcomes += outcome;
  }
  for (const pid_t rival : rivals) {
    kill(rival, SIGKILL);
    wait_for_child(rival);
  }
  EXPECT_EQ(std::count(outcomes.begin(), outcomes.end(), 'c'), 1) << outcomes;
  channel.claim(allowed);
}

TEST_F(RequestChannel, removes_lock_and_queue_when_it_closes) {
  open_channel();
  channel.close();
  EXPECT_EQ(lock_id(), -1);
  EXPECT_EQ(queue_id(), -1);
}

TEST_F(RequestChannel, sends_nothing_on_a_queue_that_is_gone) {
  open_channel();
  msgctl(queue_id(), IPC_RMID, nullptr);
  EXPECT_FALSE(channel.send(reply_to(getpid())));
  EXPECT_TRUE(errno == EINVAL || errno == EIDRM) << errno;
}

TEST_F(RequestChannel, removes_the_queue_before_those_who_wait_for_the_lock_come_through) {
  open_channel();
  const child inside{[] {
    sembuf take_lock{lock_semaphore, -1, SEM_UNDO};
    semop(lock_id(), &take_lock, 1);
    while (queue_id() != -1) {
      usleep(1000);
    }
    return 0;
  }};
  ASSERT_TRUE(eventually([] { return semctl(lock_id(), lock_semaphore, GETVAL) == 0; }));
  child waits{[] {
    sembuf take_lock{lock_semaphore, -1, SEM_UNDO};
    return semop(lock_id(), &take_lock, 1) == 0 && queue_id() == -1 ? 0 : 1;
  }};
  ASSERT_TRUE(eventually([] { return semctl(lock_id(), lock_semaphore, GETNCNT) == 1; }));
  channel.close();
  EXPECT_EQ(waits.wait(), 0);
}

TEST_F(RequestChannel, takes_requests_in_order_and_no_other_messages) {
  open_channel();
  ASSERT_TRUE(put(77, raw("not a request")));
  ASSERT_TRUE(put(1, raw("first")));
  ASSERT_TRUE(put(1, raw("second")));
  incoming request;
  ASSERT_EQ(channel.next(&request), waited::request);
  EXPECT_EQ(std::string(request.text, request.length), "first");
  ASSERT_EQ(channel.next(&request), waited::request);
  EXPECT_EQ(std::string(request.text, request.length), "second");
}

TEST_F(RequestChannel, takes_a_request_that_is_too_long_and_shows_that_it_is) {
  open_channel();
  ASSERT_TRUE(put(1, bytes(3000, 'x')));
  incoming request;
  ASSERT_EQ(channel.next(&request), waited::request);
  EXPECT_EQ(request.length, request_text_max + 1);
  EXPECT_EQ(waiting(), 0U);
}

TEST_F(RequestChannel, is_interrupted_by_a_signal) {
  open_channel();
  // The channel's own timer ticks once a second while nothing happens.
  incoming request;
  EXPECT_EQ(channel.next(&request), waited::interrupted);
}

TEST_F(RequestChannel, tells_when_the_queue_is_gone) {
  open_channel();
  msgctl(queue_id(), IPC_RMID, nullptr);
  incoming request;
  EXPECT_EQ(channel.next(&request), waited::lost);
}

TEST_F(RequestChannel, sends_a_reply_under_its_askers_type) {
  open_channel();
  EXPECT_TRUE(channel.send(reply_to(getpid(), 209)));
  EXPECT_EQ(take(getpid() + 2), std::string(reply_to(getpid(), 209).text, 16));
}

TEST_F(RequestChannel, drops_a_reply_whose_asker_has_asked_again) {
  open_channel();
  ASSERT_TRUE(put(1, request_of(getpid())));
  EXPECT_TRUE(channel.send(reply_to(getpid(), 222)));
  EXPECT_EQ(take(getpid() + 2), "");
  incoming request;
  ASSERT_EQ(channel.next(&request), waited::request) << "the newer request is still served";
  EXPECT_TRUE(channel.send(reply_to(getpid(), 0)));
  EXPECT_EQ(take(getpid() + 2), std::string(reply_to(getpid(), 0).text, 16));
}

TEST_F(RequestChannel, sends_a_reply_although_another_asker_waits) {
  open_channel();
  const child other = bystander();
  ASSERT_TRUE(put(1, request_of(other.pid())));
  EXPECT_TRUE(channel.send(reply_to(getpid())));
  EXPECT_NE(take(getpid() + 2), "");
}

TEST_F(RequestChannel, a_sweep_removes_the_replies_of_dead_askers_alone) {
  open_channel();
  const pid_t dead = dead_process();
  const child living = bystander();
  ASSERT_TRUE(channel.send(reply_to(dead)));
  ASSERT_TRUE(channel.send(reply_to(living.pid())));
  ASSERT_EQ(waiting(), 2U);
  channel.sweep();
  EXPECT_EQ(waiting(), 1U);
  EXPECT_EQ(take(dead + 2), "");
  EXPECT_NE(take(living.pid() + 2), "");
}

TEST_F(RequestChannel, a_sweep_beside_waiting_requests_keeps_the_replies_of_live_askers) {
  open_channel();
  const child first = bystander();
  const child second = bystander();
  ASSERT_TRUE(channel.send(reply_to(first.pid())));
  ASSERT_TRUE(channel.send(reply_to(second.pid())));
  for (int i = 0; i < 5; ++i) {
    ASSERT_TRUE(put(1, raw("request")));
  }
  channel.sweep();
  EXPECT_NE(take(first.pid() + 2), "");
  EXPECT_NE(take(second.pid() + 2), "");
  incoming request;
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(channel.next(&request), waited::request);
    EXPECT_EQ(std::string(request.text, request.length), "request");
  }
  EXPECT_EQ(waiting(), 0U);
}

TEST_F(RequestChannel, a_sweep_keeps_a_reply_whose_room_is_taken_meanwhile) {
  open_channel();
  const child living = bystander();
  ASSERT_TRUE(channel.send(reply_to(living.pid())));
  faults::fail(faults::call::msgsnd, 1, ENOMEM);
  channel.sweep();
  ASSERT_TRUE(faults::happened());
  EXPECT_EQ(waiting(), 0U) << "the reply is in memory";
  itimerval timer{};
  getitimer(ITIMER_REAL, &timer);
  EXPECT_EQ(timer.it_interval.tv_usec, 10000) << "and is tried again soon";
  channel.sweep();
  EXPECT_NE(take(living.pid() + 2), "");
}

TEST_F(RequestChannel, a_sweep_removes_messages_that_are_nobodys) {
  open_channel();
  ASSERT_TRUE(put(2, raw("junk")));
  ASSERT_TRUE(put(getpid() + 2, raw("not from the service")));
  ASSERT_TRUE(put(2147483647, raw("junk")));
  ASSERT_TRUE(put(1, raw("request")));
  channel.sweep();
  EXPECT_EQ(waiting(), 1U);
  EXPECT_EQ(take(1), "request");
}

TEST_F(RequestChannel, a_sweep_keeps_one_message_of_a_clients_type_and_that_is_the_reply) {
  open_channel();
  const child client = bystander();
  ASSERT_TRUE(channel.send(reply_to(client.pid())));
  ASSERT_TRUE(put(client.pid() + 2, raw("not from the service")));
  channel.sweep();
  EXPECT_EQ(take(client.pid() + 2), std::string(reply_to(client.pid()).text, 16));
  EXPECT_EQ(waiting(), 0U);
}

TEST_F(RequestChannel, is_swept_soon_after_a_reply_was_left) {
  open_channel();
  ASSERT_TRUE(channel.send(reply_to(dead_process())));
  itimerval timer{};
  getitimer(ITIMER_REAL, &timer);
  EXPECT_EQ(timer.it_interval.tv_sec, 0);
  EXPECT_EQ(timer.it_interval.tv_usec, 10000);
  channel.sweep();
  getitimer(ITIMER_REAL, &timer);
  EXPECT_EQ(timer.it_interval.tv_sec, 1) << "at rest once nothing is left";
}

TEST_F(RequestChannel, is_swept_ever_less_often_while_a_live_asker_leaves_its_reply) {
  open_channel();
  const child stopped = bystander();
  ASSERT_TRUE(channel.send(reply_to(stopped.pid())));
  itimerval timer{};
  for (const long expected_ms : {20, 40, 80, 160, 320, 640, 1000, 1000}) {
    channel.sweep();
    getitimer(ITIMER_REAL, &timer);
    EXPECT_EQ(timer.it_interval.tv_sec * 1000 + timer.it_interval.tv_usec / 1000, expected_ms);
  }
  EXPECT_NE(take(stopped.pid() + 2), "");
}

TEST_F(RequestChannel, sends_a_reply_though_the_queue_is_full_of_junk) {
  open_channel();
  while (put(5, bytes(512, 'j'))) {
  }
  EXPECT_TRUE(channel.send(reply_to(getpid())));
  EXPECT_NE(take(getpid() + 2), "");
}

TEST_F(RequestChannel, sends_a_reply_though_the_queue_is_full_of_requests_and_loses_none) {
  open_channel();
  const child other = bystander();
  int sent = 0;
  for (bytes request = request_of(other.pid());; ++sent) {
    request.resize(2048);
    request[1000] = static_cast<std::uint8_t>(sent);
    if (!put(1, request)) {
      break;
    }
  }
  ASSERT_GT(sent, 2);
  ASSERT_LE(sent, 16) << "as many as are kept in memory";
  EXPECT_TRUE(channel.send(reply_to(getpid())));
  EXPECT_NE(take(getpid() + 2), "");
  for (int i = 0; i < sent; ++i) {
    incoming request;
    ASSERT_EQ(channel.next(&request), waited::request);
    EXPECT_EQ(request.length, request_text_max + 1);
  }
  EXPECT_EQ(waiting(), 0U);
}

TEST_F(RequestChannel, requests_leave_a_quarter_of_the_queue_to_replies) {
  open_channel();
  msqid_ds state{};
  ASSERT_EQ(msgctl(queue_id(), IPC_STAT, &state), 0);
  while (put(1, bytes(16, 'r'))) {
  }
  const std::size_t taken = waiting() * 16;
  EXPECT_LE(taken, state.msg_qbytes);
  EXPECT_GE(state.msg_qbytes / 3, reply_text_max) << "what was set aside";
  EXPECT_TRUE(channel.send(reply_to(getpid())));
  EXPECT_NE(take(getpid() + 2), "");
  msqid_ds after{};
  ASSERT_EQ(msgctl(queue_id(), IPC_STAT, &after), 0);
  EXPECT_EQ(after.msg_qbytes, state.msg_qbytes) << "closed to requests again";
}

TEST_F(RequestChannel, a_quarter_of_what_the_system_grants_a_queue_is_closed_to_requests) {
  msqid_ds usual{};
  const int other = msgget(IPC_PRIVATE, 0600);
  ASSERT_EQ(msgctl(other, IPC_STAT, &usual), 0);
  ASSERT_EQ(msgctl(other, IPC_RMID, nullptr), 0);
  open_channel();
  msqid_ds state{};
  ASSERT_EQ(msgctl(queue_id(), IPC_STAT, &state), 0);
  EXPECT_EQ(state.msg_qbytes, usual.msg_qbytes - usual.msg_qbytes / 4);
}

TEST_F(RequestChannel, closes_its_quarter_again_after_a_reply_that_needed_it) {
  open_channel();
  msqid_ds state{};
  ASSERT_EQ(msgctl(queue_id(), IPC_STAT, &state), 0);
  const child client = bystander();
  while (put(1, bytes(16, 'r'))) {
  }
  reply longest = reply_to(client.pid());
  longest.length = reply_text_max;
  ASSERT_TRUE(channel.send(longest));
  msqid_ds after{};
  ASSERT_EQ(msgctl(queue_id(), IPC_STAT, &after), 0);
  EXPECT_GT(after.__msg_cbytes, state.msg_qbytes) << "it is in the quarter";
  EXPECT_EQ(after.msg_qbytes, state.msg_qbytes);
  EXPECT_FALSE(put(1, bytes(16, 'r')));
  EXPECT_NE(take(client.pid() + 2), "");
}

namespace {

/// Raises the limit of the queue to what the service itself may use, and fills all of it.
void fill_to_the_last_byte(long type = 1) {
  msqid_ds state{};
  msgctl(queue_id(), IPC_STAT, &state);
  const auto for_requests = state.msg_qbytes;
  state.msg_qbytes = for_requests / 3 * 4;
  msgctl(queue_id(), IPC_SET, &state);
  while (put(type, bytes(16, 'r'))) {
  }
  state.msg_qbytes = for_requests;
  msgctl(queue_id(), IPC_SET, &state);
}

}  // namespace

TEST_F(RequestChannel, keeps_a_reply_that_finds_no_room_until_requests_were_taken) {
  open_channel();
  const child client = bystander();
  fill_to_the_last_byte();
  reply longest = reply_to(client.pid());
  longest.length = reply_text_max;
  ASSERT_TRUE(channel.send(longest));
  EXPECT_EQ(take(client.pid() + 2), "") << "no room yet";
  incoming request;
  int taken = 0;
  for (; taken < 200 && take(client.pid() + 2).empty(); ++taken) {
    ASSERT_EQ(channel.next(&request), waited::request);
  }
  EXPECT_GT(taken, 1);
  EXPECT_LT(taken, 200) << "sent as soon as enough requests were taken";
}

TEST_F(RequestChannel, drops_a_kept_reply_whose_client_has_asked_again) {
  open_channel();
  const child client = bystander();
  fill_to_the_last_byte();
  reply longest = reply_to(client.pid());
  longest.length = reply_text_max;
  ASSERT_TRUE(channel.send(longest));
  while (!take(1).empty()) {
  }
  ASSERT_TRUE(put(1, request_of(client.pid())));
  incoming request;
  do {
    ASSERT_EQ(channel.next(&request), waited::request);
    EXPECT_EQ(take(client.pid() + 2), "") << "it would be taken for the reply to the newer request";
  } while (std::memcmp(request.text, longest.text, sizeof(std::int32_t)) != 0);
}

TEST_F(RequestChannel, a_sweep_drops_a_reply_whose_client_has_asked_again) {
  open_channel();
  const child client = bystander();
  ASSERT_TRUE(channel.send(reply_to(client.pid(), 209)));
  ASSERT_TRUE(put(1, request_of(client.pid())));
  channel.sweep();
  EXPECT_EQ(take(client.pid() + 2), "");
}

TEST_F(RequestChannel, keeps_a_reply_for_which_the_kernel_lacks_memory) {
  open_channel();
  const child client = bystander();
  faults::fail(faults::call::msgsnd, 1, ENOMEM);
  ASSERT_TRUE(channel.send(reply_to(client.pid(), 209)));
  ASSERT_TRUE(faults::happened());
  channel.sweep();
  EXPECT_EQ(take(client.pid() + 2), std::string(reply_to(client.pid(), 209).text, 16));
}

TEST_F(RequestChannel, drops_a_kept_reply_when_it_takes_its_clients_next_request) {
  open_channel();
  const child client = bystander();
  ASSERT_TRUE(channel.send(reply_to(client.pid(), 209)));
  faults::fail(faults::call::msgsnd, 1, ENOMEM);
  channel.sweep();
  ASSERT_EQ(waiting(), 0U) << "the reply is in memory";
  ASSERT_TRUE(put(1, request_of(client.pid())));
  incoming request;
  ASSERT_EQ(channel.next(&request), waited::request);
  EXPECT_EQ(take(client.pid() + 2), "");
}

TEST_F(RequestChannel, makes_room_at_once_where_messages_that_are_nobodys_take_all_of_it) {
  open_channel();
  const child client = bystander();
  fill_to_the_last_byte(5);
  ASSERT_TRUE(channel.send(reply_to(client.pid())));
  EXPECT_NE(take(client.pid() + 2), "");
  EXPECT_EQ(waiting(), 0U);
}

TEST_F(RequestChannel, a_reply_that_finds_neither_room_nor_memory_is_reported) {
  open_channel();
  const child client = bystander();
  ASSERT_TRUE(channel.send(reply_to(client.pid())));
  ASSERT_NE(take(client.pid() + 2), "");
  fill_to_the_last_byte();
  reply longest = reply_to(client.pid());
  longest.length = reply_text_max;
  faults::fail(faults::call::malloc, 1, ENOMEM);
  EXPECT_FALSE(channel.send(longest));
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_TRUE(faults::happened());
}

TEST_F(RequestChannel, a_sweep_without_memory_keeps_the_replies_of_live_clients) {
  const child client = bystander();
  const child other = bystander();
  // The set of types, the list of replies, once and again.
  for (int nth = 1; nth <= 6; ++nth) {
    open_channel();
    ASSERT_TRUE(channel.send(reply_to(client.pid())));
    ASSERT_TRUE(channel.send(reply_to(other.pid(), 201)));
    faults::fail(faults::call::malloc, nth, ENOMEM);
    channel.sweep();
    faults::reset();
    channel.sweep();
    EXPECT_EQ(take(client.pid() + 2), std::string(reply_to(client.pid()).text, 16)) << nth;
    EXPECT_EQ(take(other.pid() + 2), std::string(reply_to(other.pid(), 201).text, 16)) << nth;
    EXPECT_EQ(waiting(), 0U) << nth;
    channel.close();
  }
}

TEST_F(RequestChannel, a_reply_sent_without_memory_is_not_taken_for_a_strangers) {
  open_channel();
  const child client = bystander();
  const child other = bystander();
  faults::fail(faults::call::malloc, 1, ENOMEM);
  ASSERT_TRUE(channel.send(reply_to(client.pid())));
  ASSERT_TRUE(faults::happened());
  ASSERT_TRUE(channel.send(reply_to(other.pid())));
  channel.sweep();
  channel.sweep();
  EXPECT_NE(take(client.pid() + 2), "");
  EXPECT_NE(take(other.pid() + 2), "");
  channel.sweep();
  ASSERT_TRUE(put(client.pid() + 2, raw("not from the service")));
  channel.sweep();
  EXPECT_EQ(waiting(), 0U) << "memory suffices again, and strangers are known";
}

TEST_F(RequestChannel, sends_kept_replies_in_order) {
  open_channel();
  const child first = bystander();
  const child second = bystander();
  fill_to_the_last_byte();
  reply longest = reply_to(first.pid());
  longest.length = reply_text_max;
  ASSERT_TRUE(channel.send(longest));
  ASSERT_TRUE(channel.send(reply_to(second.pid())));
  incoming request;
  std::string of_second;
  while ((of_second = take(second.pid() + 2)).empty()) {
    ASSERT_EQ(channel.next(&request), waited::request);
  }
  EXPECT_NE(take(first.pid() + 2), "") << "sent before the shorter one";
}

TEST_F(RequestChannel, a_kept_reply_gives_way_to_a_newer_one_of_the_same_client) {
  open_channel();
  const child client = bystander();
  fill_to_the_last_byte();
  reply longest = reply_to(client.pid(), 209);
  longest.length = reply_text_max;
  ASSERT_TRUE(channel.send(longest));
  ASSERT_TRUE(channel.send(reply_to(client.pid(), 0)));
  incoming request;
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(channel.next(&request), waited::request);
  }
  EXPECT_EQ(take(client.pid() + 2), std::string(reply_to(client.pid(), 0).text, 16));
  EXPECT_EQ(take(client.pid() + 2), "");
}

TEST_F(RequestChannel, a_kept_reply_of_a_client_that_died_is_forgotten) {
  open_channel();
  child client = bystander();
  fill_to_the_last_byte();
  reply longest = reply_to(client.pid());
  longest.length = reply_text_max;
  ASSERT_TRUE(channel.send(longest));
  client.kill_and_wait();
  channel.sweep();
  while (!take(1).empty()) {
  }
  channel.sweep();
  EXPECT_EQ(waiting(), 0U);
}

TEST_F(RequestChannel, drops_no_reply_of_a_live_client_however_many_are_left) {
  open_channel();
  std::vector<std::unique_ptr<child>> careless;
  for (int i = 0; i < 150; ++i) {
    careless.push_back(std::make_unique<child>([] { return pause(); }));
    ASSERT_TRUE(channel.send(reply_to(careless.back()->pid())));
  }
  channel.sweep();
  for (const auto& each : careless) {
    EXPECT_EQ(take(each->pid() + 2), std::string(reply_to(each->pid()).text, 16));
  }
}

TEST_F(RequestChannel, does_not_block_when_nothing_can_make_room) {
  open_channel();
  while (put(1, {})) {
  }
  const std::size_t full = waiting();
  ASSERT_GT(full, 16U);
  // Empty messages take no bytes but count: more of them than are kept in memory stay on the queue.
  EXPECT_TRUE(channel.send(reply_to(getpid())));
  EXPECT_NE(take(getpid() + 2), "");
}

TEST_F(RequestChannel, removes_an_earlier_reply_to_the_same_asker_before_it_sends_another) {
  open_channel();
  ASSERT_TRUE(channel.send(reply_to(getpid(), 201)));
  ASSERT_TRUE(channel.send(reply_to(getpid(), 0)));
  EXPECT_EQ(take(getpid() + 2), std::string(reply_to(getpid(), 0).text, 16));
  EXPECT_EQ(waiting(), 0U);
}

TEST_F(RequestChannel, replies_that_dead_clients_left_are_swept_before_they_are_many) {
  open_channel();
  for (int i = 0; i < 100; ++i) {
    ASSERT_TRUE(channel.send(reply_to(dead_process())));
  }
  EXPECT_LE(waiting(), 65U);
  channel.sweep();
  EXPECT_EQ(waiting(), 0U);
}
