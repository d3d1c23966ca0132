#include "tools/cfc/firmware/write.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "firmware/flash_device.h"
#include "firmware/image_parts.h"
#include "settings/held_signals.h"
#include "settings/message_text.h"
#include "settings/result_text.h"

namespace cfc {

using namespace proreflax;
using namespace proreflax::settings;

namespace {

class open_flash {
 public:
  open_flash() : descriptor_{flash_open()} {}
  ~open_flash() {
    if (is_open()) {
      flash_close(descriptor_);
    }
  }
  open_flash(const open_flash&) = delete;
  open_flash& operator=(const open_flash&) = delete;

  bool is_open() const { return descriptor_ >= 0; }
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

/// Asks the flash about each kernel and ramdisk of an image.
class planner {
 public:
  planner(const open_flash& flash, std::uint32_t base) : flash_{flash}, base_{base} {}

  /// The code that the device would give for want of a region, or of room in it.
  std::uint32_t add(const image_view& image) {
    const flash_contents contents = contents_of(image.bytes);
    flash_region_req region{};
    region.kind = contents.region_kind;
    if (contents.is_nothing()) {
      return CFC_OK;
    }
    if (flash_get_region(flash_.descriptor(), &region) != 1) {
      return CFC_ERR_FW_REGION;
    }
    if (region.size < contents.length) {
      return CFC_ERR_FW_TOO_BIG;
    }
    writes_.push_back({&image, contents.data, contents.length, contents.region_kind, region.address,
                       region.size, region.address - base_});
    return CFC_OK;
  }

  std::vector<planned_write> take() { return std::move(writes_); }

 private:
  const open_flash& flash_;
  std::uint32_t base_;
  std::vector<planned_write> writes_;
};

flash_plan refused(std::uint32_t code) {
  return {.writes = {}, .code = code, .sentence = in_words(code, result_sentence(code))};
}

/// What a part is called: the whole image has no place.
std::string place_of(const planned_write& write) {
  return write.image->place.empty() ? "image" : write.image->place;
}

std::string show(const planned_write& write) {
  return place_of(write) + ": " + show_image(*write.image) + ": " + std::to_string(write.length) +
         " bytes to " + show_word(write.address) + ", region " + std::to_string(write.region_kind) +
         " of " + std::to_string(write.region_size) + " bytes";
}

void complain(std::string_view sentence, const output& out) {
  out.complain(std::string{"cfc: firmware write: "}.append(sentence));
}

void print(const flash_plan& plan, output& out) {
  for (const planned_write& each : plan.writes) {
    out.result("  " + show(each) +
               (plan.is_overwritten(each) ? "; a later part takes its place" : ""));
  }
  if (plan.writes.empty()) {
    out.result("  nothing to write: there is no data");
  }
}

/// Asks on the terminal.
bool is_confirmed(const output& out) {
  if (isatty(STDIN_FILENO) == 0) {
    complain("there is no terminal to ask on; nothing was written (--yes does not ask)", out);
    return false;
  }
  out.complain("Write this to flash? What is there now is lost. [y/N]");
  std::array<char, 16> answer{};
  const bool answered =
      std::fgets(answer.data(), static_cast<int>(answer.size()), stdin) != nullptr;
  const std::string_view text{answer.data()};
  if (answered && (text == "y\n" || text == "yes\n")) {
    return true;
  }
  complain("nothing was written", out);
  return false;
}

exit_status verify(const flash_plan& plan, output& out) {
  exit_status status = exit_status::done;
  for (const planned_write& each : plan.writes) {
    if (plan.is_overwritten(each)) {
      continue;
    }
    const comparison result = compare_with_flash(each);
    out.result("  " + place_of(each) + ": " + result.sentence);
    if (result.found == comparison::state::differs) {
      complain(place_of(each) + ": " + result.sentence, out);
      status = exit_status::failed;
    }
  }
  return status;
}

exit_status write_and_verify(const image_view& image, const flash_plan& plan, output& out) {
  const held_signals until_flash_is_whole;
  out.result("2/3 write: this may take minutes; leave the power on");
  const std::uint32_t code = upgrade_kernel(image.bytes, static_cast<std::int32_t>(image.size), 0);
  if (code != CFC_OK) {
    complain(in_words(code, result_sentence(code)) +
                 "; the flash may hold a part of the image: write a whole one before a restart",
             out);
    return status_of(code);
  }
  out.result("3/3 verify");
  return verify(plan, out);
}

std::string not_readable(std::string_view why) {
  return std::string{"written, but not verified: the flash cannot be read back: "}.append(why);
}

/// Reads a stretch as a whole; false with errno set, 0 where the device simply ends.
bool read_whole(int descriptor, std::uint8_t* bytes, std::size_t length) {
  while (length > 0) {
    errno = 0;
    const ssize_t count = read(descriptor, bytes, length);
    if (count <= 0) {
      return false;
    }
    bytes += count;
    length -= static_cast<std::size_t>(count);
  }
  return true;
}

}  // namespace

bool flash_plan::is_overwritten(const planned_write& write) const {
  const auto next = writes.begin() + (&write - writes.data()) + 1;
  return std::any_of(next, writes.end(), [&](const planned_write& each) {
    return each.region_kind == write.region_kind;
  });
}

flash_plan plan_writes(const image_view& image) {
  if (image.check == CFC_ERR_FW_TOO_BIG) {
    return refused(CFC_ERR_FW_TOO_BIG);  // said before the device is opened
  }
  const open_flash flash;
  if (!flash.is_open()) {
    const std::string why = std::strerror(errno);
    flash_plan plan = refused(CFC_ERR_FW_OPEN);
    plan.sentence += " (/dev/flash: " + why + ")";
    return plan;
  }
  const std::uint32_t base = flash_get_base(flash.descriptor());
  if (base == flash_no_base) {
    return refused(CFC_ERR_FW_BASE);
  }
  planner plan{flash, base};
  const auto fault = first_fault(image, [&](const image_view& each) { return plan.add(each); });
  return {.writes = plan.take(),
          .code = fault ? fault->code : std::uint32_t{CFC_OK},
          .sentence = fault ? fault->in_words() : std::string{}};
}

comparison compare_with_flash(const planned_write& write) {
  using state = comparison::state;
  const open_flash flash;
  if (!flash.is_open() || flash_seek(flash.descriptor(), write.offset) == -1) {
    return {state::not_readable, not_readable(std::strerror(errno))};
  }
  std::array<std::uint8_t, 4096> piece{};
  for (std::size_t done = 0; done < write.length;) {
    const std::size_t count = std::min(piece.size(), write.length - done);
    if (!read_whole(flash.descriptor(), piece.data(), count)) {
      return {state::not_readable, not_readable(errno == 0 ? "it ends" : std::strerror(errno))};
    }
    const std::uint8_t* const begin = piece.data();
    const std::uint8_t* const end = begin + count;
    const std::uint8_t* const differing = std::mismatch(begin, end, write.data + done).first;
    if (differing != end) {
      const auto at = done + static_cast<std::size_t>(differing - begin);
      return {state::differs, "the flash differs from what was written, first at byte " +
                                  std::to_string(at) + " of the region"};
    }
    done += count;
  }
  return {state::same, "read back, the same"};
}

exit_status run(const firmware_write_command& command, output& out) {
  const loaded_file file = load_file(command.file);
  if (!file.failure.empty()) {
    complain(file.failure, out);
    return exit_status::failed;
  }
  const image_view image = look_at_image(file.bytes);
  const flash_plan plan = plan_writes(image);
  if (plan.code != CFC_OK) {
    complain(printable(command.file) + ": " + plan.sentence + "; nothing was written", out);
    return status_of(plan.code);
  }
  out.result("1/3 check: " + printable(command.file) + " is whole, and goes to flash like this:");
  print(plan, out);
  return command.yes || is_confirmed(out) ? write_and_verify(image, plan, out)
                                          : exit_status::failed;
}

}  // namespace cfc
