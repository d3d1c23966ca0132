// What a process inherits from the one that started it, brought to a known state: descriptors,
// signal mask and dispositions, and outputs that nobody reads.
#ifndef PROREFLAX_SERVICE_INHERITED_STATE_H
#define PROREFLAX_SERVICE_INHERITED_STATE_H

namespace proreflax {

/// Unblocks every signal and gives each its default disposition. A service that was started with
/// SIGTERM or SIGALRM blocked could not be stopped and would never sweep.
void reset_signals();

/// Makes writing to a descriptor fail instead of wait when nobody reads a pipe, a terminal or a
/// socket. The file is opened anew where that is possible, so that other processes that share it
/// see no change.
void never_wait_for_reader(int descriptor);

}  // namespace proreflax

#endif
