// The service's state as a file: "status" in the directory /run/proreflax, lines of the form
// name=value.
//
//   pid        process id of the service
//   started    when it started, in seconds since the epoch
//   source     "flash" or "factory": where the configuration was loaded from
//   flash      "unreadable" while a saved configuration is kept that could not be read, else "ok"
//
// The file is replaced atomically when something changes, and removed at a clean stop. All users
// may read it: it contains no values. An error with it is logged once and has no other effect.
#ifndef PROREFLAX_SERVICE_STATE_DIRECTORY_H
#define PROREFLAX_SERVICE_STATE_DIRECTORY_H

#include <climits>

#include "service/configuration.h"

namespace proreflax {

class state_directory {
 public:
  /// Creates the directory, and its parent if that is missing.
  explicit state_directory(const char* path);

  void write_status(const configuration& served);
  void remove_status();

 private:
  bool write_and_rename(const char* text);
  void report(const char* what, const char* path);

  char status_path_[PATH_MAX];
  char part_path_[PATH_MAX];
  long started_;
  bool reported_ = false;
};

}  // namespace proreflax

#endif
