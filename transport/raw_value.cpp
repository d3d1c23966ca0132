#include "transport/raw_value.h"

#include <cstring>

#include "transport/lock.h"
#include "transport/message.h"
#include "transport/names.h"

namespace proreflax {
namespace {

/// A request with section and key packed and room for a value behind them; null without memory.
/// value_off points behind the key also where no value follows.
owned_msg request_for(opcode operation, const char* section, const char* key) {
  const auto section_bytes = static_cast<std::uint16_t>(cfc_section_len(section));
  const auto key_bytes = static_cast<std::uint16_t>(cfc_key_len(key));
  const auto names_bytes = static_cast<std::uint16_t>(section_bytes + key_bytes);
  owned_msg msg{cfc_msg_alloc(names_bytes + value_room)};
  if (msg != nullptr) {
    msg->op_result = operation;
    msg->key_off = section_bytes;
    msg->value_off = names_bytes;
    msg->used_len = static_cast<std::uint16_t>(msg->used_len + names_bytes);
    std::memcpy(payload(*msg), section, section_bytes);
    std::memcpy(payload(*msg) + section_bytes, key, key_bytes);
  }
  return msg;
}

bool value_lies_in(const cfc_msg& reply) {
  return sizeof(cfc_msg) + reply.value_off + reply.value_len <= reply.capacity;
}

}  // namespace

std::uint32_t __cfc_get_raw_sem(const char* section, const char* key, char* out,
                                std::int32_t* length) {
  if (!is_section_name(section) || !is_key(key) || out == nullptr || length == nullptr ||
      *length < 1) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  const owned_msg msg = request_for(CFC_OP_GET, section, key);
  if (msg == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  if (const std::uint32_t result = ask(*msg); result != CFC_OK) {
    return result;
  }
  if (*length < msg->value_len) {
    return CFC_ERR_NO_ROOM;
  }
  if (!value_lies_in(*msg)) {
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
  if (!is_section_name(section) || !is_key(key) || value == nullptr || !is_value_len(length)) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  const owned_msg msg = request_for(CFC_OP_SET, section, key);
  if (msg == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  const auto value_bytes = static_cast<std::uint16_t>(length + 1);
  std::memcpy(payload(*msg) + msg->value_off, value, static_cast<std::size_t>(length));
  payload(*msg)[msg->value_off + length] = '\0';
  msg->value_len = value_bytes;
  msg->used_len = static_cast<std::uint16_t>(msg->used_len + value_bytes);
  return ask(*msg);
}

std::uint32_t __cfc_set_raw_nosem(const char* section, const char* key, const char* value,
                                  std::int32_t length) {
  return with_lock([=] { return __cfc_set_raw_sem(section, key, value, length); });
}

}  // namespace proreflax
