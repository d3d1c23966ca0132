// Where the factory defaults are. Its source is compiled for each program of its own: the rest of
// cfc is compiled once, and does not know the device's root.
#ifndef PROREFLAX_TOOLS_CFC_FACTORY_FILE_H
#define PROREFLAX_TOOLS_CFC_FACTORY_FILE_H

namespace cfc {

extern const char* const factory_file;

}  // namespace cfc

#endif
