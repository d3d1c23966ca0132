// config-center: the configuration-center service.
//
// Owns the store and answers every program of the device, one request at a time. Runs in the
// foreground; SIGTERM, SIGINT and SIGHUP end it: what was set is flushed, lock and queue go.
#include <getopt.h>
#include <grp.h>
#include <proreflax/store.h>
#include <signal.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "service/log.h"
#include "service/ready_notice.h"
#include "service/reply.h"
#include "service/request_channel.h"
#include "store/paths.h"

namespace proreflax {
namespace {

constexpr int exit_failed = 1;
constexpr int exit_usage = 2;

constexpr char usage[] =
    "Usage: config-center [OPTION...]\n"
    "Owns the device's configuration and answers its programs, in the foreground.\n"
    "\n"
    "  --mode MODE        permissions of lock and queue, octal (default 0600)\n"
    "  --group GROUP      group of lock and queue, by name or number\n"
    "  --log-level LEVEL  error, warning, info (default) or debug\n"
    "  --help             show this text and exit\n"
    "  --version          show the version and exit\n"
    "\n"
    "SIGTERM, SIGINT and SIGHUP end it: what was set is written to flash, lock and queue are\n"
    "removed. Exit status: 0 ended by a signal; 1 failed; 2 wrong usage.\n";

volatile sig_atomic_t stop_signal;
volatile sig_atomic_t timer_came;

void on_stop(int signal) {
  stop_signal = signal;
}

void on_timer(int) {
  timer_came = 1;
}

/// Handlers interrupt the wait for a request, and nothing else; a signal that just misses that wait
/// is seen at the next tick.
void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

bool read_mode(const char* text, mode_t* mode) {
  char* end = nullptr;
  const unsigned long number = std::strtoul(text, &end, 8);
  if (*text < '0' || *text > '7' || *end != '\0' || number > 0666) {
    return false;
  }
  *mode = static_cast<mode_t>(number);
  return true;
}

bool read_group(const char* text, permissions* allowed) {
  if (const group* const found = getgrnam(text); found != nullptr) {
    allowed->group = found->gr_gid;
  } else {
    char* end = nullptr;
    errno = 0;
    const unsigned long number = std::strtoul(text, &end, 10);
    allowed->group = static_cast<gid_t>(number);
    if (*text < '0' || *text > '9' || *end != '\0' || errno != 0 || allowed->group != number) {
      return false;
    }
  }
  allowed->has_group = true;
  return true;
}

[[noreturn]] void refuse(const char* what, const char* text, const char* rule) {
  std::fprintf(stderr, "config-center: %s \"%s\": %s\n", what, text, rule);
  std::exit(exit_usage);
}

void read_option(int option, permissions* allowed) {
  log_level level{};
  switch (option) {
    case 'm':
      if (!read_mode(optarg, &allowed->mode)) {
        refuse("--mode", optarg, "not an octal number from 0 to 0666");
      }
      return;
    case 'g':
      if (!read_group(optarg, allowed)) {
        refuse("--group", optarg, "no such group");
      }
      return;
    case 'l':
      if (!read_log_level(optarg, &level)) {
        refuse("--log-level", optarg, "not error, warning, info or debug");
      }
      set_log_level(level);
      return;
    case 'h':
      std::fputs(usage, stdout);
      std::exit(EXIT_SUCCESS);
    case 'v':
      std::puts("config-center " PROREFLAX_VERSION);
      std::exit(EXIT_SUCCESS);
    default:
      std::fputs("config-center: see config-center --help\n", stderr);
      std::exit(exit_usage);
  }
}

permissions read_command_line(int argc, char** argv) {
  static constexpr option options[] = {
      {"mode", required_argument, nullptr, 'm'},      {"group", required_argument, nullptr, 'g'},
      {"log-level", required_argument, nullptr, 'l'}, {"help", no_argument, nullptr, 'h'},
      {"version", no_argument, nullptr, 'v'},         {}};
  permissions allowed;
  for (int found = 0; (found = getopt_long(argc, argv, "", options, nullptr)) != -1;) {
    read_option(found, &allowed);
  }
  if (optind < argc) {
    refuse("argument", argv[optind], "config-center takes options only");
  }
  return allowed;
}

const char* name_of(effect before) {
  return before == effect::flush ? "flush" : "reset to defaults";
}

void carry_out(effect before, reply* answer) {
  if (before == effect::none) {
    return;
  }
  const std::uint32_t result = before == effect::flush ? cfc_flush_all() : config_to_default();
  set_result(*answer, result);
  log_line(result == CFC_OK ? log_level::info : log_level::error, "%s: result %u", name_of(before),
           result);
}

void serve(request_channel& channel, const incoming& request) {
  reply answer = make_reply(request.text, request.length);
  if (answer.type == 0) {
    log_line(log_level::warning, "a message of %zu bytes names nobody to answer; dropped",
             request.length);
    return;
  }
  carry_out(answer.before, &answer);
  log_line(log_level::debug, "asker %ld: %zu bytes, result %u", answer.type - reply_type_bias,
           request.length, result_of(answer));
  if (!channel.send(answer)) {
    log_line(log_level::error, "no reply to process %ld: %s", answer.type - reply_type_bias,
             std::strerror(errno));
  }
}

/// Serves until a signal ends it, or lock and queue are lost.
bool serve_all(request_channel& channel) {
  incoming request;
  while (stop_signal == 0) {
    switch (channel.next(&request)) {
      case request_channel::wait_result::request:
        serve(channel, request);
        break;
      case request_channel::wait_result::interrupted:
        break;
      case request_channel::wait_result::lost:
        log_line(log_level::error, "the request queue is gone: %s", std::strerror(errno));
        return false;
    }
    if (timer_came != 0) {
      timer_came = 0;
      channel.sweep();
      if (!channel.has_lock()) {
        log_line(log_level::error, "the access lock is gone: %s", std::strerror(errno));
        return false;
      }
    }
  }
  log_line(log_level::info, "signal %d: stopping", static_cast<int>(stop_signal));
  return true;
}

bool start(request_channel& channel, const permissions& allowed) {
  if (const std::uint32_t result = config_center_init(); result != CFC_OK) {
    log_line(log_level::error, "no configuration: flash has none, and %s gives result %u%s",
             factory_file, result,
             result == CFC_ERR_NO_FILE     ? " (cannot be opened)"
             : result == CFC_ERR_BAD_VALUE ? " (malformed; cfc check tells where)"
                                           : "");
    return false;
  }
  if (!channel.open(allowed)) {
    log_line(log_level::error, "cannot make the request queue: %s", std::strerror(errno));
    return false;
  }
  log_line(log_level::info, "ready");
  send_ready_notice();
  return true;
}

bool stop() {
  const std::uint32_t result = cfc_flush_all();
  if (result != CFC_OK) {
    log_line(log_level::error, "flush at the end: result %u", result);
  }
  config_center_close();
  return result == CFC_OK;
}

int run(const permissions& allowed) {
  static request_channel channel;
  switch (channel.claim(allowed)) {
    case request_channel::claim_result::claimed:
      break;
    case request_channel::claim_result::live_service:
      log_line(log_level::error, "another config-center runs on this device");
      return exit_failed;
    case request_channel::claim_result::failed:
      log_line(log_level::error, "cannot make the access lock: %s", std::strerror(errno));
      return exit_failed;
  }
  const bool served = start(channel, allowed) && serve_all(channel);
  const bool stopped = stop();
  channel.close();
  return served && stopped ? EXIT_SUCCESS : exit_failed;
}

}  // namespace
}  // namespace proreflax

using namespace proreflax;

int main(int argc, char** argv) {
  const permissions allowed = read_command_line(argc, argv);
  // The saved configuration holds passwords: what this process and its flash tool create is for
  // their own user alone.
  umask(S_IRWXG | S_IRWXO);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  handle(SIGTERM, on_stop);
  handle(SIGINT, on_stop);
  handle(SIGHUP, on_stop);
  handle(SIGALRM, on_timer);
  handle(SIGPIPE, SIG_IGN);
  // Whoever started the service may have ignored its children; the flash tool's end must be seen.
  handle(SIGCHLD, SIG_DFL);
  return run(allowed);
}
