// time: local time as the device's programs see it, and its offset from UTC.
#ifndef PROREFLAX_TOOLS_CFC_DEVICE_LOCAL_TIME_H
#define PROREFLAX_TOOLS_CFC_DEVICE_LOCAL_TIME_H

#include <cstdint>
#include <string>

#include "tools/cfc/exit_status.h"
#include "tools/cfc/output/output.h"

namespace cfc {

struct time_command {
  bool json = false;
};

/// "+08:00", "-03:30", and seconds behind another colon where there are any.
std::string show_offset(std::int32_t seconds);

exit_status run(const time_command& command, output& out);

}  // namespace cfc

#endif
