#include "transport/raw_value.h"

#include <cstring>

#include "transport/lock.h"
#include "transport/message.h"
#include "transport/names.h"

namespace proreflax {
namespace {

/// An entry's section and key, validated once; the lengths are the validators' results.
struct entry_name {
  entry_name(const char* section_name, const char* entry_key)
      : section{section_name},
        key{entry_key},
        section_bytes{cfc_section_len(section_name)},
        key_bytes{cfc_key_len(entry_key)} {}

  bool is_valid() const {
    return is_name_len(section_bytes, section_name_max) && is_name_len(key_bytes, key_max);
  }

  const char* section;
  const char* key;
  std::int32_t section_bytes;
  std::int32_t key_bytes;
};

/// A request with section and key packed and room for a value after them; null without memory.
/// value_off points to the end of the key even if no value follows.
owned_msg request_for(opcode operation, const entry_name& name) {
  const auto section_bytes = static_cast<std::uint16_t>(name.section_bytes);
  const auto key_bytes = static_cast<std::uint16_t>(name.key_bytes);
  const auto names_bytes = static_cast<std::uint16_t>(section_bytes + key_bytes);
  owned_msg msg{cfc_msg_alloc(names_bytes + value_room)};
  if (msg != nullptr) {
    msg->op_result = operation;
    msg->key_off = section_bytes;
    msg->value_off = names_bytes;
    msg->used_len = static_cast<std::uint16_t>(msg->used_len + names_bytes);
    std::memcpy(payload(*msg), name.section, section_bytes);
    std::memcpy(payload(*msg) + section_bytes, name.key, key_bytes);
  }
  return msg;
}

bool value_is_inside(const cfc_msg& reply) {
  return sizeof(cfc_msg) + reply.value_off + reply.value_len <= reply.capacity;
}

}  // namespace

std::uint32_t __cfc_get_raw_sem(const char* section, const char* key, char* out,
                                std::int32_t* length) {
  const entry_name name{section, key};
  if (!name.is_valid() || out == nullptr || length == nullptr || *length < 1) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  const owned_msg msg = request_for(CFC_OP_GET, name);
  if (msg == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  if (const std::uint32_t result = send_request(*msg, text_header_bytes); result != CFC_OK) {
    return result;
  }
  if (*length < msg->value_len) {
    return CFC_ERR_NO_ROOM;
  }
  if (!value_is_inside(*msg)) {
    return CFC_ERR_BAD_VALUE;
  }
  std::memcpy(out, payload(*msg) + msg->value_off, msg->value_len);
  *length = msg->value_len;
  return CFC_OK;
}

std::uint32_t __cfc_get_raw_nosem(const char* section, const char* key, char* out,
                                  std::int32_t* length) {
  return with_lock([=] { return __cfc_get_raw_sem(section, key, out, length); });
}

std::uint32_t __cfc_set_raw_sem(const char* section, const char* key, const char* value,
                                std::int32_t length) {
  const entry_name name{section, key};
  if (!name.is_valid() || value == nullptr || !is_value_len(length)) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  const owned_msg msg = request_for(CFC_OP_SET, name);
  if (msg == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  const auto value_bytes = static_cast<std::uint16_t>(length + 1);
  std::memcpy(payload(*msg) + msg->value_off, value, static_cast<std::size_t>(length));
  payload(*msg)[msg->value_off + length] = '\0';
  msg->value_len = value_bytes;
  msg->used_len = static_cast<std::uint16_t>(msg->used_len + value_bytes);
  return send_request(*msg);
}

std::uint32_t __cfc_set_raw_nosem(const char* section, const char* key, const char* value,
                                  std::int32_t length) {
  return with_lock([=] { return __cfc_set_raw_sem(section, key, value, length); });
}

}  // namespace proreflax
