#include "settings/device_paths.h"

namespace proreflax::settings {

const char* const factory_file = PROREFLAX_DEVICE_ROOT "/etc/config-file.ini";
const char* const status_file = PROREFLAX_DEVICE_ROOT "/run/proreflax/status";

}  // namespace proreflax::settings
