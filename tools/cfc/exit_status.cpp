#include "tools/cfc/exit_status.h"

#include <proreflax/result.h>

namespace cfc {

exit_status status_of(std::uint32_t code) {
  if (code == CFC_OK) {
    return exit_status::done;
  }
  const bool missing = code == CFC_ERR_NO_SECTION || code == CFC_ERR_NO_KEY;
  return missing ? exit_status::nothing_there : exit_status::failed;
}

}  // namespace cfc
