// Configurations like that of the device: its section names, its keys, values of the types that it
// stores.
#ifndef PROREFLAX_BENCH_DEVICE_TEXT_H
#define PROREFLAX_BENCH_DEVICE_TEXT_H

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

inline constexpr std::size_t device_section_count = 46;
inline constexpr std::size_t many_section_count = 2000;
inline constexpr std::size_t entries_per_section = 24;

struct entry {
  std::string key;
  std::string value;
};

struct section {
  std::string name;
  std::vector<entry> entries;
};

/// As many sections as the device has, all with the same number of entries.
std::vector<section> device_sections();

/// Far more than the device has: numbers are added to their names.
std::vector<section> many_sections();

/// The sections of the device's factory file, a few large and many small.
std::vector<section> factory_sections();

/// A file of these sections as INI text, for as long as the object lives.
class text_file {
 public:
  explicit text_file(const std::vector<section>& sections);
  ~text_file();
  text_file(const text_file&) = delete;
  text_file& operator=(const text_file&) = delete;

  const char* path() const { return path_.c_str(); }

 private:
  std::string path_;
};

}  // namespace bench

#endif
