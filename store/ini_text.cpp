#include "store/ini_text.h"

#include <stdio_ext.h>

#include <cstring>
#include <memory>

#include "store/ini_line.h"
#include "store/section_store.h"

namespace proreflax {
namespace {

struct close_file {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using open_file = std::unique_ptr<std::FILE, close_file>;

/// Adds entries to a store that may already have contents: searches for each name and key.
struct searching_loader {
  cfg_segment* add_section(const char* name) { return g_config_mgmt.cache = segment_alloc(name); }

  std::uint32_t add_item(const char* key, const char* value, std::uint32_t /*value_length*/) {
    return item_set(g_config_mgmt.cache, key, value);
  }
};

/// Uses a bulk_loader for a file, a searching_loader for a single line.
template <typename Loader>
std::uint32_t add_line(Loader& loader, char* text) {
  const ini_line line = read_ini_line(text);
  if (line.error != line_error::none) {
    return CFC_ERR_BAD_VALUE;
  }
  switch (line.type) {
    case line_type::empty:
      return CFC_OK;
    case line_type::header:
      return loader.add_section(line.name) == nullptr ? CFC_ERR_NO_MEMORY : CFC_OK;
    case line_type::entry:
      break;
  }
  if (g_config_mgmt.cache == nullptr) {
    return CFC_ERR_BAD_VALUE;
  }
  // An entry for which no memory is left is omitted, and the load continues with the next line.
  static_cast<void>(
      loader.add_item(line.key, line.value, static_cast<std::uint32_t>(line.value_length)));
  return CFC_OK;
}

std::uint32_t load_lines(std::FILE* file) {
  bulk_loader loader;
  char line[line_buffer_bytes];
  while (std::fgets(line, sizeof line, file) != nullptr) {
    if (const std::uint32_t result = add_line(loader, line); result != CFC_OK) {
      return result;
    }
  }
  // A read error counts as the end of the file; a file without a section counts as malformed.
  return g_config_mgmt.cache == nullptr ? CFC_ERR_BAD_VALUE : CFC_OK;
}

/// One line of the export, with room for the longest line that one-byte lengths allow.
class export_line {
 public:
  void add(char c) { bytes_[length_++] = c; }

  void add(const char* string, std::uint8_t length) {
    std::memcpy(bytes_ + length_, string, length);
    length_ += length;
  }

  bool write_to(std::FILE* stream) const {
    return std::fwrite(bytes_, 1, length_, stream) == length_;
  }

 private:
  char bytes_[255 + 1 + 255 + 1];
  std::size_t length_ = 0;
};

bool export_header(const cfg_segment& section, std::FILE* stream) {
  export_line line;
  line.add('\n');
  line.add('[');
  line.add(cfg_segment_name(&section), section.name_len);
  line.add(']');
  line.add('\n');
  return line.write_to(stream);
}

bool export_item(const cfg_item& item, std::FILE* stream) {
  export_line line;
  line.add(cfg_item_key(&item), item.key_len);
  line.add('=');
  line.add(cfg_item_value(&item), item.val_len);
  line.add('\n');
  return line.write_to(stream);
}

bool export_section(const cfg_segment& section, std::FILE* stream) {
  if (!export_header(section, stream)) {
    return false;
  }
  const cfg_item* item = section.head;
  if (item == nullptr) {
    return true;
  }
  do {
    if (!export_item(*item, stream)) {
      return false;
    }
    item = item->next;
  } while (item != section.head);
  return true;
}

}  // namespace

std::uint32_t config_parse_line(char* line) {
  searching_loader loader;
  return add_line(loader, line);
}

std::uint32_t config_load_file(const char* path) {
  config_free_all(&g_config_mgmt);
  const open_file file{std::fopen(path, "r")};
  if (file == nullptr) {
    return CFC_ERR_NO_FILE;
  }
  __fsetlocking(file.get(), FSETLOCKING_BYCALLER);  // no other thread uses the stream
  const std::uint32_t result = load_lines(file.get());
  if (result != CFC_OK) {
    config_free_all(&g_config_mgmt);
    return result;
  }
  g_config_mgmt.flags = CFG_INITIALIZED | CFG_LOADED;
  return CFC_OK;
}

std::uint32_t config_export(const config_mgmt* root, std::FILE* stream) {
  for (const cfg_segment* section = root->first; section != nullptr; section = section->list_next) {
    if (!export_section(*section, stream)) {
      return CFC_ERR_WRITE;
    }
  }
  // A full disk is often detected only when the stream's buffer is flushed.
  if (std::fflush(stream) != 0) {
    return CFC_ERR_WRITE;
  }
  std::printf(" export file oK....\n");
  return CFC_OK;
}

}  // namespace proreflax
