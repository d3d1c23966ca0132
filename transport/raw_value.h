// Raw get and set: one value string, named by section and key, in one exchange.
//
// The _sem functions need the access lock held; the _nosem functions take and release it.
#ifndef PROREFLAX_TRANSPORT_RAW_VALUE_H
#define PROREFLAX_TRANSPORT_RAW_VALUE_H

#include <cstdint>

namespace proreflax {

/// `length` is the size of `out` on entry and the value's length on success. No NUL is added. Both
/// are untouched by every failure.
std::uint32_t __cfc_get_raw_sem(const char* section, const char* key, char* out,
                                std::int32_t* length);
std::uint32_t __cfc_get_raw_nosem(const char* section, const char* key, char* out,
                                  std::int32_t* length);

/// Sends exactly `length` bytes of `value`, which need not be terminated.
std::uint32_t __cfc_set_raw_sem(const char* section, const char* key, const char* value,
                                std::int32_t length);
std::uint32_t __cfc_set_raw_nosem(const char* section, const char* key, const char* value,
                                  std::int32_t length);

}  // namespace proreflax

#endif
