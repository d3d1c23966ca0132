#include "service/state_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>

#include "service/log.h"

namespace proreflax {
namespace {

constexpr mode_t for_everyone_to_enter = 0755;
constexpr mode_t for_everyone_to_read = 0644;

bool create_directory(const char* path) {
  if (mkdir(path, for_everyone_to_enter) == 0) {
    // Regardless of the service's umask.
    return chmod(path, for_everyone_to_enter) == 0;
  }
  return errno == EEXIST;
}

/// Creates the parent too, if it is missing.
bool create_with_parent(const char* path) {
  if (create_directory(path)) {
    return true;
  }
  if (errno != ENOENT) {
    return false;
  }
  char parent[PATH_MAX];
  std::snprintf(parent, sizeof parent, "%s", path);
  if (char* const slash = std::strrchr(parent, '/'); slash != nullptr) {
    *slash = '\0';
  }
  return create_directory(parent) && create_directory(path);
}

bool write_all(int file, const char* text) {
  const auto length = static_cast<ssize_t>(std::strlen(text));
  return fchmod(file, for_everyone_to_read) == 0 && write(file, text, std::strlen(text)) == length;
}

}  // namespace

state_directory::state_directory(const char* path) : started_{static_cast<long>(time(nullptr))} {
  std::snprintf(status_path_, sizeof status_path_, "%s/status", path);
  std::snprintf(part_path_, sizeof part_path_, "%s/status.part", path);
  if (!create_with_parent(path)) {
    report("cannot create", path);
  }
}

/// Reports only the first failure: the cause usually affects all later writes too.
void state_directory::report(const char* what, const char* path) {
  if (!reported_) {
    log_line(log_level::warning, "%s %s: %s", what, path, std::strerror(errno));
  }
  reported_ = true;
}

bool state_directory::write_and_rename(const char* text) {
  const int file = open(part_path_, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (file == -1) {
    return false;
  }
  const bool written = write_all(file, text);
  const int error = errno;
  close(file);
  errno = error;
  return written && std::rename(part_path_, status_path_) == 0;
}

void state_directory::write_status(const configuration& served) {
  char text[200];
  std::snprintf(text, sizeof text, "pid=%ld\nstarted=%ld\nsource=%s\nflash=%s\n",
                static_cast<long>(getpid()), started_, served.from_flash() ? "flash" : "factory",
                served.flash_unreadable() ? "unreadable" : "ok");
  if (!write_and_rename(text)) {
    report("cannot write", status_path_);
  }
}

void state_directory::remove_status() {
  unlink(status_path_);
}

}  // namespace proreflax
