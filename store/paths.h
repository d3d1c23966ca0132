// The fixed files and programs of the device.
//
// PROREFLAX_DEVICE_ROOT is prepended to every path at compile time. It is empty in the library that
// ships; a build for a development machine sets it to a directory that represents the device.
#ifndef PROREFLAX_STORE_PATHS_H
#define PROREFLAX_STORE_PATHS_H

#ifndef PROREFLAX_DEVICE_ROOT
#define PROREFLAX_DEVICE_ROOT ""
#endif

namespace proreflax {

/// Factory defaults, INI text.
inline constexpr char factory_file[] = PROREFLAX_DEVICE_ROOT "/etc/config-file.ini";

/// The file through which the store and the flash tool exchange the saved configuration.
inline constexpr char temporary_file[] = PROREFLAX_DEVICE_ROOT "/sbin/config-file.tmp";

/// The flash copy tool: "-r FILE" copies the saved configuration into the file, "-w FILE" saves it.
inline constexpr char flash_tool[] = PROREFLAX_DEVICE_ROOT "/sbin/writeflash";

/// The multi-call binary that provides gzip and gunzip.
inline constexpr char multi_call_binary[] = PROREFLAX_DEVICE_ROOT "/bin/busybox";

}  // namespace proreflax

#endif
