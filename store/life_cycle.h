// Writing the store to the temporary file. The operations of the life cycle are in store.h.
#ifndef PROREFLAX_STORE_LIFE_CYCLE_H
#define PROREFLAX_STORE_LIFE_CYCLE_H

#include <cstdint>

namespace proreflax {

/// Exports the store to a file. 0; 229 when it is not loaded, not dirty or busy; 215 when the file
/// cannot be opened or a write is incomplete, with the store still dirty.
std::uint32_t config_flush_file(const char* path);

}  // namespace proreflax

#endif
