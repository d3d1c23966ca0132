#include "transport/message.h"

#include <proreflax/result.h>
#include <sys/msg.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "transport/lock.h"

namespace proreflax {

cfc_msg* cfc_msg_alloc(std::uint32_t payload_bytes) {
  const auto size = static_cast<std::uint16_t>(payload_bytes + sizeof(cfc_msg));
  if (size < sizeof(cfc_msg)) {
    return nullptr;
  }
  auto* msg = static_cast<cfc_msg*>(std::malloc(size));
  if (msg != nullptr) {
    std::memset(msg, 0, size);
    msg->capacity = size;
    msg->used_len = sizeof(cfc_msg);
  }
  return msg;
}

std::uint32_t cfc_exchange(cfc_msg* msg) {
  msg->mtype = request_type;
  msg->reply_mtype = getpid() + reply_type_bias;
  if (msgsnd(g_cfc_msq_id, &msg->mtype, msg->used_len - text_off, 0) != 0) {
    const int error = errno;
    std::printf("msq_id=%d, mtype=%d, real_len=%d\n", g_cfc_msq_id, static_cast<int>(msg->mtype),
                static_cast<int>(msg->used_len));
    return static_cast<std::uint32_t>(error);
  }
  // No time limit and no truncation flag, on purpose: a reply that is too long stays on the queue.
  const ssize_t received =
      msgrcv(g_cfc_msq_id, &msg->mtype, msg->capacity - text_off, msg->reply_mtype, 0);
  if (received < 0) {
    return static_cast<std::uint32_t>(errno);
  }
  return static_cast<std::size_t>(received) < text_header_bytes ? CFC_ERR_BAD_VALUE : CFC_OK;
}

std::uint32_t ask(cfc_msg& msg) {
  const std::uint32_t result = cfc_exchange(&msg);
  return result == CFC_OK ? msg.op_result : result;
}

}  // namespace proreflax
