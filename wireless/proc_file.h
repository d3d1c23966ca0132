// The files that the wireless driver publishes, and the buffer that they are read into.
#ifndef PROREFLAX_WIRELESS_PROC_FILE_H
#define PROREFLAX_WIRELESS_PROC_FILE_H

#include <cstddef>
#include <cstdint>

#ifndef PROREFLAX_DEVICE_ROOT
#define PROREFLAX_DEVICE_ROOT ""
#endif

namespace proreflax {

/// Status of the interface, then the stations that are associated.
inline constexpr char status_file[] = PROREFLAX_DEVICE_ROOT "/proc/wireless";

/// The driver's event log.
inline constexpr char event_log_file[] = PROREFLAX_DEVICE_ROOT "/proc/wirelesslog";

inline constexpr std::size_t proc_buf_capacity = 4096;

/// How much of the buffer a read may use, its NUL included. Read on every call.
extern std::int32_t g_proc_buf_size;

/// The file read last. The readers parse it in place and leave NULs in it.
extern char g_proc_buf[proc_buf_capacity];

/// Reads a file into g_proc_buf, until the buffer is full, and adds a NUL. `length` receives the
/// number of bytes read. 0; or 1 when it cannot be opened, with the outputs untouched.
std::uint32_t read_proc_file(const char* path, char** text, std::size_t* length);

}  // namespace proreflax

#endif
