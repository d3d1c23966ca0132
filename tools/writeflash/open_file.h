// An open file or folder: a descriptor that closes itself, and reads and writes that are whole.
//
// Every call tells whether it was done, and if not, says why in the remark, under the file's path.
// One that a signal interrupted is made again. What close() says is not heard: whatever must be on
// the flash was synced before.
#ifndef PROREFLAX_TOOLS_WRITEFLASH_OPEN_FILE_H
#define PROREFLAX_TOOLS_WRITEFLASH_OPEN_FILE_H

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "tools/writeflash/remark.h"

namespace proreflax {

class open_file {
 public:
  /// Not open yet. `path` is what remarks call the file, and must outlive this.
  explicit open_file(const char* path) : path_{path} {}
  open_file(const open_file&) = delete;
  open_file& operator=(const open_file&) = delete;
  ~open_file();

  /// Opens `name` in an open folder (AT_FDCWD: the current one), and closes what was open before. A
  /// file that this makes is its owner's alone.
  [[nodiscard]] bool open(int folder, const char* name, int flags, remark& why);

  [[nodiscard]] bool describe(struct stat& about, remark& why) const;

  /// Waits until no other process holds the lock of this file; it goes when the file is closed.
  [[nodiscard]] bool lock(remark& why) const;

  /// ENODATA when the file ends before `count` bytes.
  [[nodiscard]] bool read_at(std::uint64_t offset, void* bytes, std::size_t count,
                             remark& why) const;
  [[nodiscard]] bool write_at(std::uint64_t offset, const void* bytes, std::size_t count,
                              remark& why) const;

  static constexpr std::size_t piece_bytes = 4096;

  /// Reads a stretch of the file in pieces, and calls `take(bytes, count)` for each, until all are
  /// read, a piece cannot be read, or `take` gives false.
  template <typename Take>
  [[nodiscard]] bool read_pieces(std::uint64_t offset, std::uint64_t length, remark& why,
                                 Take take) const {
    unsigned char piece[piece_bytes];
    for (const std::uint64_t end = offset + length; offset < end;) {
      const auto count =
          static_cast<std::size_t>(std::min<std::uint64_t>(piece_bytes, end - offset));
      if (!read_at(offset, piece, count, why) || !take(piece, count)) {
        return false;
      }
      offset += count;
    }
    return true;
  }

  [[nodiscard]] bool make_empty(remark& why) const;

  /// What was written is on the flash when this was done.
  [[nodiscard]] bool sync(remark& why) const;

  /// The same for the names in a folder. A file system that cannot be told to (it is read-only, or
  /// keeps folders in memory) has nothing to lose either.
  [[nodiscard]] bool sync_names(remark& why) const;

  int descriptor() const { return descriptor_; }
  const char* path() const { return path_; }

 private:
  const char* path_;
  int descriptor_ = -1;
};

}  // namespace proreflax

#endif
