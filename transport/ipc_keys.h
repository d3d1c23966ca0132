// The fixed System V keys under which the service's semaphore and queue are found.
#ifndef PROREFLAX_TRANSPORT_IPC_KEYS_H
#define PROREFLAX_TRANSPORT_IPC_KEYS_H

namespace proreflax {

inline constexpr int CFC_SEM_KEY = 0x083A030D;
inline constexpr int CFC_MSQ_KEY = CFC_SEM_KEY + 1;

/// Number of the semaphore that is the lock: 1 free, 0 held.
inline constexpr unsigned short lock_semaphore = 0;

}  // namespace proreflax

#endif
