// cfc: reads and changes the device's configuration from a shell.
//
// The library prints a line on standard output when a request cannot be sent. A script reads values
// there, so the real standard output is set aside for them and the library gets standard error.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <string>
#include <vector>

#include "store/standard_descriptors.h"
#include "tools/cfc/program.h"

namespace {

/// The descriptor of standard output, which from now on is standard error to everybody else. It is
/// -1 where standard output is closed, so that a result that cannot be printed is an error.
int set_standard_output_aside() {
  const int results = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (proreflax::open_standard_descriptors()) {
    dup2(STDERR_FILENO, STDOUT_FILENO);
  }
  return results;
}

}  // namespace

int main(int argc, char** argv) {
  // A reader that goes away costs the exit status, and does not end a batch half-way.
  std::signal(SIGPIPE, SIG_IGN);
  cfc::output out{set_standard_output_aside(), STDERR_FILENO};
  return static_cast<int>(cfc::run_program({argv + (argc > 0 ? 1 : 0), argv + argc}, out));
}
