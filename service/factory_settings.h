// A configuration's file, loaded into memory alone.
#ifndef PROREFLAX_SERVICE_FACTORY_SETTINGS_H
#define PROREFLAX_SERVICE_FACTORY_SETTINGS_H

#include <cstdint>

namespace proreflax {

/// Fills an empty store from a file and leaves flash alone, unlike config_to_default(). 0; 206 when
/// the file cannot be opened or read; 205 when it is malformed; 12 without memory. The store is
/// empty after a failure.
std::uint32_t load_settings(const char* path);

/// Does so from the factory file.
std::uint32_t load_factory_settings();

}  // namespace proreflax

#endif
