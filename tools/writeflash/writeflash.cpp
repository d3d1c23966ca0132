// writeflash: copies the saved configuration between flash and a file.
#include <cstdio>
#include <cstring>

#include "store/standard_descriptors.h"
#include "tools/writeflash/flash_slots.h"

namespace {

constexpr int exit_done = 0;
constexpr int exit_failed = 1;
constexpr int exit_wrong_usage = 2;
constexpr int exit_nothing_saved = 3;

constexpr char help[] =
    "Usage: writeflash -r FILE    copy the saved configuration from flash into FILE\n"
    "       writeflash -w FILE    save FILE in flash\n"
    "       writeflash --help     show this text\n"
    "       writeflash --version  show the version\n"
    "\n"
    "Exit status: 0 done, 1 failed (standard error says why), 2 wrong usage, 3 nothing was saved\n"
    "yet (-r).\n";

bool is(const char* argument, const char* text) {
  return std::strcmp(argument, text) == 0;
}

int print(const char* text) {
  const bool printed = std::fputs(text, stdout) >= 0 && std::fflush(stdout) == 0;
  if (!printed) {
    std::perror("writeflash: standard output");
  }
  return printed ? exit_done : exit_failed;
}

int refuse(const char* what, const char* argument) {
  std::fprintf(stderr, "writeflash: %s%s\nTry 'writeflash --help'.\n", what, argument);
  return exit_wrong_usage;
}

int status_of(proreflax::flash_read result) {
  switch (result) {
    case proreflax::flash_read::done:
      return exit_done;
    case proreflax::flash_read::nothing_saved:
      return exit_nothing_saved;
    case proreflax::flash_read::failed:
      break;
  }
  return exit_failed;
}

int copy(bool write, const char* file) {
  proreflax::remark why;
  int status = exit_failed;
  if (!write) {
    status = status_of(proreflax::read_flash(PROREFLAX_DEVICE_ROOT, file, why));
  } else if (proreflax::write_flash(PROREFLAX_DEVICE_ROOT, file, why)) {
    status = exit_done;
  }
  if (why.text()[0] != '\0') {
    std::fprintf(stderr, "writeflash: %s\n", why.text());
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  if (!proreflax::open_standard_descriptors()) {
    return exit_failed;
  }
  if (argc < 2) {
    return refuse("-r FILE or -w FILE is wanted", "");
  }
  const char* const option = argv[1];
  const bool read = is(option, "-r");
  const bool write = is(option, "-w");
  const bool about = is(option, "--help") || is(option, "--version");
  if (!read && !write && !about) {
    return refuse("unknown option ", option);
  }
  const int wanted = about ? 2 : 3;
  if (argc > wanted) {
    return refuse("one argument too many: ", argv[wanted]);
  }
  if (about) {
    return print(is(option, "--help") ? help : "writeflash " PROREFLAX_VERSION "\n");
  }
  if (argc < wanted || argv[2][0] == '\0') {
    return refuse("a FILE is wanted behind ", option);
  }
  if (argv[2][0] == '-') {
    return refuse("FILE looks like an option; if it is none, write ./", argv[2]);
  }
  return copy(write, argv[2]);
}
