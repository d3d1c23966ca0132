// The flash of a development machine: two files, slot0
// and slot1, that hold the saved configuration.
//
// A save goes into the slot that is not the newest whole one, so that one whole slot stands at
// every moment: the text is written and synced, then the names in the folder, and only then the
// header, which makes the slot count. Cut the power anywhere: the next read finds the old text or
// the new one, whole. A save that fails leaves the old text in force.
//
// Both operations hold a lock on the folder, and wait for a process that holds it. They need some
// 40 KiB of stack, whatever the text's length, and no heap.
#ifndef PROREFLAX_TOOLS_WRITEFLASH_FLASH_SLOTS_H
#define PROREFLAX_TOOLS_WRITEFLASH_FLASH_SLOTS_H

#include "tools/writeflash/remark.h"

namespace proreflax {

/// The folder of the slots on the device, and the slots in it.
inline constexpr char flash_folder[] = "/var/lib/proreflax";
inline constexpr const char* flash_slot_names[] = {"slot0", "slot1"};

/// Saves the text of `file`, a regular file that is not empty, in the flash of the device whose
/// root is the folder `device_root` ("" for "/"). The flash's folder is made where it is missing.
/// A text that is saved already is not written again: flash wears.
/// False: the text saved before still is, and `why` says what is wrong.
[[nodiscard]] bool write_flash(const char* device_root, const char* file, remark& why);

enum class flash_read : unsigned char { done, nothing_saved, failed };

/// Copies the saved text into `file`, which its owner alone can read. `file` is replaced whole or
/// not at all; something that is there and is not a regular file is left alone.
/// Unless done, `file` is unchanged, and `why` says what is wrong. Nothing was saved where no save
/// was ever completed; a damaged slot is a failure. Done with a remark: a slot is broken, and the
/// text is the other one's.
[[nodiscard]] flash_read read_flash(const char* device_root, const char* file, remark& why);

}  // namespace proreflax

#endif
