// The name that a person most likely meant: for "did you mean" in messages.
#ifndef PROREFLAX_SETTINGS_NEAREST_NAME_H
#define PROREFLAX_SETTINGS_NEAREST_NAME_H

#include <cstddef>
#include <string_view>

namespace proreflax::settings {

/// The edit distance of two names: how many insertions, deletions, replacements and swaps of
/// neighbours make one the other. Case counts.
std::size_t edit_distance(std::string_view one, std::string_view other);

/// Keeps the nearest of the names that it is offered, the first of several.
class nearest_name {
 public:
  /// `word` must outlive this.
  explicit nearest_name(std::string_view word);

  void offer(std::string_view name);

  /// Empty when none was near: a third of the word's characters may differ, and at least one.
  std::string_view name() const { return name_; }

 private:
  std::string_view word_;
  std::string_view name_;
  std::size_t limit_;
};

}  // namespace proreflax::settings

#endif
