// Loading the factory settings without saving them.
#ifndef PROREFLAX_SERVICE_FACTORY_SETTINGS_H
#define PROREFLAX_SERVICE_FACTORY_SETTINGS_H

#include <cstdint>

namespace proreflax {

/// Fills an empty store from the factory file; unlike config_to_default(), does not write flash.
/// 0; 206 when the file cannot be opened; 205 when it is malformed; 12 without memory. The store is
/// empty after a failure.
std::uint32_t load_factory_settings();

}  // namespace proreflax

#endif
