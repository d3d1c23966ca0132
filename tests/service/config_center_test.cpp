// config-center as its clients and its administrator see it: a process of its own on the device's
// folder, with the real flash copy tool.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <signal.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tests/service/config_center.h"

TEST_F(ConfigCenter, answers_from_the_factory_file_when_flash_is_empty) {
  const service_process service;
  EXPECT_EQ(get("LAN", "LanIPAddr"), "192.168.62.1");
  EXPECT_EQ(get("LAN", "NoKey"), "result 201");
  EXPECT_EQ(get("WAN", "LanIPAddr"), "result 209");
}

TEST_F(ConfigCenter, keeps_what_was_flushed_over_a_restart) {
  {
    service_process service;
    ASSERT_EQ(__cfc_set_ip(0, "LAN", "LanIPAddr", 0x0A000005), 0U);
    ASSERT_EQ(cfc_flush_all_nosem(), 0U);
    service.end(SIGKILL);
  }
  const service_process service;
  EXPECT_EQ(get("LAN", "LanIPAddr"), "10.0.0.5");
}

TEST_F(ConfigCenter, loses_what_was_not_flushed_when_it_is_killed) {
  {
    service_process service;
    ASSERT_EQ(__cfc_set_ip(0, "LAN", "LanIPAddr", 0x0A000005), 0U);
    service.end(SIGKILL);
  }
  const service_process service;
  EXPECT_EQ(get("LAN", "LanIPAddr"), "192.168.62.1");
}

TEST_F(ConfigCenter, flushes_removes_lock_and_queue_and_exits_0_on_each_stopping_signal) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    service_process service;
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", static_cast<std::uint8_t>(signal)), 0U);
    EXPECT_EQ(service.end(signal), 0) << service.log();
    EXPECT_FALSE(has_lock_or_queue());
    const service_process again;
    std::uint8_t value = 0;
    EXPECT_EQ(__cfc_get_u8(0, "LAN", "ConnType", &value), 0U);
    EXPECT_EQ(value, signal);
  }
}

TEST_F(ConfigCenter, exits_1_when_the_flush_at_the_end_fails) {
  service_process service;
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 2), 0U);
  device_root::install_flash_script("exit 1");
  EXPECT_EQ(service.end(), 1);
  EXPECT_NE(service.log().find(
                "could not be saved: the flash tool failed to write (222 CFC_ERR_FLASH_W)"),
            std::string::npos)
      << service.log();
  EXPECT_FALSE(has_lock_or_queue());
}

TEST_F(ConfigCenter, refuses_to_start_beside_a_live_one) {
  service_process service;
  service_process second;
  EXPECT_EQ(second.status(), 1);
  EXPECT_NE(second.log().find("another config-center runs"), std::string::npos);
  EXPECT_EQ(get("LAN", "ConnType"), "1") << "the first one goes on";
}

TEST_F(ConfigCenter, clears_up_what_a_killed_one_left) {
  service_process{}.end(SIGKILL);
  ASSERT_TRUE(has_lock_or_queue());
  {
    const service_process service;
    EXPECT_EQ(get("LAN", "ConnType"), "1");
  }
  EXPECT_FALSE(has_lock_or_queue());
}

TEST_F(ConfigCenter, does_not_start_without_a_configuration_and_leaves_nothing_behind) {
  device_root::write("/etc/config-file.ini", "no section\n");
  service_process service;
  EXPECT_EQ(service.status(), 1);
  EXPECT_NE(service.log().find("(205 CFC_ERR_BAD_VALUE)"), std::string::npos) << service.log();
  EXPECT_FALSE(has_lock_or_queue());
}

TEST_F(ConfigCenter, stops_with_1_when_its_queue_is_removed) {
  service_process service;
  msgctl(msgget(proreflax::CFC_MSQ_KEY, 0), IPC_RMID, nullptr);
  EXPECT_EQ(service.status(), 1);
  EXPECT_FALSE(has_lock_or_queue());
}

TEST_F(ConfigCenter, stops_with_1_when_its_lock_is_removed) {
  service_process service;
  semctl(semget(proreflax::CFC_SEM_KEY, 0, 0), 0, IPC_RMID);
  EXPECT_EQ(service.status(), 1);
  EXPECT_NE(service.log().find("the access lock is gone"), std::string::npos) << service.log();
  EXPECT_FALSE(has_lock_or_queue());
}

TEST_F(ConfigCenter, resets_to_the_factory_file_also_on_flash) {
  {
    service_process service;
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 2), 0U);
    ASSERT_EQ(cfc_flush_all_nosem(), 0U);
    ASSERT_EQ(cfc_to_default(), 0U);
    EXPECT_EQ(get("LAN", "ConnType"), "1");
    service.end(SIGKILL);
  }
  const service_process service;
  EXPECT_EQ(get("LAN", "ConnType"), "1");
}

TEST_F(ConfigCenter, reports_a_failed_flush_and_a_failed_reset) {
  const service_process service;
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 2), 0U);
  device_root::install_flash_script("exit 1");
  EXPECT_EQ(cfc_flush_all_nosem(), 222U);
  EXPECT_EQ(cfc_flush_all_nosem(), 222U) << "it is not forgotten";
  unlink(device_root::path("/etc/config-file.ini").c_str());
  EXPECT_EQ(cfc_to_default(), 206U);
  EXPECT_EQ(get("LAN", "ConnType"), "result 209") << "the store is empty";
}

TEST_F(ConfigCenter, sees_the_flash_tool_end_though_it_was_started_with_children_ignored) {
  const service_process service{{}, [] { signal(SIGCHLD, SIG_IGN); }};
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 2), 0U);
  EXPECT_EQ(cfc_flush_all_nosem(), 0U);
}

TEST_F(ConfigCenter, registers_an_application) {
  const service_process service;
  EXPECT_EQ(get("WEBSERVER", "port"), "result 209");
  ASSERT_EQ(cfc_add_app_nosem("WEBSERVER"), 0U);
  EXPECT_EQ(get("WEBSERVER", "port"), "result 201");
  ASSERT_EQ(__cfc_set_u16(0, "WEBSERVER", "port", 80), 0U);
  EXPECT_EQ(get("WEBSERVER", "port"), "0x0050");
}

TEST_F(ConfigCenter, refuses_what_the_loader_could_not_read_back) {
  service_process service;
  EXPECT_EQ(__cfc_set_string(0, "LAN", "a", ""), 204U);
  ASSERT_EQ(__cfc_set_string(0, "LAN", "ab", ""), 0U);
  ASSERT_EQ(service.end(), 0);
  const service_process again;
  EXPECT_EQ(get("LAN", "ab"), "");
  EXPECT_EQ(get("LAN", "LanIPAddr"), "192.168.62.1") << "nothing of the saved text was lost";
}

TEST_F(ConfigCenter, keeps_its_files_for_their_owner_alone) {
  const service_process service;
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 2), 0U);
  // The tool sees the temporary text before it is removed.
  device_root::install_flash_script("stat -c %a \"$2\" >\"${0%/*}/../etc/mode\"");
  ASSERT_EQ(cfc_flush_all_nosem(), 0U);
  EXPECT_EQ(device_root::read("/etc/mode"), "600\n");
  for (const char* slot : {"/var/lib/proreflax/slot0", "/var/lib/proreflax/slot1"}) {
    struct stat state {};
    if (stat(device_root::path(slot).c_str(), &state) == 0) {
      EXPECT_EQ(state.st_mode & 077U, 0U) << slot;
    }
  }
}

TEST_F(ConfigCenter, takes_its_options) {
  {
    const service_process service{{"--mode", "0640", "--log-level", "debug"}};
    semid_ds lock{};
    ASSERT_EQ(semctl(semget(proreflax::CFC_SEM_KEY, 0, 0), 0, IPC_STAT, &lock), 0);
    EXPECT_EQ(lock.sem_perm.mode & 0777, 0640);
    EXPECT_EQ(get("LAN", "ConnType"), "1");
    EXPECT_NE(service.log().find("debug: client"), std::string::npos);
    EXPECT_NE(service.log().find("info: ready"), std::string::npos);
  }
  service_process quiet{{"--log-level=error"}};
  quiet.end();
  EXPECT_EQ(quiet.log(), "");
  EXPECT_EQ(service_process{{"--help"}}.status(), 0);
  EXPECT_EQ(service_process{{"--version"}}.status(), 0);
}

TEST_F(ConfigCenter, refuses_wrong_options_with_2) {
  const std::vector<std::vector<std::string>> wrong = {
      {"--mode", "9"},        {"--mode", "0777"}, {"--mode", ""},     {"--mode"},
      {"--group", "no such"}, {"--group", "-1"},  {"--group", ""},    {"--log-level", "loud"},
      {"--unknown"},          {"a file"},         {"--mode", "600x"}, {"--group", "4294967296"}};
  for (const auto& options : wrong) {
    service_process service{options};
    EXPECT_EQ(service.status(), 2) << options[0] << ' ' << (options.size() > 1 ? options[1] : "");
    EXPECT_NE(service.log().find("config-center: "), std::string::npos);
  }
  EXPECT_FALSE(has_lock_or_queue());
}

TEST_F(ConfigCenter, answers_the_next_asker_after_one_that_died_before_its_reply) {
  const service_process service;
  service.freeze();
  const pid_t asker = start_child([] {
    std::uint8_t value = 0;
    return static_cast<int>(__cfc_get_u8(0, "LAN", "ConnType", &value));
  });
  ASSERT_TRUE(eventually([] { return waiting() == 1; }));
  kill(asker, SIGKILL);
  wait_for_child(asker);
  service.thaw();
  EXPECT_EQ(get("LAN", "LanIPAddr"), "192.168.62.1");
  EXPECT_TRUE(eventually([] { return waiting() == 0; })) << "the dead asker's reply is removed";
}

TEST_F(ConfigCenter, leaves_no_reply_to_itself_on_the_queue) {
  const service_process service;
  ASSERT_TRUE(send_raw(1, row(i32(service.id() + 2), u32(10), u32(0), u32(0))));
  EXPECT_TRUE(eventually([] { return waiting() == 0; }));
}

TEST_F(ConfigCenter, does_not_give_a_later_request_the_reply_of_an_earlier_one) {
  const service_process service;
  // A process asks twice without waiting for the first
  // reply, as one does whose wait was interrupted.
  service.freeze();
  ASSERT_TRUE(send_raw(1, row(own_reply_type(), u32(10), u16(0), u16(4), u16(13), u16(0),
                              text("LAN"), text("ConnType"))));
  const pid_t waker = start_child([&] {
    eventually([] { return waiting() == 2; });
    service.thaw();
    return 0;
  });
  EXPECT_EQ(get("LAN", "LanIPAddr"), "192.168.62.1");
  wait_for_child(waker);
}

TEST_F(ConfigCenter, survives_random_messages_and_goes_on_answering) {
  service_process service{{"--log-level", "error"}};
  std::vector<pid_t> attackers;
  for (unsigned seed = 1; seed <= 4; ++seed) {
    attackers.push_back(start_child([seed] {
      std::minstd_rand random{seed};
      for (int i = 0; i < 5000; ++i) {
        bytes content(random() % 400);
        for (auto& each : content) {
          each = static_cast<std::uint8_t>(random());
        }
        // No reset to defaults (16) among them: it would be carried out.
        if (content.size() >= 16 && random() % 2 == 0) {
          const bytes likely =
              row(i32(getpid() + 2), u32(static_cast<std::uint32_t>(random() % 16)), u16(0), u16(4),
                  u16(static_cast<std::uint16_t>(random() % 20)),
                  u16(static_cast<std::uint16_t>(random() % 20)));
          std::copy(likely.begin(), likely.end(), content.begin());
        }
        // Nor a reply to this test itself: it would take it for the service's.
        const auto type = static_cast<long>(random() % 40000 + 1);
        send_raw(random() % 3 == 0 && type != getppid() + 2 ? type : 1, content);
      }
      return 0;
    }));
  }
  for (int i = 0; i < 300; ++i) {
    const std::string value = "value " + std::to_string(i);
    ASSERT_EQ(__cfc_set_string(0, "WORK", "mine", value.c_str()), 0U);
    ASSERT_EQ(get("WORK", "mine"), value);
  }
  for (const pid_t attacker : attackers) {
    EXPECT_EQ(wait_for_child(attacker), 0);
  }
  EXPECT_EQ(get("WORK", "mine"), "value 299");
  EXPECT_TRUE(eventually([] { return waiting() == 0; }));
  EXPECT_EQ(service.end(), 0) << service.log();
}

namespace {

constexpr int workers = 8;
constexpr int victims = 500;
constexpr int at_once = 10;

/// Sets and reads back until it is killed, or gets no answer.
int ask_for_ever(int number) {
  const std::string key = "victim" + std::to_string(number % at_once);
  std::uint32_t value = 0;
  for (std::uint32_t i = 0; __cfc_set_u32(0, "WORK", key.c_str(), i) == 0 &&
                            __cfc_get_u32(0, "WORK", key.c_str(), &value) == 0;
       ++i) {
  }
  return 1;
}

/// Sets and reads back until told to stop; the exit status tells whether every answer was right.
int ask_and_check(int number, int stop) {
  const std::string key = "worker" + std::to_string(number);
  fcntl(stop, F_SETFL, O_NONBLOCK);
  char byte = 0;
  for (std::uint32_t i = 0; read(stop, &byte, 1) < 0; ++i) {
    std::uint32_t value = 0;
    if (__cfc_set_u32(0, "WORK", key.c_str(), i) != 0 ||
        __cfc_get_u32(0, "WORK", key.c_str(), &value) != 0 || value != i) {
      return 1;
    }
  }
  return 0;
}

}  // namespace

TEST_F(ConfigCenter, survives_a_storm_of_killed_clients) {
  service_process service;
  int stop[2];
  ASSERT_EQ(pipe(stop), 0);
  std::vector<pid_t> working;
  for (int i = 0; i < workers; ++i) {
    working.push_back(start_child([&] {
      close(stop[1]);
      return ask_and_check(i, stop[0]);
    }));
  }
  for (int i = 0; i < at_once; ++i) {
    ASSERT_EQ(__cfc_set_u32(0, "WORK", ("victim" + std::to_string(i)).c_str(), 0), 0U);
  }
  const long before_kib = service.resident_kib();

  std::minstd_rand random{1};
  for (int killed = 0; killed < victims;) {
    std::vector<pid_t> doomed;
    for (int i = 0; i < at_once; ++i, ++killed) {
      doomed.push_back(start_child([&] { return ask_for_ever(i); }));
    }
    for (const pid_t victim : doomed) {
      usleep(static_cast<useconds_t>(random() % 2000));
      kill(victim, SIGKILL);
    }
    for (const pid_t victim : doomed) {
      EXPECT_EQ(wait_for_child(victim), -SIGKILL);
    }
  }

  close(stop[1]);
  for (const pid_t worker : working) {
    EXPECT_EQ(wait_for_child(worker), 0) << "a worker got a wrong answer";
  }
  EXPECT_EQ(get("LAN", "ConnType"), "1");
  EXPECT_TRUE(eventually([] { return waiting() == 0; })) << waiting() << " messages are left";
  EXPECT_EQ(semctl(semget(proreflax::CFC_SEM_KEY, 0, 0), 0, GETVAL), 1) << "the lock is free";
#ifndef __SANITIZE_ADDRESS__
  // The sanitizer keeps freed memory for a while; its build finds leaks when the service ends.
  EXPECT_LT(service.resident_kib() - before_kib, 256);
#else
  EXPECT_GT(before_kib, 0);
#endif
  EXPECT_EQ(service.end(), 0) << service.log();
}
