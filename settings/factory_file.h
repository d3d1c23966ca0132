// Where the factory defaults are. Its source is compiled for each program of its own: the rest of
// cfc is compiled once, and does not know the device's root.
#ifndef PROREFLAX_SETTINGS_FACTORY_FILE_H
#define PROREFLAX_SETTINGS_FACTORY_FILE_H

namespace proreflax::settings {

extern const char* const factory_file;

}  // namespace proreflax::settings

#endif
