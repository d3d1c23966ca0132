#include "tests/support/power_cut.h"

#include <algorithm>
#include <filesystem>
#include <numeric>
#include <random>

#include "tests/support/files.h"

namespace fs = std::filesystem;

namespace power_cut {
namespace {

using effect_list = std::vector<faults::disk_effect>;
using kind = faults::disk_effect::kind;

void write_into(std::string& content, std::size_t offset, const std::string& bytes) {
  if (content.size() < offset + bytes.size()) {
    content.resize(offset + bytes.size(), '\0');
  }
  content.replace(offset, bytes.size(), bytes);
}

void apply(std::string& content, const faults::disk_effect& change) {
  if (change.what == kind::emptied) {
    content.clear();
  } else {
    write_into(content, static_cast<std::size_t>(change.offset), change.bytes);
  }
}

/// What may have arrived of one write that was on its way; all front parts of a short one.
std::vector<faults::disk_effect> partly(const faults::disk_effect& change) {
  std::vector<faults::disk_effect> parts;
  const std::size_t size = change.bytes.size();
  std::set<std::size_t> fronts{1, size / 2, 512 % (size + 1),
                               size - std::min<std::size_t>(size, 1)};
  for (std::size_t front = 0; size <= 64 && front < size; ++front) {
    fronts.insert(front);
  }
  for (const std::size_t front : fronts) {
    parts.push_back(change);
    parts.back().bytes.resize(front);
  }
  parts.push_back(change);
  parts.back().bytes.assign(size, '\0');
  return parts;
}

/// The contents after these changes in this order, each of them whole or, in its turn, in part.
void add_contents(std::set<std::string>& all, const std::string& synced,
                  const std::vector<const faults::disk_effect*>& order) {
  std::string content = synced;
  std::vector<std::string> before{content};
  for (const auto* each : order) {
    apply(content, *each);
    before.push_back(content);
  }
  all.insert(content);
  for (std::size_t torn = 0; torn < order.size(); ++torn) {
    if (order[torn]->what != kind::written) {
      continue;
    }
    for (const auto& part : partly(*order[torn])) {
      std::string with_part = before[torn];
      apply(with_part, part);
      for (std::size_t later = torn + 1; later < order.size(); ++later) {
        apply(with_part, *order[later]);
      }
      all.insert(with_part);
    }
  }
}

std::vector<const faults::disk_effect*> chosen(const effect_list& changes, unsigned kept) {
  std::vector<const faults::disk_effect*> order;
  for (std::size_t i = 0; i < changes.size(); ++i) {
    if ((kept >> i & 1U) != 0) {
      order.push_back(&changes[i]);
    }
  }
  return order;
}

// ------------------------------------------------------------------------------------------------

/// A disk under way: what is synced, and what is not.
struct disk {
  struct file {
    bool folder = false;
    std::string synced;
    effect_list changes;
  };
  std::map<int, file> files;
  std::map<std::string, int> names;         // as the running system sees them
  std::map<std::string, int> synced_names;  // as they survive
  struct name_change {
    kind what;
    std::string path;
    std::string to;
    int file;
  };
  std::vector<name_change> name_changes;
};

std::string folder_of(const std::string& path) {
  return fs::path{path}.parent_path();
}

void change(std::map<std::string, int>& names, const disk::name_change& each) {
  if (each.what == kind::removed || each.what == kind::renamed) {
    names.erase(each.path);
  }
  if (each.what != kind::removed) {
    names[each.what == kind::renamed ? each.to : each.path] = each.file;
  }
}

void make(disk& on, const faults::disk_effect& effect) {
  const int id = static_cast<int>(on.files.size());
  on.files[id].folder = effect.what == kind::folder_made;
  on.name_changes.push_back({effect.what, effect.path, "", id});
  change(on.names, on.name_changes.back());
}

void sync(disk& on, const std::string& path) {
  const auto found = on.names.find(path);
  if (found != on.names.end() && !on.files[found->second].folder) {
    disk::file& file = on.files[found->second];
    for (const auto& each : file.changes) {
      apply(file.synced, each);
    }
    file.changes.clear();
    return;
  }
  auto& waiting = on.name_changes;
  const auto elsewhere =
      std::stable_partition(waiting.begin(), waiting.end(),
                            [&](const auto& each) { return folder_of(each.path) != path; });
  std::for_each(elsewhere, waiting.end(), [&](const auto& each) { change(on.synced_names, each); });
  waiting.erase(elsewhere, waiting.end());
}

void play(disk& on, const faults::disk_effect& effect) {
  switch (effect.what) {
    case kind::folder_made:
    case kind::file_made:
      return make(on, effect);
    case kind::renamed:
    case kind::removed:
      on.name_changes.push_back({effect.what, effect.path, effect.to, on.names.at(effect.path)});
      return change(on.names, on.name_changes.back());
    case kind::emptied:
    case kind::written:
      return on.files[on.names.at(effect.path)].changes.push_back(effect);
    case kind::synced:
      return sync(on, effect.path);
  }
}

disk started_with(const tree& before) {
  disk on;
  for (const auto& [path, content] : before) {
    const int id = static_cast<int>(on.files.size());
    on.files[id] = {!content.has_value(), content.value_or(""), {}};
    on.names[path] = id;
  }
  on.synced_names = on.names;
  return on;
}

disk played(const tree& before, const effect_list& effects) {
  disk on = started_with(before);
  for (const auto& each : effects) {
    play(on, each);
  }
  return on;
}

/// The names that can be reached: a file is gone with its folder.
bool reachable(const std::map<std::string, int>& names, const std::string& path,
               const std::string& top) {
  return path == top || (names.count(path) != 0 && reachable(names, folder_of(path), top));
}

/// All ways to fill the files that these names reach.
void add_trees(std::set<tree>& all, const disk& on, const std::map<std::string, int>& names,
               const std::string& top, std::map<int, std::set<std::string>>& contents) {
  std::vector<tree> trees{{}};
  for (const auto& [path, id] : names) {
    if (!reachable(names, path, top)) {
      continue;
    }
    const disk::file& file = on.files.at(id);
    if (file.folder) {
      for (tree& each : trees) {
        each[path] = std::nullopt;
      }
      continue;
    }
    if (contents.count(id) == 0) {
      contents[id] = possible_contents(file.synced, file.changes);
    }
    std::vector<tree> filled;
    for (const tree& each : trees) {
      for (const std::string& content : contents[id]) {
        filled.push_back(each);
        filled.back()[path] = content;
      }
    }
    trees = std::move(filled);
  }
  all.insert(trees.begin(), trees.end());
}

}  // namespace

tree tree_below(const std::string& folder) {
  tree all{{folder, std::nullopt}};
  for (const auto& each : fs::recursive_directory_iterator{folder}) {
    all[each.path()] = each.is_directory() ? std::nullopt : files::read(each.path());
  }
  return all;
}

void put_back(const std::string& folder, const tree& files) {
  fs::remove_all(folder);
  for (const auto& [path, content] : files) {
    if (!content) {
      fs::create_directories(path);
    } else {
      std::ofstream{path, std::ios::binary} << *content;
    }
  }
}

std::set<std::string> possible_contents(const std::string& synced, const effect_list& changes) {
  std::set<std::string> all;
  constexpr std::size_t few = 4;
  std::mt19937 random{1};
  for (unsigned kept = 0; kept < 1U << changes.size(); ++kept) {
    auto order = chosen(changes, kept);
    if (changes.size() <= few) {
      do {
        add_contents(all, synced, order);
      } while (std::next_permutation(order.begin(), order.end()));
      continue;
    }
    add_contents(all, synced, order);
    std::shuffle(order.begin(), order.end(), random);
    add_contents(all, synced, order);
  }
  return all;
}

tree seen_after(const tree& before, const effect_list& effects) {
  const disk on = played(before, effects);
  tree all;
  for (const auto& [path, id] : on.names) {
    const disk::file& file = on.files.at(id);
    std::string content = file.synced;
    for (const auto& each : file.changes) {
      apply(content, each);
    }
    all[path] = file.folder ? std::nullopt : std::optional{content};
  }
  return all;
}

std::set<tree> states_after(const tree& before, const effect_list& effects) {
  const disk on = played(before, effects);
  std::set<tree> all;
  std::map<int, std::set<std::string>> contents;
  for (unsigned kept = 0; kept < 1U << on.name_changes.size(); ++kept) {
    auto names = on.synced_names;
    for (std::size_t i = 0; i < on.name_changes.size(); ++i) {
      if ((kept >> i & 1U) != 0) {
        change(names, on.name_changes[i]);
      }
    }
    add_trees(all, on, names, before.begin()->first, contents);
  }
  return all;
}

}  // namespace power_cut
