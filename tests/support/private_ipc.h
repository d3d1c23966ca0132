// A private IPC namespace for programs that use the fixed keys of semaphore and queue: the machine
// may have a service of its own.
#ifndef PROREFLAX_TESTS_SUPPORT_PRIVATE_IPC_H
#define PROREFLAX_TESTS_SUPPORT_PRIVATE_IPC_H

/// Moves this process into an IPC namespace of its own, through a user namespace if need be. Where
/// the kernel allows neither, it may stay in the machine's own if no service holds the keys there.
/// False, with a line on standard output, when neither is to be had.
bool enter_private_ipc_namespace();

#endif
