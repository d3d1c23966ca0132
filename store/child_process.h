// The programs that the store runs: the flash copy tool, and gzip, which is not used at present.
#ifndef PROREFLAX_STORE_CHILD_PROCESS_H
#define PROREFLAX_STORE_CHILD_PROCESS_H

#include <cstdint>

namespace proreflax {

/// Runs the flash tool on a file: "-w" when `write` is non-zero, else "-r". 0; 218 or 219 when no
/// process could be created; 222 or 223 when the tool failed in any way.
std::uint32_t config_run_writeflash(int write, const char* path);

/// Compresses a file in place, or decompresses it when `unpack` is non-zero. 0; 216 or 217 when no
/// process could be created and the end of another child did not change the result; 220 or 221 when
/// the program failed. No operation calls it.
std::uint32_t config_run_gzip(int unpack, const char* path);

}  // namespace proreflax

#endif
