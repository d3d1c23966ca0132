// The access lock: one System V semaphore that serialises every process on the device, and the
// request queue, which is looked up each time the lock is taken.
//
// Both belong to the service; a client only looks them up. SEM_UNDO on both operations makes the
// kernel release the lock of a process that is killed. cfc_get_mutex() and cfc_put_mutex() are
// declared in config.h.
#ifndef PROREFLAX_TRANSPORT_LOCK_H
#define PROREFLAX_TRANSPORT_LOCK_H

#include <proreflax/config.h>

#include <cstdint>

#include "transport/ipc_keys.h"

namespace proreflax {

/// The ids that the last cfc_get_mutex() found, -1 for one that it did not find. Every writer
/// stores the same values for the same service, so they need no protection.
extern int g_cfc_sem_id;
extern int g_cfc_msq_id;

/// Runs `request` with the access lock held. Without the lock, returns the error of
/// cfc_get_mutex().
template <typename Request>
std::uint32_t with_lock(Request request) {
  const std::uint32_t taken = cfc_get_mutex();
  if (taken != CFC_OK) {
    return taken;
  }
  const std::uint32_t result = request();
  cfc_put_mutex();
  return result;
}

}  // namespace proreflax

#endif
