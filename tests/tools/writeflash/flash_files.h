// A flash in a folder of its own, with a file to save from and one to read into; all of it is gone
// with the object.
#ifndef PROREFLAX_TESTS_TOOLS_WRITEFLASH_FLASH_FILES_H
#define PROREFLAX_TESTS_TOOLS_WRITEFLASH_FLASH_FILES_H

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <string>
#include <string_view>

#include "tests/support/child.h"
#include "tests/support/faults.h"
#include "tests/support/files.h"
#include "tools/writeflash/flash_slots.h"
#include "tools/writeflash/slot_format.h"

inline unsigned mode_of(const std::string& path) {
  return static_cast<unsigned>(std::filesystem::status(path).permissions());
}

inline int open_descriptors() {
  const std::filesystem::directory_iterator all{"/proc/self/fd"};
  return static_cast<int>(std::distance(begin(all), end(all)));
}

/// The bytes of a slot, right in all that is not asked for otherwise.
inline std::string slot_bytes(std::string_view text, std::uint32_t sequence,
                              proreflax::slot_header header = {}) {
  header.sequence = sequence;
  if (header.length == 0) {
    header.length = static_cast<std::uint32_t>(text.size());
  }
  proreflax::crc32 sum = checksum_of(header);
  sum.add(reinterpret_cast<const unsigned char*>(text.data()), text.size());
  header.checksum = sum.value();
  const auto row = to_row(header);
  return std::string{row.begin(), row.end()} += text;
}

/// The folder of the build tree for such files. Where the kernel allows it, it lies in memory, seen
/// by this process and its children alone: thousands of files are made here, and none is to last.
inline const std::string& scratch_folder() {
  static const std::string folder = [] {
    std::string name = PROREFLAX_BINARY_DIR "/scratch";
    std::filesystem::create_directories(name);
    if (unshare(CLONE_NEWNS) != 0 ||
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("scratch", name.c_str(), "tmpfs", 0, "size=64m") != 0) {
      std::puts("The scratch folder is on the disk: this takes longer.");
    }
    return name;
  }();
  return folder;
}

class flash_files {
 public:
  flash_files() { std::filesystem::create_directory(root); }
  ~flash_files() {
    faults::reset();
    faults::note_effects(nullptr);
  }
  flash_files(const flash_files&) = delete;
  flash_files& operator=(const flash_files&) = delete;

  std::string folder() const { return root + proreflax::flash_folder; }
  std::string slot(int i) const { return folder() + "/slot" + std::to_string(i); }

  /// Saves a text; false when it was refused, with the reason in `why`.
  bool save(std::string_view text) {
    files::write(input, text);
    return save_input();
  }
  bool save_input() {
    why = {};
    return proreflax::write_flash(root.c_str(), input.c_str(), why);
  }

  bool read_into_output() {
    why = {};
    return proreflax::read_flash(root.c_str(), output.c_str(), why) == proreflax::flash_read::done;
  }

  /// The saved text; none when the read failed.
  std::optional<std::string> saved() {
    if (!read_into_output()) {
      return std::nullopt;
    }
    auto text = files::read(output);
    std::filesystem::remove(output);
    return text;
  }

  /// The sequence number in a slot's header.
  std::uint32_t sequence(int i) const {
    const std::string bytes = files::read(slot(i)).value();
    return proreflax::take_u32(reinterpret_cast<const unsigned char*>(&bytes.at(8)));
  }

  void put_slot(int i, std::string_view bytes) const {
    std::filesystem::create_directories(folder());
    std::filesystem::remove_all(slot(i));
    files::write(slot(i), bytes);
  }

 private:
  files::temporary_folder all_{scratch_folder()};

 public:
  const std::string top = all_.path();
  const std::string root = top + "/device";
  std::string input = top + "/input";
  std::string output = top + "/output";
  proreflax::remark why;
};

#endif
