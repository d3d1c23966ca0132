// The fixed System V keys under which the service's semaphore and queue are found.
#ifndef PROREFLAX_TRANSPORT_IPC_KEYS_H
#define PROREFLAX_TRANSPORT_IPC_KEYS_H

namespace proreflax {

inline constexpr int CFC_SEM_KEY = 0x083A030D;
inline constexpr int CFC_MSQ_KEY = CFC_SEM_KEY + 1;

/// Number of the semaphore that is the lock: 1 free, 0 held.
inline constexpr unsigned short lock_semaphore = 0;

/// Number of the semaphore that config-center keeps at 1 while it lives. No client touches it.
inline constexpr unsigned short marker_semaphore = 1;

}  // namespace proreflax

#endif
