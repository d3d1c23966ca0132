// endurance RUN [--seconds SECONDS] [--seed SEED]
//
// One endurance run on the device's folder; its last line is a row of the table that
// tests/endurance/run prints. Runs signal their processes and use the fixed IPC keys, so the
// program insists on being started by the first process of a PID namespace, as
// in_own_namespaces.sh does it.
#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "tests/endurance/run.h"
#include "tests/support/request_queue.h"

namespace endurance {

void report::violation(const char* format, ...) const {
  constexpr unsigned long described = 10;
  if (++*violations_ > described) {
    return;
  }
  char text[256];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  dprintf(STDERR_FILENO, "  violation: %s\n", text);
}

namespace {

constexpr int exit_violations = 1;
constexpr int exit_usage = 2;

struct named_run {
  const char* name;
  void (*run)(const plan& planned, report& found);
};

constexpr named_run runs[] = {
    {"kill_storm", kill_storm},
    {"exclusive_lock", exclusive_lock},
    {"hostile_messages", hostile_messages},
    {"flood", flood},
    {"interrupted", interrupted},
    {"service_life", service_life},
    {"flash_tool_kills", flash_tool_kills},
    {"damaged_slots", damaged_slots},
    {"mixed_work", mixed_work},
};

const named_run* run_called(const char* name) {
  for (const named_run& each : runs) {
    if (std::strcmp(each.name, name) == 0) {
      return &each;
    }
  }
  return nullptr;
}

int usage() {
  std::fputs("usage: endurance RUN [--seconds SECONDS] [--seed SEED]\nruns:", stderr);
  for (const named_run& each : runs) {
    std::fprintf(stderr, " %s", each.name);
  }
  std::fputs("\n", stderr);
  return exit_usage;
}

/// False for an argument that is not understood.
bool read_options(char** option, plan& planned) {
  for (; *option != nullptr; option += 2) {
    char* end = nullptr;
    const double number = option[1] == nullptr ? 0 : std::strtod(option[1], &end);
    if (end == nullptr || *end != '\0' || number <= 0) {
      return false;
    }
    if (std::strcmp(*option, "--seconds") == 0) {
      planned.seconds = number;
    } else if (std::strcmp(*option, "--seed") == 0) {
      planned.seed = static_cast<unsigned>(number);
    } else {
      return false;
    }
  }
  return true;
}

void run_to_the_end(const named_run& chosen, const plan& planned, report& found) {
  try {
    chosen.run(planned, found);
  } catch (const std::exception& trouble) {
    found.violation("the run could not go on: %s", trouble.what());
  }
}

}  // namespace
}  // namespace endurance

using namespace endurance;

int main(int argc, char** argv) {
  plan planned;
  const named_run* const chosen = argc < 2 ? nullptr : run_called(argv[1]);
  if (chosen == nullptr || !read_options(argv + 2, planned)) {
    return usage();
  }
  if (getppid() != 1 || request_queue::keys_in_use()) {
    std::fputs("endurance: not in namespaces of its own; use tests/endurance/run\n", stderr);
    return exit_usage;
  }
  // The library prints a line for each request that cannot be sent.
  const int output = dup(STDOUT_FILENO);
  dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
  report found;
  const auto began = std::chrono::steady_clock::now();
  run_to_the_end(*chosen, planned, found);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - began;
  dprintf(output, "%-17s %7.1f %6u %10lu  %s\n", chosen->name, took.count(), planned.seed,
          found.violations(), found.figures().c_str());
  return found.violations() == 0 ? EXIT_SUCCESS : exit_violations;
}
