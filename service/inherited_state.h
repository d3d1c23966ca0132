// Resets what a process inherits from the one that started it: signal mask and dispositions, and
// outputs that have no reader.
#ifndef PROREFLAX_SERVICE_INHERITED_STATE_H
#define PROREFLAX_SERVICE_INHERITED_STATE_H

namespace proreflax {

/// Unblocks every signal and sets its default disposition. Otherwise a service that was started
/// with SIGTERM or SIGALRM blocked could not be stopped and would never sweep.
void reset_signals();

/// Makes writing to a pipe, terminal or socket that has no reader fail instead of wait. The file is
/// reopened where possible, so that other processes that share it are not affected.
void never_wait_for_reader(int descriptor);

}  // namespace proreflax

#endif
