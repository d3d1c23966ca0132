// Requests that concern the whole store: register an application, flush, reset to defaults. Their
// records have no room for a value, so the reply is not longer than the request.
#include <cstring>

#include "transport/lock.h"
#include "transport/message.h"
#include "transport/names.h"

namespace proreflax {
namespace {

std::uint32_t send_without_payload(opcode operation) {
  const owned_msg msg{cfc_msg_alloc(0)};
  if (msg == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  msg->op_result = operation;
  return send_request(*msg);
}

}  // namespace
}  // namespace proreflax

using namespace proreflax;

std::uint32_t cfc_add_app_sem(const char* name) {
  if (!is_section_name(name)) {
    return CFC_ERR_BAD_ARGUMENT;
  }
  const auto name_bytes = static_cast<std::uint16_t>(cfc_section_len(name));
  const owned_msg msg{cfc_msg_alloc(name_bytes)};
  if (msg == nullptr) {
    return CFC_ERR_NO_MEMORY;
  }
  msg->op_result = CFC_OP_ADD_APP;
  std::memcpy(payload(*msg), name, name_bytes);
  msg->used_len = static_cast<std::uint16_t>(msg->used_len + name_bytes);
  return send_request(*msg);
}

std::uint32_t cfc_add_app_nosem(const char* name) {
  return with_lock([=] { return cfc_add_app_sem(name); });
}

std::uint32_t cfc_flush_all_sem() {
  return send_without_payload(CFC_OP_FLUSH_ALL);
}

std::uint32_t cfc_flush_all_nosem() {
  return with_lock(cfc_flush_all_sem);
}

std::uint32_t cfc_to_default() {
  return with_lock([] { return send_without_payload(CFC_OP_TO_DEFAULT); });
}
