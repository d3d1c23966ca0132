// What a disk may hold after the power was cut.
//
// Plays the calls that faults::note_effects() noted on a disk that keeps only what was synced, and
// tells every state that it may come back with. Of what was not synced
// - each write may be lost, kept, torn (only a front part of it arrived) or there as zeros (the
//   size grew, the data never came), and they may have reached the disk in any order;
// - each name made, moved or removed in a folder may be lost or kept.
// A sync of a file holds for its bytes, that of a folder for the names in it.
#ifndef PROREFLAX_TESTS_SUPPORT_POWER_CUT_H
#define PROREFLAX_TESTS_SUPPORT_POWER_CUT_H

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/faults.h"

namespace power_cut {

/// Files by path, with what they hold; nullopt: a folder.
using tree = std::map<std::string, std::optional<std::string>>;

/// Everything below a folder, and the folder itself.
tree tree_below(const std::string& folder);

/// Removes all below a folder and puts these files there.
void put_back(const std::string& folder, const tree& files);

/// What a file may hold when these changes to it were not synced. All orders of up to four changes
/// are told; of more, the order that was, and a sample of others.
std::set<std::string> possible_contents(const std::string& synced,
                                        const std::vector<faults::disk_effect>& changes);

/// What a system that runs on sees behind these effects, synced or not.
tree seen_after(const tree& before, const std::vector<faults::disk_effect>& effects);

/// Every state that a disk may come back with when it held `before`, all synced, and the power is
/// cut behind these effects.
std::set<tree> states_after(const tree& before, const std::vector<faults::disk_effect>& effects);

}  // namespace power_cut

#endif
