// How the service observes the store engine's use of the flash copy tool.
//
// The engine does not report everything that the service must know: that a save of the factory
// settings failed (it ignores the result), and why a read failed (it treats every failure as
// "nothing saved").
#ifndef PROREFLAX_SERVICE_FLASH_TOOL_H
#define PROREFLAX_SERVICE_FLASH_TOOL_H

#include <signal.h>

#include <cstdint>

namespace proreflax {

/// Exit status of "writeflash -r" when nothing was saved yet.
inline constexpr int exit_nothing_saved = 3;

/// Starts recording how child processes end.
void watch_children();

/// How many child processes have ended, and whether the last one exited with status 0.
unsigned ended_children();
bool last_child_succeeded();

enum class saved_configuration : std::uint8_t { readable, nothing_saved, unreadable };

/// Copies the saved configuration from flash to the temporary file, which the caller removes,
/// whatever the result. An error is logged.
saved_configuration read_flash();

/// Blocks signals from processes and terminals: a signal to the process group would end the flash
/// tool in the middle of a save. The tool inherits the mask. `before` receives the previous one.
void block_signals(sigset_t* before = nullptr);

/// Blocks these signals while it exists.
class blocked_signals {
 public:
  blocked_signals() { block_signals(&before_); }
  ~blocked_signals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  blocked_signals(const blocked_signals&) = delete;
  blocked_signals& operator=(const blocked_signals&) = delete;

 private:
  sigset_t before_;
};

}  // namespace proreflax

#endif
