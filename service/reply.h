// One request into one reply: a pure function over the request's bytes and the store.
//
// No message is trusted. Offsets, lengths and terminators are checked against what really arrived,
// names and values against the rules that clients keep, and what the loader could not read back
// from the saved text never enters the store. Nothing here makes a system call: a flush or a reset
// is handed back as an effect that the caller carries out before it sends the reply.
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

/// A reply is its request with the value room behind the key filled.
inline constexpr std::size_t reply_text_max = request_text_max + value_room;

/// What a reply waits for.
enum class effect : std::uint8_t { none, flush, defaults };

struct reply {
  long type = 0;  // message type; 0 for a request that cannot be answered
  char text[reply_text_max] = {};
  std::size_t length = 0;  // bytes of text to send
  effect before = effect::none;
};

/// Answers a request's text, which may hold anything. A text longer than request_text_max may be
/// handed over cut, as long as one byte too many is left.
reply make_reply(const char* request_text, std::size_t length);

std::uint32_t result_of(const reply& answer);
void set_result(reply& answer, std::uint32_t result);

}  // namespace proreflax

#endif
