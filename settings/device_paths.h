// Files of the device that programs look at. The source is compiled for each program by itself: the
// rest of settings is compiled once, and does not know the device's root.
#ifndef PROREFLAX_SETTINGS_DEVICE_PATHS_H
#define PROREFLAX_SETTINGS_DEVICE_PATHS_H

namespace proreflax::settings {

/// The factory settings.
extern const char* const factory_file;

/// What the service reports of itself: lines name=value.
extern const char* const status_file;

}  // namespace proreflax::settings

#endif
