// Who may use the access lock and the request queue.
#ifndef PROREFLAX_SERVICE_PERMISSIONS_H
#define PROREFLAX_SERVICE_PERMISSIONS_H

#include <sys/types.h>

namespace proreflax {

struct permissions {
  mode_t mode = 0600;
  bool has_group = false;
  gid_t group = 0;
};

}  // namespace proreflax

#endif
