#include "transport/message.h"

#include <proreflax/result.h>
#include <sys/msg.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "transport/lock.h"

namespace proreflax {
namespace {

/// Replies that have not been received yet because a signal interrupted the receive: how many, on
/// which queue and with which message type. They do not concern a forked child, whose type differs,
/// or a new queue: the replies were removed with the old one. A service may also drop a reply, so
/// only a few exchanges look for them.
struct pending_replies {
  int queue_id;
  std::int32_t type;
  unsigned count;
  unsigned attempts_left;

  bool are_for(std::int32_t reply_type) const {
    return count > 0 && attempts_left > 0 && type == reply_type && queue_id == g_cfc_msq_id;
  }
};

constexpr unsigned removal_attempts = 16;

pending_replies pending;

void add_pending_reply(std::int32_t reply_type) {
  const unsigned before = pending.are_for(reply_type) ? pending.count : 0;
  pending = {g_cfc_msq_id, reply_type, before + 1, removal_attempts};
}

/// Removes the messages of the process's type before it sends the next request. A service that is
/// still busy with the old request replies later: its reply is then taken for the next one, and the
/// count stays, so that one of the following exchanges removes the surplus reply.
void remove_pending_replies(std::int32_t reply_type) {
  if (!pending.are_for(reply_type)) {
    return;
  }
  --pending.attempts_left;
  long removed_type = 0;  // only the type: MSG_NOERROR discards the message text
  while (msgrcv(g_cfc_msq_id, &removed_type, 0, reply_type, IPC_NOWAIT | MSG_NOERROR) != -1) {
    pending.count -= pending.count > 0 ? 1 : 0;
  }
}

}  // namespace

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

std::uint32_t cfc_exchange(cfc_msg* msg, std::size_t* text_bytes) {
  msg->mtype = request_type;
  msg->reply_mtype = getpid() + reply_type_bias;
  remove_pending_replies(msg->reply_mtype);
  if (msgsnd(g_cfc_msq_id, &msg->mtype, msg->used_len - text_off, 0) != 0) {
    const int error = errno;
    std::printf("msq_id=%d, mtype=%d, real_len=%d\n", g_cfc_msq_id, static_cast<int>(msg->mtype),
                static_cast<int>(msg->used_len));
    return static_cast<std::uint32_t>(error);
  }
  // No time limit and no truncation flag: a reply that is too long stays on the queue.
  msg->mtype = msg->reply_mtype;
  const ssize_t received =
      msgrcv(g_cfc_msq_id, &msg->mtype, msg->capacity - text_off, msg->mtype, 0);
  if (received < 0) {
    const int error = errno;
    if (error == EINTR) {
      add_pending_reply(msg->reply_mtype);
    }
    return static_cast<std::uint32_t>(error);
  }
  if (text_bytes != nullptr) {
    *text_bytes = static_cast<std::size_t>(received);
  }
  return CFC_OK;
}

std::uint32_t send_request(cfc_msg& msg, std::size_t success_bytes) {
  std::size_t text_bytes = 0;
  if (const std::uint32_t result = cfc_exchange(&msg, &text_bytes); result != CFC_OK) {
    return result;
  }
  const bool has_result = text_bytes >= text_result_bytes;
  if (!has_result || (msg.op_result == CFC_OK && text_bytes < success_bytes)) {
    return CFC_ERR_BAD_VALUE;
  }
  return msg.op_result;
}

}  // namespace proreflax
