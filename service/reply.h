// Converts a request into a reply: a pure function of the request's bytes and the store.
//
// No message is trusted. Offsets, lengths and terminators are checked against the bytes that
// arrived, and names and values against the rules that clients follow. An entry that the loader
// could not read back from the saved file is refused. Nothing here makes a system call: a flush or
// a reset is returned as an effect that the caller executes before it sends the reply.
#ifndef PROREFLAX_SERVICE_REPLY_H
#define PROREFLAX_SERVICE_REPLY_H

#include <cstddef>
#include <cstdint>

#include "transport/message.h"
#include "transport/names.h"

namespace proreflax {

/// The longest payload of a request: section, key and value, each with its NUL.
inline constexpr std::size_t request_payload_max = section_name_max + 1 + key_max + 1 + value_room;
inline constexpr std::size_t request_text_max = text_header_bytes + request_payload_max;

/// A reply is its request with a value added after the key.
inline constexpr std::size_t reply_text_max = request_text_max + value_room;

/// What must be executed before a reply is sent.
enum class effect : std::uint8_t { none, flush, defaults };

struct reply {
  long type = 0;  // message type; 0 when no reply can be sent
  char text[reply_text_max] = {};
  std::size_t length = 0;  // bytes of text to send
  effect before = effect::none;
};

/// Returns the reply to a request's text, which may contain anything. A text longer than
/// request_text_max may be passed truncated, if it is still longer than that.
reply make_reply(const char* request_text, std::size_t length);

std::uint32_t result_of(const reply& reply);
void set_result(reply& reply, std::uint32_t result);

}  // namespace proreflax

#endif
