#include "tools/cfc/factory_file.h"

namespace cfc {

const char* const factory_file = PROREFLAX_DEVICE_ROOT "/etc/config-file.ini";

}  // namespace cfc
