// The rules of the store once more, written the slow and obvious way: sections and entries in
// vectors, no hash, no ring, no record. The store must agree with it about every answer, every
// order and every byte of the export.
//
// A ring that starts at its head is a vector; the entry behind the cursor is the next index, and
// behind the last entry it is the end of the vector.
#ifndef PROREFLAX_TESTS_STORE_NAIVE_STORE_H
#define PROREFLAX_TESTS_STORE_NAIVE_STORE_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class naive_store {
 public:
  struct entry {
    std::string key;
    std::string value;
  };
  struct section {
    std::string name;
    std::vector<entry> entries;
    std::size_t cursor = 0;
  };

  bool loaded = false;
  bool has_cache = false;  // a section was loaded or found by name
  bool dirty = false;
  std::vector<section> sections;

  section* find(std::string_view name) {
    for (section& each : sections) {
      if (each.name == name) {
        return &each;
      }
    }
    return nullptr;
  }

  section& allocate(std::string_view name) {
    if (section* const known = find(name); known != nullptr) {
      return *known;
    }
    sections.push_back({std::string{name}, {}, 0});
    return sections.back();
  }

  /// The value, or the code.
  std::uint32_t get(std::string_view name, std::string_view key, std::string* value) {
    section* const known = find(name);
    if (known == nullptr) {
      return 209;
    }
    has_cache = true;
    const std::optional<std::size_t> at = place_of(*known, key);
    if (!at) {
      return 201;
    }
    known->cursor = *at;
    *value = known->entries[*at].value;
    return 0;
  }

  std::uint32_t set(std::string_view name, std::string_view key, std::string_view value) {
    section* const known = find(name);
    if (known == nullptr) {
      return 209;
    }
    has_cache = true;
    put(*known, key, value);
    dirty = true;
    return 0;
  }

  std::uint32_t load(std::string_view text) {
    *this = {};
    std::optional<std::string> current;
    while (!text.empty()) {
      const std::size_t end = text.find('\n');
      if (end == std::string_view::npos || !take_line(text.substr(0, end), current)) {
        *this = {};
        return 205;
      }
      text.remove_prefix(end + 1);
    }
    loaded = has_cache = current.has_value();
    return loaded ? 0 : 205;
  }

  std::string exported() const {
    std::string text;
    for (const section& each : sections) {
      text += "\n[" + each.name + "]\n";
      for (const entry& pair : each.entries) {
        text += pair.key + "=" + pair.value + "\n";
      }
    }
    return text;
  }

 private:
  static std::optional<std::size_t> place_of(const section& in, std::string_view key) {
    for (std::size_t at = 0; at < in.entries.size(); ++at) {
      if (in.entries[at].key == key) {
        return at;
      }
    }
    return std::nullopt;
  }

  static void put(section& in, std::string_view key, std::string_view value) {
    if (const std::optional<std::size_t> at = place_of(in, key); at) {
      in.entries[*at].value = value;
      in.cursor = *at;
      return;
    }
    in.cursor = in.entries.empty() ? 0 : in.cursor + 1;
    in.entries.insert(in.entries.begin() + static_cast<std::ptrdiff_t>(in.cursor),
                      {std::string{key}, std::string{value}});
  }

  /// A line without its line feed; false when it is malformed.
  bool take_line(std::string_view line, std::optional<std::string>& current) {
    if (line.empty()) {
      return true;
    }
    if (line.size() < 3 || line.find('\0') != std::string_view::npos) {
      return false;
    }
    if (line.front() == '[') {
      if (line.back() != ']' || line.size() - 2 > 24) {
        return false;
      }
      current = line.substr(1, line.size() - 2);
      allocate(*current);
      return true;
    }
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals < 1 || equals > 49 ||
        line.size() - equals - 1 > 199 || !current) {
      return false;
    }
    put(*find(*current), line.substr(0, equals), line.substr(equals + 1));
    return true;
  }
};

#endif
