// Saving a text in two slots, and reading the newest whole one.
//
// What holds at every moment, across power cuts and killed runs:
// - a header is written only when its text, and the names of its slot and of the folders above, are
//   on the flash;
// - the other slot is given up only when the newest one is on the flash, header included: a run
//   that was killed may have left a header that no power cut survives;
// - a slot whose save failed is emptied, so that a text reported as not saved is not found later.
#include "tools/writeflash/flash_slots.h"

#include <unistd.h>

#include "tools/writeflash/open_file.h"
#include "tools/writeflash/path_text.h"
#include "tools/writeflash/replaced_file.h"
#include "tools/writeflash/slot_format.h"

namespace proreflax {
namespace {

// Faults that come of no damage: no save went here yet, or one that was cut short or undone.
constexpr char missing[] = "missing";
constexpr char unfinished[] = "unfinished";

struct slot {
  const char* name;
  open_file file;
  slot_header header{};
  const char* fault = missing;  // null when the slot is whole

  bool whole() const { return fault == nullptr; }
};

/// Whether a slot holds no text for another reason than damage.
bool was_never_saved(const slot& each) {
  return each.fault == missing || each.fault == unfinished;
}

/// Errors that speak of the slot and not of this run. A slot whose medium fails is as broken as one
/// with a wrong checksum, and the other slot is there for both.
bool condemns_slot(int error) {
  switch (error) {
    case EIO:
    case EBADMSG:
    case EUCLEAN:
    case ENODATA:
    case ENXIO:      // a socket
    case ELOOP:      // a link to itself
    case EOVERFLOW:  // larger than a slot can be
      return true;
    default:
      return false;
  }
}

const char* fault_of_header(const slot_header_row& row, std::uint64_t file_bytes) {
  if (row == slot_header_row{}) {
    return unfinished;
  }
  const slot_header header = from_row(row);
  if (header.magic != slot_magic) {
    return "no header";
  }
  if (header.version != slot_version) {
    return "unknown format version";
  }
  if (header.length == 0 || file_bytes != slot_header_bytes + std::uint64_t{header.length}) {
    return "size does not match the header";
  }
  if (header.length > longest_text_bytes) {
    return "text too long";
  }
  return nullptr;
}

/// False when the slot cannot be read to its end.
bool judge_text(slot& each, remark& why) {
  crc32 sum = checksum_of(each.header);
  const auto add = [&](const unsigned char* piece, std::size_t count) {
    sum.add(piece, count);
    return true;
  };
  if (!each.file.read_pieces(slot_header_bytes, each.header.length, why, add)) {
    return false;
  }
  each.fault = sum.value() == each.header.checksum ? nullptr : "wrong checksum";
  return true;
}

/// The same for the whole slot.
bool judge(slot& each, remark& why) {
  struct stat about {};
  if (!each.file.describe(about, why)) {
    return false;
  }
  if (!S_ISREG(about.st_mode)) {
    each.fault = "not a regular file";
    return true;
  }
  if (about.st_size < off_t{slot_header_bytes}) {
    each.fault = about.st_size == 0 ? unfinished : "shorter than a header";
    return true;
  }
  slot_header_row row{};
  if (!each.file.read_at(0, row.data(), row.size(), why)) {
    return false;
  }
  each.header = from_row(row);
  each.fault = fault_of_header(row, static_cast<std::uint64_t>(about.st_size));
  return each.fault != nullptr || judge_text(each, why);
}

/// Finds out what a slot holds. False when that cannot be told, and with it which is the newest.
bool look_at(slot& each, const open_file& folder, remark& why) {
  remark trouble;
  if (each.file.open(folder.descriptor(), each.name, O_RDONLY, trouble) && judge(each, trouble)) {
    return true;
  }
  if (trouble.error() == ENOENT) {
    return true;
  }
  each.fault = std::strerror(trouble.error());
  return condemns_slot(trouble.error()) || why.about(each.file.path(), trouble.error());
}

/// Opens a file for its text. `length` is 0 when there is none to be had.
bool open_text(open_file& file, std::uint32_t& length, remark& why) {
  struct stat about {};
  if (!file.open(AT_FDCWD, file.path(), O_RDONLY, why) || !file.describe(about, why)) {
    return false;
  }
  if (!S_ISREG(about.st_mode)) {
    return why.about(file.path(), "not a regular file");
  }
  // No store loads an empty text: to save one is to lose the configuration.
  if (about.st_size == 0) {
    return why.about(file.path(), "empty, not saved");
  }
  if (about.st_size > off_t{longest_text_bytes}) {
    return why.about(file.path(), EFBIG);
  }
  length = static_cast<std::uint32_t>(about.st_size);
  return true;
}

class flash {
 public:
  /// `device_root` must outlive this.
  explicit flash(const char* device_root)
      : root_{device_root}, folder_path_{device_root, flash_folder} {}

  /// Opens the folder, waits for its lock and looks at both slots.
  [[nodiscard]] bool open_to_read(remark& why);
  [[nodiscard]] bool open_to_write(remark& why);

  [[nodiscard]] bool save(const open_file& text, std::uint32_t length, remark& why) const;
  [[nodiscard]] bool copy_into(const char* file, remark& why);

  /// Whether an operation failed because no save was ever completed.
  bool is_empty() const { return is_empty_; }

 private:
  bool enter_root(remark& why);
  bool enter(const char* name, remark& why);
  bool make_and_enter(const char* name, mode_t mode, remark& why);
  bool lock_and_look(remark& why);

  const slot* newest() const;
  bool holds(const slot& each, const open_file& text, std::uint32_t length, remark& why) const;
  bool fill(const open_file& target, slot_header header, const open_file& text, remark& why) const;
  bool report_no_slot(remark& why);
  void mention_broken(remark& why) const;

  const char* root_;
  path_text folder_path_;
  path_text slot_paths_[2] = {{folder_path_.text(), "/", flash_slot_names[0]},
                              {folder_path_.text(), "/", flash_slot_names[1]}};
  open_file folder_{folder_path_.text()};
  slot slots_[2] = {{flash_slot_names[0], open_file{slot_paths_[0].text()}},
                    {flash_slot_names[1], open_file{slot_paths_[1].text()}}};
  bool is_empty_ = false;
};

bool flash::enter_root(remark& why) {
  if (!slot_paths_[0].fits()) {
    return why.about(folder_path_.text(), ENAMETOOLONG);
  }
  return folder_.open(AT_FDCWD, root_[0] == '\0' ? "/" : root_, O_RDONLY | O_DIRECTORY, why);
}

bool flash::enter(const char* name, remark& why) {
  return folder_.open(folder_.descriptor(), name, O_RDONLY | O_DIRECTORY, why);
}

bool flash::make_and_enter(const char* name, mode_t mode, remark& why) {
  if (mkdirat(folder_.descriptor(), name, mode) != 0 && errno != EEXIST) {
    return why.about(folder_path_.text(), errno);
  }
  // Synced also when it was there: a run that was killed may have made it.
  return folder_.sync_names(why) && enter(name, why);
}

bool flash::lock_and_look(remark& why) {
  return folder_.lock(why) && look_at(slots_[0], folder_, why) && look_at(slots_[1], folder_, why);
}

bool flash::open_to_read(remark& why) {
  if (!enter_root(why)) {
    return false;
  }
  for (const char* name : {"var", "lib", "proreflax"}) {
    if (!enter(name, why)) {
      return why.error() == ENOENT ? report_no_slot(why) : false;
    }
  }
  return lock_and_look(why);
}

bool flash::open_to_write(remark& why) {
  // The slots hold passwords: their folder is its owner's alone.
  return enter_root(why) && make_and_enter("var", 0755, why) && make_and_enter("lib", 0755, why) &&
         make_and_enter("proreflax", 0700, why) && lock_and_look(why);
}

const slot* flash::newest() const {
  const auto& [first, second] = slots_;
  if (!first.whole() || !second.whole()) {
    return first.whole() ? &first : second.whole() ? &second : nullptr;
  }
  return comes_after(second.header.sequence, first.header.sequence) ? &second : &first;
}

/// Whether a slot holds this text already. False with a remark when that cannot be told.
bool flash::holds(const slot& each, const open_file& text, std::uint32_t length,
                  remark& why) const {
  if (each.header.length != length) {
    return false;
  }
  std::uint64_t offset = slot_header_bytes;
  const auto compare = [&](const unsigned char* piece, std::size_t count) {
    unsigned char saved[open_file::piece_bytes];
    offset += count;
    return each.file.read_at(offset - count, saved, count, why) &&
           std::memcmp(piece, saved, count) == 0;
  };
  return text.read_pieces(0, length, why, compare);
}

bool flash::save(const open_file& text, std::uint32_t length, remark& why) const {
  slot_header header{.sequence = 1, .length = length};
  const slot* const current = newest();
  if (current != nullptr) {
    if (!current->file.sync(why)) {
      return false;
    }
    if (holds(*current, text, length, why) || why.error() != 0) {
      return why.error() == 0;
    }
    header.sequence = current->header.sequence + 1;
  }
  const slot& other = current == &slots_[0] ? slots_[1] : slots_[0];
  open_file target{other.file.path()};
  if (!target.open(folder_.descriptor(), other.name, O_WRONLY | O_CREAT, why)) {
    return false;
  }
  if (!fill(target, header, text, why)) {
    remark ignored;
    static_cast<void>(target.make_empty(ignored));
    return false;
  }
  return true;
}

bool flash::fill(const open_file& target, slot_header header, const open_file& text,
                 remark& why) const {
  crc32 sum = checksum_of(header);
  std::uint64_t offset = slot_header_bytes;
  const auto append = [&](const unsigned char* piece, std::size_t count) {
    sum.add(piece, count);
    offset += count;
    return target.write_at(offset - count, piece, count, why);
  };
  // Emptied first: until the header is written there are zeros in its place, and a header of which
  // only the front arrives is none.
  if (!target.make_empty(why) || !text.read_pieces(0, header.length, why, append) ||
      !target.sync(why) || !folder_.sync_names(why)) {
    return false;
  }
  header.checksum = sum.value();
  const slot_header_row row = to_row(header);
  return target.write_at(0, row.data(), row.size(), why) && target.sync(why);
}

bool flash::report_no_slot(remark& why) {
  is_empty_ = was_never_saved(slots_[0]) && was_never_saved(slots_[1]);
  char reason[200];
  std::snprintf(reason, sizeof reason, "nothing to read (%s: %s, %s: %s)", slots_[0].name,
                slots_[0].fault, slots_[1].name, slots_[1].fault);
  return why.about(folder_path_.text(), reason);
}

void flash::mention_broken(remark& why) const {
  for (const slot& each : slots_) {
    if (!each.whole() && !was_never_saved(each)) {
      char reason[200];
      std::snprintf(reason, sizeof reason, "%s; the other slot was read", each.fault);
      why.about(each.file.path(), reason);
    }
  }
}

bool flash::copy_into(const char* file, remark& why) {
  const slot* const current = newest();
  if (current == nullptr) {
    return report_no_slot(why);
  }
  replaced_file copy{file};
  std::uint64_t offset = 0;
  const auto append = [&](const unsigned char* piece, std::size_t count) {
    offset += count;
    return copy.write_at(offset - count, piece, count, why);
  };
  if (!copy.open(why) ||
      !current->file.read_pieces(slot_header_bytes, current->header.length, why, append) ||
      !copy.finish(why)) {
    return false;
  }
  mention_broken(why);
  return true;
}

}  // namespace

bool write_flash(const char* device_root, const char* file, remark& why) {
  open_file text{file};
  std::uint32_t length = 0;
  flash device{device_root};
  return open_text(text, length, why) && device.open_to_write(why) &&
         device.save(text, length, why);
}

flash_read read_flash(const char* device_root, const char* file, remark& why) {
  flash device{device_root};
  if (device.open_to_read(why) && device.copy_into(file, why)) {
    return flash_read::done;
  }
  return device.is_empty() ? flash_read::nothing_saved : flash_read::failed;
}

}  // namespace proreflax
