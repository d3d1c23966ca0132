// Slot files are damaged at random. A read gives one of the saved texts or fails with a message and
// leaves no file; it does not fail while one slot is untouched. A save over the damage counts.
#include <algorithm>

#include "tests/endurance/flash_tool.h"
#include "tools/writeflash/flash_slots.h"

namespace endurance {
namespace {

constexpr double rounds_per_second = 500;

std::string slot_path(unsigned number) {
  return device_root::path(std::string{proreflax::flash_folder} + '/' +
                           proreflax::flash_slot_names[number]);
}

/// What two saves, one after the other, leave in the slots.
struct saved_pair {
  std::string texts[2];
  std::string slots[2];

  bool has(const std::string& text) const { return text == texts[0] || text == texts[1]; }
};

saved_pair save_two(const flash_tool& tool, dice& random, const report& found) {
  saved_pair both;
  for (std::string& text : both.texts) {
    text = any_text(random, random.any());
    if (tool.save(text) != 0) {
      found.violation("a save over whatever was there: %s", tool.message().c_str());
    }
  }
  for (unsigned i = 0; i < 2; ++i) {
    both.slots[i] = files::text_of(slot_path(i));
  }
  return both;
}

std::string damaged(std::string slot, dice& random) {
  const auto somewhere = [&] { return random.below(static_cast<unsigned>(slot.size())); };
  switch (random.below(6)) {
    case 0:
      for (unsigned flips = random.below(8) + 1; flips > 0; --flips) {
        slot[somewhere()] ^= static_cast<char>(1U << random.below(8));
      }
      return slot;
    case 1:
      slot[random.below(20)] = static_cast<char>(random.any());
      return slot;
    case 2:
      return slot.substr(0, somewhere());
    case 3:
      return slot + std::string(random.below(5000) + 1, static_cast<char>(random.any()));
    case 4: {
      const unsigned at = somewhere();
      return slot.replace(at, random.below(5000), std::string(random.below(5000), '\0'));
    }
    default:
      std::ranges::generate(slot, [&] { return static_cast<char>(random.any()); });
      return slot;
  }
}

/// Damages one slot or both, swaps them, or puts one in the place of the other.
void damage(const saved_pair& both, dice& random) {
  std::string slots[] = {both.slots[0], both.slots[1]};
  const unsigned one = random.below(2);
  switch (random.below(8)) {
    case 0:
      std::swap(slots[0], slots[1]);
      break;
    case 1:
      slots[one] = slots[1 - one];
      break;
    case 2:
    case 3:
      slots[1 - one] = damaged(slots[1 - one], random);
      [[fallthrough]];
    default:
      slots[one] = damaged(slots[one], random);
  }
  for (unsigned i = 0; i < 2; ++i) {
    files::write(slot_path(i), slots[i]);
  }
  if (random.one_in(16)) {
    std::filesystem::remove(slot_path(one));
  }
}

bool one_is_untouched(const saved_pair& both) {
  for (unsigned i = 0; i < 2; ++i) {
    const auto now = files::read(slot_path(i));
    if (now == both.slots[0] || now == both.slots[1]) {
      return true;
    }
  }
  return false;
}

struct counts {
  unsigned long reads = 0;
  unsigned long refusals = 0;
  unsigned long saves = 0;
};

void read_damaged(const flash_tool& tool, const saved_pair& both, const report& found,
                  counts& seen) {
  const bool readable = one_is_untouched(both);
  if (const auto now = tool.saved()) {
    ++seen.reads;
    if (!both.has(*now)) {
      found.violation("a read gives %zu bytes that were never saved", now->size());
    }
    return;
  }
  ++seen.refusals;
  if (readable) {
    found.violation("no text, with a whole slot there: %s", tool.message().c_str());
  }
  if (tool.message().empty() || files::read(tool.file())) {
    found.violation("a failed read leaves a file or no message");
  }
}

}  // namespace

void damaged_slots(const plan& planned, report& found) {
  prepare_device();
  const flash_tool tool;
  dice random{planned, 0};
  saved_pair both = save_two(tool, random, found);
  counts seen;
  unsigned long rounds = 0;
  for (const deadline over{planned.seconds};
       !over.passed() && rounds < planned.at_most(rounds_per_second); ++rounds) {
    damage(both, random);
    read_damaged(tool, both, found, seen);
    if (random.one_in(10)) {
      both = save_two(tool, random, found);
      seen.saves += 2;
      if (tool.saved() != both.texts[1]) {
        found.violation("a save over damaged slots is not there");
      }
    }
  }
  found.figure(rounds, "times damaged");
  found.figure(seen.reads, "saved texts read");
  found.figure(seen.refusals, "reads refused");
  found.figure(seen.saves, "saves over damage");
}

}  // namespace endurance
