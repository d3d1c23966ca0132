#include "tools/cfc/device/status.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <nlohmann/json.hpp>
#include <thread>

#include "tests/support/request_queue.h"
#include "tests/tools/cfc/run_program.h"

using namespace cfc;
using namespace proreflax::settings;
using nlohmann::json;
using testing::HasSubstr;

namespace {

void wait_for_waiters(const request_queue& queue, int count) {
  while (semctl(queue.lock_id(), 0, GETNCNT) < count) {
    std::this_thread::yield();
  }
}

}  // namespace

TEST(Status, every_state_of_the_lock_has_its_words) {
  EXPECT_EQ(show_lock({}), "lock: not there");
  EXPECT_EQ(show_lock({.present = true, .value = 1}), "lock: free");
  EXPECT_EQ(show_lock({.present = true, .value = 0, .holder = 7, .holder_name = "cfc"}),
            "lock: held by process 7 (cfc)");
  EXPECT_EQ(show_lock({.present = true, .value = 0, .holder = 7, .holder_name = "a\nb"}),
            "lock: held by process 7 (a\\x0ab)");
  EXPECT_EQ(show_lock({.present = true, .value = 0, .holder = 7, .waiting = 2}),
            "lock: held by process 7, which no longer runs; 2 waiting for it");
  EXPECT_EQ(show_lock({.present = true, .value = 0}),
            "lock: held by a process that cannot be seen from here");
  EXPECT_EQ(show_lock({.present = true, .value = 3}),
            "lock: raised to 3, so that it excludes nobody");
  EXPECT_EQ(show_lock({.present = true, .error = EACCES}),
            "lock: there, but not to be looked at: Permission denied");
}

TEST(Status, every_state_of_the_queue_has_its_words) {
  EXPECT_EQ(show_queue({}), "queue: not there");
  EXPECT_EQ(show_queue({.present = true}), "queue: 0 messages waiting");
  EXPECT_EQ(show_queue({.present = true, .messages = 1}), "queue: 1 message waiting");
  EXPECT_EQ(show_queue({.present = true, .error = EACCES}),
            "queue: there, but not to be looked at: Permission denied");
}

TEST(Status, every_state_of_the_service_has_its_words) {
  using life = service_status::life;
  EXPECT_EQ(show_service({}), "service: nothing tells whether it runs");
  EXPECT_EQ(show_service({.state = life::dead}), "service: killed, its lock is still there");
  EXPECT_EQ(show_service({.state = life::alive, .process = 7, .name = "config-center"}),
            "service: process 7 (config-center)");
}

TEST(Status, the_source_of_the_configuration_has_its_words) {
  EXPECT_EQ(show_served({.known = true, .from_flash = true}), "configuration: loaded from flash");
  EXPECT_EQ(show_served({.known = true}), "configuration: factory settings");
  EXPECT_EQ(show_served({.known = true, .flash_unreadable = true}),
            "configuration: factory settings in memory; the saved configuration could not be read, "
            "and is kept until a flush or a reset overwrites it");
  const status_report report{.service = {},
                             .lock = {.present = true, .value = 1},
                             .queue = {.present = true},
                             .served = {.known = true, .flash_unreadable = true}};
  EXPECT_EQ(json::parse(json_of(report))["configuration"],
            json::parse(R"({"source":"factory","flash_unreadable":true})"));
}

TEST(StatusVerb, without_a_service_it_ends_in_1) {
  const ended status = run_cfc({"status"});
  EXPECT_EQ(status.status, 1);
  EXPECT_EQ(status.out,
            "service: nothing tells whether it runs\nlock: not there\nqueue: not there\n");
  EXPECT_EQ(status.err,
            "cfc: status: 230 CFC_ERR_NO_SEM: the access lock does not exist: "
            "config-center is not running\n");
}

TEST(StatusVerb, without_a_queue_it_ends_in_1) {
  request_queue queue;
  queue.remove_queue();
  const ended status = run_cfc({"status"});
  EXPECT_EQ(status.status, 1);
  EXPECT_EQ(status.out, "service: nothing tells whether it runs\nlock: free\nqueue: not there\n");
  EXPECT_THAT(status.err, HasSubstr("231 CFC_ERR_NO_MSQ"));
}

TEST(StatusVerb, with_lock_and_queue_it_is_done) {
  const request_queue queue;
  const ended status = run_cfc({"status"});
  EXPECT_EQ(status.status, 0);
  EXPECT_EQ(status.out,
            "service: nothing tells whether it runs\nlock: free\nqueue: 0 messages waiting\n");
  EXPECT_EQ(status.err, "");
}

TEST(StatusVerb, names_the_holder_and_counts_messages_and_waiters) {
  const request_queue queue;
  queue.reply_with(0);
  queue.reply_with(0);
  ASSERT_EQ(cfc_get_mutex(), 0U);
  started_program waiter{"cfc", {"flush"}};
  wait_for_waiters(queue, 1);
  const ended status = run_cfc({"status"});
  EXPECT_EQ(status.status, 0);
  EXPECT_EQ(status.out, "service: nothing tells whether it runs\nlock: held by process " +
                            std::to_string(getpid()) + " (" + name_of(getpid()) +
                            "); 1 waiting for it\nqueue: 2 messages waiting\n");
  const json report = json::parse(run_cfc({"status", "--json"}).out);
  EXPECT_EQ(report["lock"],
            json::parse(R"({"present":true,"value":0,"held":true,"waiting":1,"holder":{"pid":)" +
                        std::to_string(getpid()) + R"(,"name":")" + name_of(getpid()) + R"("}})"));
  EXPECT_EQ(report["queue"]["messages"], 2);
  EXPECT_EQ(report["queue"]["bytes"], 32);
  cfc_put_mutex();
}

TEST(StatusVerb, json_of_a_free_lock_names_no_holder) {
  const request_queue queue;
  const ended status = run_cfc({"status", "--json"});
  EXPECT_EQ(status.status, 0);
  EXPECT_EQ(
      json::parse(status.out),
      json::parse(
          R"({"service":{"alive":null},"lock":{"present":true,"value":1,"held":false,"waiting":0},
                            "queue":{"present":true,"messages":0,"bytes":0},
                            "code":0,"name":"CFC_OK"})"));
}

TEST(StatusVerb, json_without_a_service_says_so) {
  const ended status = run_cfc({"status", "--json"});
  EXPECT_EQ(status.status, 1);
  const json report = json::parse(status.out);
  EXPECT_EQ(report["lock"], json::parse(R"({"present":false})"));
  EXPECT_EQ(report["queue"], json::parse(R"({"present":false})"));
  EXPECT_EQ(report["code"], 230);
}

TEST(StatusVerb, never_waits_for_the_lock) {
  const request_queue queue;
  queue.set_lock_value(0);
  EXPECT_EQ(run_cfc({"status"}).status, 0);
  EXPECT_EQ(queue.lock_value(), 0);
}

TEST(Status, a_lock_that_cannot_be_looked_at_has_no_state) {
  const status_report report{
      .service = {}, .lock = {.present = true, .error = 13}, .queue = {.present = true}};
  const json object = json::parse(json_of(report));
  EXPECT_EQ(object["lock"], json::parse(R"({"present":true})"));
  EXPECT_EQ(object["code"], 13);
}
