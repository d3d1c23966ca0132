// Descriptors 0 to 2, for programs that run the store or write its files.
//
// A program that was started with one of them closed gets its number for the next file that it
// opens: lines printed on standard output would then end up in the saved configuration.
#ifndef PROREFLAX_STORE_STANDARD_DESCRIPTORS_H
#define PROREFLAX_STORE_STANDARD_DESCRIPTORS_H

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace proreflax {

/// Opens /dev/null for each of the three that is closed. Call it before any other file is opened.
/// False with errno when /dev/null cannot be opened.
inline bool open_standard_descriptors() {
  for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
    // open() returns the lowest free number, which is this one.
    if (fcntl(descriptor, F_GETFD) == -1 && errno == EBADF && open("/dev/null", O_RDWR) == -1) {
      return false;
    }
  }
  return true;
}

}  // namespace proreflax

#endif
