#include "service/options.h"

#include <getopt.h>
#include <grp.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "service/log.h"

namespace proreflax {
namespace {

constexpr int exit_usage = 2;

constexpr char usage[] =
    "Usage: config-center [OPTION...]\n"
    "Owns the device's configuration and answers its programs, in the foreground.\n"
    "\n"
    "  --mode MODE        permissions of lock and queue, octal (default 0600)\n"
    "  --group GROUP      group of lock and queue, by name or number\n"
    "  --log-level LEVEL  error, warning, info (default) or debug\n"
    "  --state DIR        directory of the status file (default /run/proreflax)\n"
    "  --help             show this text and exit\n"
    "  --version          show the version and exit\n"
    "\n"
    "SIGTERM, SIGINT, SIGQUIT and SIGHUP end it: what was set is written to flash, lock and queue\n"
    "are removed. Exit status: 0 ended by a signal, everything saved; 1 failed, or something "
    "could\n"
    "not be saved; 2 wrong usage.\n";

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

void read_option(int option, service_options* options) {
  log_level level{};
  switch (option) {
    case 'm':
      if (!read_mode(optarg, &options->allowed.mode)) {
        refuse("--mode", optarg, "not an octal number from 0 to 0666");
      }
      return;
    case 'g':
      if (!read_group(optarg, &options->allowed)) {
        refuse("--group", optarg, "no such group");
      }
      return;
    case 'l':
      if (!read_log_level(optarg, &level)) {
        refuse("--log-level", optarg, "not error, warning, info or debug");
      }
      set_log_level(level);
      return;
    case 's':
      if (*optarg != '/') {
        refuse("--state", optarg, "not an absolute path");
      }
      options->state_path = optarg;
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

}  // namespace

service_options read_options(int argc, char** argv) {
  static constexpr option known[] = {{"mode", required_argument, nullptr, 'm'},
                                     {"group", required_argument, nullptr, 'g'},
                                     {"log-level", required_argument, nullptr, 'l'},
                                     {"state", required_argument, nullptr, 's'},
                                     {"help", no_argument, nullptr, 'h'},
                                     {"version", no_argument, nullptr, 'v'},
                                     {}};
  service_options options;
  for (int found = 0; (found = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
    read_option(found, &options);
  }
  if (optind < argc) {
    refuse("argument", argv[optind], "config-center takes options only");
  }
  return options;
}

}  // namespace proreflax
