#include "transport/lock.h"

#include <sys/msg.h>
#include <sys/sem.h>

#include <cerrno>

namespace proreflax {

int g_cfc_sem_id;
int g_cfc_msq_id;

namespace {

int change_lock(short by) {
  sembuf change{lock_semaphore, by, SEM_UNDO};
  return semop(g_cfc_sem_id, &change, 1);
}

}  // namespace
}  // namespace proreflax

using namespace proreflax;

std::uint32_t cfc_get_mutex() {
  g_cfc_sem_id = semget(CFC_SEM_KEY, 0, 0);
  if (g_cfc_sem_id == -1) {
    return CFC_ERR_NO_SEM;
  }
  // A signal does not end the wait. Any other failure counts as success: the lock then no longer
  // exists, and the lookup of the queue below detects whether a service runs.
  while (change_lock(-1) == -1 && errno == EINTR) {
  }
  g_cfc_msq_id = msgget(CFC_MSQ_KEY, 0);
  if (g_cfc_msq_id == -1) {
    cfc_put_mutex();
    return CFC_ERR_NO_MSQ;
  }
  return CFC_OK;
}

std::uint32_t cfc_put_mutex() {
  change_lock(+1);
  return CFC_OK;
}
