// How cfc ends. A script tells an entry that is not there from one that is empty, and a request
// that was refused from a command line that makes no sense.
#ifndef PROREFLAX_TOOLS_CFC_EXIT_STATUS_H
#define PROREFLAX_TOOLS_CFC_EXIT_STATUS_H

#include <cstdint>

namespace cfc {

enum class exit_status : int {
  done = 0,
  failed = 1,         // refused, or failed on the way
  wrong_usage = 2,    // no command line of this program; nothing was asked of the service
  nothing_there = 3,  // no such section, or no such key
};

/// Of a result code.
exit_status status_of(std::uint32_t code);

}  // namespace cfc

#endif
