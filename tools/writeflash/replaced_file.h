// A file that appears under its name whole, or not at all.
//
// It is written under another name, the path and ".part", and renamed when all of it is on the
// disk. A run that is killed may leave that other file behind; the next one removes it.
#ifndef PROREFLAX_TOOLS_WRITEFLASH_REPLACED_FILE_H
#define PROREFLAX_TOOLS_WRITEFLASH_REPLACED_FILE_H

#include "tools/writeflash/open_file.h"
#include "tools/writeflash/path_text.h"

namespace proreflax {

class replaced_file {
 public:
  /// `path` must outlive this.
  explicit replaced_file(const char* path) : part_{path, ".part"}, file_{path} {}
  replaced_file(const replaced_file&) = delete;
  replaced_file& operator=(const replaced_file&) = delete;
  ~replaced_file();

  /// Something that is at the path and not a regular file is refused: a device or a link would be
  /// replaced, not written to.
  [[nodiscard]] bool open(remark& why);

  [[nodiscard]] bool write_at(std::uint64_t offset, const void* bytes, std::size_t count,
                              remark& why) const {
    return file_.write_at(offset, bytes, count, why);
  }

  /// Puts the file in its place.
  [[nodiscard]] bool finish(remark& why);

 private:
  bool refuses_place(remark& why) const;

  path_text part_;
  open_file file_;
  bool pending_ = false;
};

}  // namespace proreflax

#endif
