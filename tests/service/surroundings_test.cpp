// What a service inherits from the process that starts it, and what happens around it.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <vector>

#include "tests/service/config_center.h"

using testing::HasSubstr;
using testing::Not;

namespace {

class Surroundings : public ConfigCenter {};

std::string saved_text() {
  const std::string copy = device_root::path("/etc/saved");
  const std::string tool = device_root::path("/programs/writeflash");
  return std::system((tool + " -r " + copy).c_str()) == 0
             ? device_root::read("/etc/saved").value_or("")
             : "nothing saved";
}

}  // namespace

TEST_F(Surroundings, closed_descriptors_do_not_bring_lines_into_the_saved_configuration) {
  void (*const closers[])() = {[] { close(STDOUT_FILENO); }, [] { close(STDIN_FILENO); },
                               [] { close(STDERR_FILENO); },
                               [] {
                                 close(STDIN_FILENO);
                                 close(STDOUT_FILENO);
                                 close(STDERR_FILENO);
                               }};
  for (const auto closer : closers) {
    {
      service_process service{{}, closer};
      ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
      ASSERT_EQ(cfc_flush_all_nosem(), 0U);
      ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 8), 0U);
      EXPECT_EQ(service.end(), 0);
    }
    EXPECT_EQ(saved_text(), "\n[LAN]\nConnType=0x08\nLanIPAddr=192.168.62.1\n\n[WORK]\nspare=1\n");
  }
}

TEST_F(Surroundings, the_flash_tool_too_opens_descriptors_that_are_closed) {
  device_root::write("/etc/text", "[LAN]\nk1=v\n");
  const std::string tool = device_root::path("/programs/writeflash");
  const std::string text = device_root::path("/etc/text");
  const std::string copy = device_root::path("/etc/copy");
  ASSERT_EQ(std::system((tool + " -w " + text + " <&- >&- 2>&-").c_str()), 0);
  // A slot is broken: the tool has something to say on standard error, which is closed.
  device_root::write("/var/lib/proreflax/slot1", "broken");
  ASSERT_EQ(std::system((tool + " -r " + copy + " <&- >&- 2>&-").c_str()), 0);
  EXPECT_EQ(device_root::read("/etc/copy"), "[LAN]\nk1=v\n");
}

TEST_F(Surroundings, inherited_masks_and_dispositions_do_not_matter) {
  service_process service{{}, [] {
                            sigset_t all;
                            sigfillset(&all);
                            sigprocmask(SIG_SETMASK, &all, nullptr);
                            for (const int each : {SIGTERM, SIGALRM, SIGINT, SIGHUP, SIGCHLD}) {
                              signal(each, SIG_IGN);
                            }
                          }};
  ASSERT_TRUE(send_raw(5, raw("junk")));
  EXPECT_TRUE(eventually([] { return waiting() == 0; })) << "it sweeps";
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
  EXPECT_EQ(cfc_flush_all_nosem(), 0U);
  EXPECT_EQ(service.end(SIGTERM), 0);
}

namespace {

int full_pipe[2];

void fill(int pipe) {
  fcntl(pipe, F_SETFL, O_NONBLOCK);
  const char byte = 'x';
  while (write(pipe, &byte, 1) == 1) {
  }
  fcntl(pipe, F_SETFL, 0);
}

std::string drain(int pipe) {
  fcntl(pipe, F_SETFL, O_NONBLOCK);
  std::string all;
  char piece[4096];
  for (ssize_t count = 0; (count = read(pipe, piece, sizeof piece)) > 0;) {
    all.append(piece, static_cast<std::size_t>(count));
  }
  return all;
}

}  // namespace

TEST_F(Surroundings, a_log_that_nobody_reads_stops_nothing_and_what_it_lost_is_counted) {
  ASSERT_EQ(pipe(full_pipe), 0);
  fill(full_pipe[1]);
  service_process service{{"--log-level", "debug"}, [] {
                            dup2(full_pipe[1], STDERR_FILENO);
                            dup2(full_pipe[1], STDOUT_FILENO);
                          }};
  for (std::uint8_t i = 0; i < 50; ++i) {
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", i), 0U);
    ASSERT_EQ(cfc_flush_all_nosem(), 0U);
  }
  EXPECT_EQ(fcntl(full_pipe[1], F_GETFL) & O_NONBLOCK, 0) << "other writers see no change";
  drain(full_pipe[0]);
  // The next tick at the latest.
  std::string log;
  EXPECT_TRUE(eventually([&] {
    log += drain(full_pipe[0]);
    return log.find("log lines were dropped") != std::string::npos;
  }));
  EXPECT_EQ(get("LAN", "ConnType"), "0x31");
  EXPECT_THAT((log += drain(full_pipe[0])), HasSubstr("debug: client")) << "it goes on";
  EXPECT_EQ(service.end(), 0);
  close(full_pipe[0]);
  close(full_pipe[1]);
}

#if defined(__x86_64__)
namespace {

/// A pseudo-terminal, of which nobody reads what is written to it.
int terminal[2];

void open_terminal() {
  terminal[0] = posix_openpt(O_RDWR | O_NOCTTY);
  grantpt(terminal[0]);
  unlockpt(terminal[0]);
  terminal[1] = open(ptsname(terminal[0]), O_RDWR | O_NOCTTY);
}

int sockets[2];

}  // namespace

TEST_F(Surroundings, a_terminal_or_a_socket_that_nobody_reads_stops_nothing) {
  open_terminal();
  ASSERT_NE(terminal[1], -1);
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
  for (const int* ends : {terminal, sockets}) {
    // What a terminal takes moves on to its other end some time later, which makes room again.
    for (int times = 0; times < 10; ++times) {
      fill(ends[1]);
      usleep(5000);
    }
    service_process service{{"--log-level", "debug"},
                            ends == terminal ? [] {
                              dup2(terminal[1], STDERR_FILENO);
                              dup2(terminal[1], STDOUT_FILENO);
                            } : [] {
                              dup2(sockets[1], STDERR_FILENO);
                              dup2(sockets[1], STDOUT_FILENO);
                            }};
    for (std::uint8_t i = 0; i < 10; ++i) {
      ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", i), 0U);
      ASSERT_EQ(cfc_flush_all_nosem(), 0U);
    }
    std::string log;
    if (ends == terminal) {
      EXPECT_EQ(fcntl(terminal[1], F_GETFL) & O_NONBLOCK, 0) << "other writers see no change";
    } else {
      EXPECT_TRUE(eventually([&] {
        log += drain(ends[0]);
        return log.find("log lines were dropped") != std::string::npos;
      }));
    }
    EXPECT_EQ(service.end(), 0);
    close(ends[0]);
    close(ends[1]);
  }
}

TEST_F(Surroundings, outputs_whose_reader_has_gone_stop_nothing) {
  ASSERT_EQ(pipe(full_pipe), 0);
  close(full_pipe[0]);
  service_process service{{}, [] {
                            dup2(full_pipe[1], STDERR_FILENO);
                            dup2(full_pipe[1], STDOUT_FILENO);
                          }};
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
  EXPECT_EQ(cfc_flush_all_nosem(), 0U);
  EXPECT_EQ(service.end(), 0);
  close(full_pipe[1]);
}

TEST_F(Surroundings, a_log_file_goes_on_where_it_ended) {
  device_root::write("/etc/log", "earlier line\n");
  service_process service{{}, [] {
                            const std::string log = device_root::path("/etc/log");
                            const int file = open(log.c_str(), O_WRONLY | O_APPEND);
                            dup2(file, STDERR_FILENO);
                            dup2(file, STDOUT_FILENO);
                          }};
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
  EXPECT_EQ(service.end(), 0);
  const std::string log = device_root::read("/etc/log").value();
  EXPECT_TRUE(log.starts_with("earlier line\n")) << log;
  EXPECT_THAT(log, HasSubstr("ready\n"));
  EXPECT_THAT(log, HasSubstr(" export file oK....\n"));
  EXPECT_THAT(log, HasSubstr("stopping\n"));
}

TEST_F(Surroundings, outputs_on_a_full_disk_cost_no_save) {
  {
    service_process service{{"--log-level", "debug"}, [] {
                              const int full = open("/dev/full", O_WRONLY);
                              dup2(full, STDERR_FILENO);
                              dup2(full, STDOUT_FILENO);
                            }};
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
    ASSERT_EQ(cfc_flush_all_nosem(), 0U);
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 8), 0U);
    EXPECT_EQ(service.end(), 0);
  }
  EXPECT_EQ(saved_text(), "\n[LAN]\nConnType=0x08\nLanIPAddr=192.168.62.1\n\n[WORK]\nspare=1\n");
}

namespace {

/// Has a system call fail in this process and those that it becomes.
void forbid(unsigned number, unsigned other, int error) {
  sock_filter rules[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 1, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, other, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program{5, rules};
  prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
  prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

}  // namespace

TEST_F(Surroundings, a_refusal_to_start_names_the_call_and_the_error) {
  const struct {
    void (*before)();
    const char* words;
  } rows[] = {
      {[] { forbid(SYS_semop, SYS_semtimedop, ENOSYS); }, "semop: Function not implemented"},
      {[] { forbid(SYS_semop, SYS_semtimedop, EINVAL); }, "semop: Invalid argument"},
      {[] { forbid(SYS_semget, SYS_semget, EACCES); }, "semget: Permission denied"},
      {[] { forbid(SYS_semctl, SYS_semctl, EPERM); }, "semctl: Operation not permitted"},
      {[] { forbid(SYS_msgget, SYS_msgget, ENOSPC); }, "msgget: No space left on device"},
      {[] { forbid(SYS_msgctl, SYS_msgctl, EPERM); }, "msgctl: Operation not permitted"},
  };
  for (const auto& row : rows) {
    service_process service{{}, row.before};
    EXPECT_EQ(service.status(), 1) << row.words;
    EXPECT_THAT(service.log(), HasSubstr(row.words));
    EXPECT_THAT(service.log(), Not(HasSubstr("another config-center runs")));
    semctl(semget(proreflax::CFC_SEM_KEY, 0, 0), 0, IPC_RMID);
  }
}

TEST_F(Surroundings, a_save_for_which_there_is_no_process_is_tried_again) {
  service_process service{{}, [] { forbid(SYS_clone, SYS_clone3, EAGAIN); }};
  EXPECT_THAT(service.log(), HasSubstr("-r could not be run: Resource temporarily unavailable"));
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
  EXPECT_EQ(cfc_flush_all_nosem(), 218U);
  EXPECT_EQ(cfc_flush_all_nosem(), 218U) << "nothing is forgotten";
  EXPECT_EQ(cfc_to_default(), 0U);
  EXPECT_THAT(service.log(), HasSubstr("the factory settings could not be saved"));
  EXPECT_EQ(cfc_flush_all_nosem(), 218U);
  EXPECT_EQ(service.end(), 1);
}
#endif

TEST_F(Surroundings, a_flood_of_requests_costs_no_honest_client_its_reply) {
  service_process service{{"--log-level", "error"}};
  for (int flags : {0, IPC_NOWAIT}) {
    std::vector<std::unique_ptr<child>> flooders;
    for (int i = 0; i < 2; ++i) {
      flooders.push_back(std::make_unique<child>([flags] {
        const bytes nothing = row(own_reply_type(), u32(0), u32(0), u32(0));
        for (;;) {
          send_raw(1, nothing, flags);
        }
        return 0;
      }));
    }
    child honest{[] {
      const std::string longest(199, 'v');
      for (int i = 0; i < 200; ++i) {
        if (__cfc_set_string(0, "LAN", "long", longest.c_str()) != 0 ||
            get("LAN", "long") != longest) {
          return 1;
        }
      }
      return 0;
    }};
    usleep(1000000);
    flooders.clear();
    // A client that was not answered during the flood is answered soon after it.
    siginfo_t info{};
    EXPECT_TRUE(eventually([&] {
      return waitid(P_PID, static_cast<id_t>(honest.pid()), &info, WEXITED | WNOHANG | WNOWAIT) ==
                 0 &&
             info.si_pid != 0;
    }));
    if (info.si_pid != 0) {
      EXPECT_EQ(honest.wait(), 0);
    }
  }
  EXPECT_EQ(service.end(), 0) << service.log();
  EXPECT_THAT(service.log(), Not(HasSubstr("config-center: error")));
}

namespace {

struct inside {
  std::atomic<int> clients;
  std::atomic<int> violations;
  std::atomic<long> answered;
  std::atomic<bool> stop;
};

/// Enters the lock again and again, and notes whether another client was there.
int enter_until_stopped(const shared<inside>& seen) {
  while (!seen->stop) {
    if (cfc_get_mutex() != 0) {
      continue;
    }
    seen->violations += seen->clients.fetch_add(1) == 0 ? 0 : 1;
    std::uint8_t value = 0;
    seen->answered += __cfc_get_u8(1, "LAN", "ConnType", &value) == 0 ? 1 : 0;
    seen->clients.fetch_sub(1);
    cfc_put_mutex();
  }
  return 0;
}

}  // namespace

TEST_F(Surroundings, no_two_clients_hold_the_lock_however_often_the_service_is_restarted) {
  const shared<inside> seen;
  std::vector<std::unique_ptr<child>> clients;
  for (int i = 0; i < 6; ++i) {
    clients.push_back(std::make_unique<child>([&] { return enter_until_stopped(seen); }));
  }
  for (int i = 0; i < 30; ++i) {
    service_process service{{"--log-level", "error"}};
    usleep(static_cast<useconds_t>(2000 + 500 * (i % 7)));
    if (i % 3 == 2) {
      EXPECT_EQ(service.end(SIGTERM), 0) << service.log();
    } else {
      service.end(SIGKILL);
    }
  }
  seen->stop = true;
  const service_process last;
  for (const auto& client : clients) {
    EXPECT_EQ(client->wait(), 0);
  }
  EXPECT_EQ(seen->violations, 0) << "with " << seen->answered << " answers";
  EXPECT_GT(seen->answered, 100);
}
