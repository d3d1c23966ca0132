// config-center: the configuration-center service.
//
// Owns the store and answers every program of the device, one request at a time. Runs in the
// foreground; SIGTERM, SIGINT, SIGQUIT and SIGHUP end it: what was set is flushed, lock and queue
// are removed.
#include <proreflax/result_text.h>
#include <proreflax/store.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "service/configuration.h"
#include "service/flash_tool.h"
#include "service/inherited_state.h"
#include "service/log.h"
#include "service/options.h"
#include "service/ready_notice.h"
#include "service/reply.h"
#include "service/request_channel.h"
#include "service/state_directory.h"
#include "store/standard_descriptors.h"

namespace proreflax {
namespace {

constexpr int exit_failed = 1;

volatile sig_atomic_t stop_signal;
volatile sig_atomic_t timer_expired;

void on_stop(int signal) {
  stop_signal = signal;
}

void on_timer(int /*signal*/) {
  timer_expired = 1;
}

/// Handlers interrupt only the wait for a request; a signal that arrives just before that wait is
/// noticed at the next tick.
void handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

void handle_signals() {
  reset_signals();
  handle(SIGTERM, on_stop);
  handle(SIGINT, on_stop);
  handle(SIGHUP, on_stop);
  handle(SIGQUIT, on_stop);
  handle(SIGALRM, on_timer);
  handle(SIGPIPE, SIG_IGN);
  watch_children();
}

/// Everything that a request needs.
struct service {
  request_channel channel;
  configuration served;
  state_directory state;
};

const char* name_of(effect before) {
  return before == effect::flush ? "flush" : "reset to defaults";
}

void execute(effect before, service& self, reply* pending) {
  if (before == effect::none) {
    return;
  }
  const std::uint32_t result = before == effect::flush ? self.served.flush() : self.served.reset();
  set_result(*pending, result);
  log_line(result == CFC_OK ? log_level::info : log_level::error, "%s: %s (%u %s)", name_of(before),
           cfc_result_text(result), result, cfc_result_name(result));
  self.state.write_status(self.served);
}

void serve(service& self, const incoming& request) {
  reply result = make_reply(request.text, request.length);
  if (result.type == 0) {
    log_line(log_level::warning, "a message of %zu bytes names nobody to answer; dropped",
             request.length);
    return;
  }
  execute(result.before, self, &result);
  log_line(log_level::debug, "client %ld: %zu bytes, result %u", result.type - reply_type_bias,
           request.length, result_of(result));
  if (!self.channel.send(result)) {
    log_line(log_level::error, "no reply to process %ld: %s", result.type - reply_type_bias,
             std::strerror(errno));
  }
}

/// Periodic work, at least once a second. False when the lock is lost.
bool tick(service& self) {
  timer_expired = 0;
  self.channel.sweep();
  log_dropped_lines();
  if (!self.channel.has_lock()) {
    log_line(log_level::error, "the access lock is gone: %s", std::strerror(errno));
    return false;
  }
  return true;
}

/// Serves requests until a stop signal, or until lock or queue are lost.
bool serve_all(service& self) {
  incoming request;
  while (stop_signal == 0) {
    switch (self.channel.next(&request)) {
      case request_channel::wait_result::request:
        serve(self, request);
        break;
      case request_channel::wait_result::interrupted:
        break;
      case request_channel::wait_result::lost:
        log_line(log_level::error, "the request queue is gone: %s", std::strerror(errno));
        return false;
    }
    if (timer_expired != 0 && !tick(self)) {
      return false;
    }
  }
  log_line(log_level::info, "signal %d: stopping", static_cast<int>(stop_signal));
  return true;
}

bool claim(request_channel& channel, const permissions& allowed) {
  switch (channel.claim(allowed)) {
    case request_channel::claim_result::claimed:
      return true;
    case request_channel::claim_result::live_service:
      log_line(log_level::error, "another config-center runs on this device");
      return false;
    case request_channel::claim_result::failed:
      break;
  }
  log_line(log_level::error, "cannot create or take over the access lock: %s: %s",
           channel.failed_call(), std::strerror(errno));
  return false;
}

bool start(service& self, const permissions& allowed) {
  if (!self.served.load()) {
    return false;
  }
  self.state.write_status(self.served);
  if (!self.channel.open(allowed)) {
    log_line(log_level::error, "cannot create the request queue: %s: %s",
             self.channel.failed_call(), std::strerror(errno));
    return false;
  }
  log_line(log_level::info, "ready");
  send_ready_notice();
  return true;
}

int run(const service_options& options) {
  service self{.channel = {}, .served = {}, .state = state_directory{options.state_path}};
  if (!claim(self.channel, options.allowed)) {
    return exit_failed;
  }
  const bool served = start(self, options.allowed) && serve_all(self);
  // A further stop signal would end the process before lock and queue are removed.
  block_signals();
  const bool saved = self.served.save_at_end();
  config_center_close();
  // While the lock is still this service's: the next one writes a status of its own.
  self.state.remove_status();
  self.channel.close();
  return served && saved ? EXIT_SUCCESS : exit_failed;
}

}  // namespace
}  // namespace proreflax

using namespace proreflax;

int main(int argc, char** argv) {
  if (!open_standard_descriptors()) {
    return exit_failed;
  }
  const service_options options = read_options(argc, argv);
  // The saved configuration contains passwords: only the user of the service may read files that it
  // and its flash tool create.
  umask(S_IRWXG | S_IRWXO);
  never_wait_for_reader(STDOUT_FILENO);
  never_wait_for_reader(STDERR_FILENO);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  handle_signals();
  return run(options);
}
