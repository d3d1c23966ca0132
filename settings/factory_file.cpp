#include "settings/factory_file.h"

namespace proreflax::settings {

const char* const factory_file = PROREFLAX_DEVICE_ROOT "/etc/config-file.ini";

}  // namespace proreflax::settings
