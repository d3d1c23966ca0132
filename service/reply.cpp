#include "service/reply.h"

#include <proreflax/store.h>

#include <cstdio>
#include <cstring>

#include "store/ini_line.h"

namespace proreflax {
namespace {

static_assert(line_name_max == section_name_max && line_key_max == key_max &&
                  line_value_max == value_max,
              "clients may send exactly what the loader can read back");

/// The header of a message text, copied because the text may not be aligned.
struct text_header {
  std::int32_t reply_mtype;
  std::uint32_t op_result;
  std::uint16_t section_off;
  std::uint16_t key_off;
  std::uint16_t value_off;
  std::uint16_t value_len;
};
static_assert(sizeof(text_header) == text_header_bytes);
static_assert(offsetof(text_header, op_result) == offsetof(cfc_msg, op_result) - text_off);
static_assert(offsetof(text_header, section_off) == offsetof(cfc_msg, section_off) - text_off);
static_assert(offsetof(text_header, value_len) == offsetof(cfc_msg, value_len) - text_off);

/// A complete request: its header and its payload.
struct request {
  text_header header;
  const char* payload;
  std::size_t payload_bytes;

  /// The string at an offset of the payload; null when it does not end within the payload.
  const char* string_at(std::size_t offset) const {
    if (offset >= payload_bytes ||
        std::memchr(payload + offset, '\0', payload_bytes - offset) == nullptr) {
      return nullptr;
    }
    return payload + offset;
  }

  /// The value of a set. value_len includes its NUL, which must be the only one.
  const char* value() const {
    const char* const value = string_at(header.value_off);
    return value != nullptr && std::strlen(value) + 1 == header.value_len ? value : nullptr;
  }
};

/// Whether the loader accepts the line of this entry. It refuses a one-character key without a
/// value: if such a line were saved, the whole configuration could not be loaded at the next start.
bool loads_back(const char* key, const char* value) {
  char line[line_buffer_bytes];
  static_assert(sizeof line > key_max + 1 + value_max + 1);
  std::snprintf(line, sizeof line, "%s=%s\n", key, value);
  const ini_line entry = read_ini_line(line);
  return entry.error == line_error::none && entry.type == line_type::entry;
}

std::uint32_t add_app(const request& asked) {
  const char* const name = asked.string_at(asked.header.section_off);
  if (!is_section_name(name)) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  if ((g_config_mgmt.flags & CFG_LOADED) == 0) {
    return CFC_ERR_NO_SECTION;
  }
  return segment_alloc(name) == nullptr ? CFC_ERR_NO_MEMORY : CFC_OK;
}

std::uint32_t set_value(const request& asked) {
  const char* const section = asked.string_at(asked.header.section_off);
  const char* const key = asked.string_at(asked.header.key_off);
  const char* const value = asked.value();
  if (!is_section_name(section) || !is_key(key) || !is_value_len(cfc_value_len(value)) ||
      !loads_back(key, value)) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  return cfc_set_val(section, key, value);
}

/// Stores the value after the key, at the client's value_off; the client's record has value_room
/// there.
std::uint32_t get_value(const request& asked, reply& out, std::uint16_t& value_len) {
  const text_header& header = asked.header;
  const char* const section = asked.string_at(header.section_off);
  const char* const key = asked.string_at(header.key_off);
  if (!is_section_name(section) || !is_key(key) || header.value_off > asked.payload_bytes) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  char value[256];
  std::uint32_t length = 0;
  if (const std::uint32_t result = cfc_get_val(section, key, value, &length); result != CFC_OK) {
    return result;
  }
  if (length > value_room) {
    return CFC_ERR_NO_ROOM;
  }
  char* const payload_out = out.text + text_header_bytes;
  std::memcpy(payload_out, asked.payload, header.value_off);
  std::memcpy(payload_out + header.value_off, value, length);
  out.length = text_header_bytes + header.value_off + length;
  value_len = static_cast<std::uint16_t>(length);
  return CFC_OK;
}

std::uint32_t execute(const request& asked, reply& out, std::uint16_t& value_len) {
  switch (asked.header.op_result) {
    case CFC_OP_ADD_APP:
      return add_app(asked);
    case CFC_OP_SET:
      return set_value(asked);
    case CFC_OP_GET:
      return get_value(asked, out, value_len);
    case CFC_OP_FLUSH_ALL:
      out.before = effect::flush;
      return CFC_OK;
    case CFC_OP_TO_DEFAULT:
      out.before = effect::defaults;
      return CFC_OK;
    default:
      return CFC_ERR_BAD_ARGUMENT;
  }
}

}  // namespace

reply make_reply(const char* request_text, std::size_t length) {
  reply out;
  text_header header{};
  if (length < sizeof header.reply_mtype) {
    return out;
  }
  std::memcpy(&header, request_text, length < sizeof header ? length : sizeof header);
  // A client waits for its process id plus the bias; a lower number would be received by the
  // service as a request, or is not a valid message type.
  if (header.reply_mtype <= reply_type_bias) {
    return out;
  }
  out.type = header.reply_mtype;
  out.length = text_header_bytes;
  text_header reply_header = header;
  reply_header.op_result = CFC_ERR_BAD_ARGUMENT;
  reply_header.value_len = 0;
  if (length >= text_header_bytes && length <= request_text_max) {
    const request asked{header, request_text + text_header_bytes, length - text_header_bytes};
    reply_header.op_result = execute(asked, out, reply_header.value_len);
  }
  std::memcpy(out.text, &reply_header, sizeof reply_header);
  return out;
}

std::uint32_t result_of(const reply& reply) {
  std::uint32_t result = 0;
  std::memcpy(&result, reply.text + offsetof(text_header, op_result), sizeof result);
  return result;
}

void set_result(reply& reply, std::uint32_t result) {
  std::memcpy(reply.text + offsetof(text_header, op_result), &result, sizeof result);
}

}  // namespace proreflax
