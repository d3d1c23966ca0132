// The request message: one record that carries every request to the configuration-center service
// and, rewritten, its reply.
//
// A record is a header and a payload: section name, key and value, packed without padding, each
// with its NUL. The kernel sees a System V message: mtype is its type, and everything after mtype
// is its text. The message text is identical on 32-bit and 64-bit platforms, so that programs of
// both widths can talk to one service; only the part before it differs, since the platform's
// message type is a long. capacity and used_len count the complete record, header included, and are
// never sent.
//
// Numbers are in the machine's own byte order: a queue never leaves its machine.
#ifndef PROREFLAX_TRANSPORT_MESSAGE_H
#define PROREFLAX_TRANSPORT_MESSAGE_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace proreflax {

template <typename MessageType>
struct basic_cfc_msg {
  std::uint16_t capacity;                          // bytes allocated for the complete record
  std::uint16_t used_len;                          // bytes of the record in use
  alignas(sizeof(MessageType)) MessageType mtype;  // request_type, or the client's reply type
  std::int32_t reply_mtype;                        // message type that the client waits for
  std::uint32_t op_result;                         // request: opcode; reply: result code
  std::uint16_t section_off;                       // offsets count from the start of the payload
  std::uint16_t key_off;
  std::uint16_t value_off;
  std::uint16_t value_len;  // set: with the value's NUL; reply to a get: without
};

using cfc_msg = basic_cfc_msg<long>;

/// The header of a message text: the header fields from reply_mtype on.
inline constexpr std::size_t text_off = offsetof(cfc_msg, reply_mtype);
inline constexpr std::size_t text_header_bytes = sizeof(cfc_msg) - text_off;

/// The part of this header up to and including op_result.
inline constexpr std::size_t text_result_bytes = offsetof(cfc_msg, section_off) - text_off;

template <typename Record, std::size_t Mtype, std::size_t Text, std::size_t Header>
constexpr bool laid_out_as() {
  return offsetof(Record, capacity) == 0 && offsetof(Record, used_len) == 2 &&
         offsetof(Record, mtype) == Mtype && offsetof(Record, reply_mtype) == Text &&
         offsetof(Record, op_result) == Text + 4 && offsetof(Record, section_off) == Text + 8 &&
         offsetof(Record, key_off) == Text + 10 && offsetof(Record, value_off) == Text + 12 &&
         offsetof(Record, value_len) == Text + 14 && sizeof(Record) == Header;
}
static_assert(laid_out_as<basic_cfc_msg<std::int32_t>, 4, 8, 24>(), "32-bit platforms");
static_assert(laid_out_as<basic_cfc_msg<std::int64_t>, 8, 16, 32>(), "64-bit platforms");
static_assert(text_header_bytes == 16 && text_result_bytes == 8);

/// The message type of every request.
inline constexpr long request_type = 1;

/// A reply's message type is its client's process id plus this.
inline constexpr std::int32_t reply_type_bias = 2;

/// Bytes reserved after section and key for a value and its NUL.
inline constexpr std::size_t value_room = 200;

enum opcode : std::uint32_t {
  CFC_OP_ADD_APP = 1,
  CFC_OP_SET = 9,
  CFC_OP_GET = 10,
  CFC_OP_FLUSH_ALL = 12,
  CFC_OP_TO_DEFAULT = 16,
};

inline char* payload(cfc_msg& msg) {
  return reinterpret_cast<char*>(&msg + 1);
}

struct free_memory {
  void operator()(void* memory) const { std::free(memory); }
};

/// A record that is freed by the function that allocated it, on every path.
using owned_msg = std::unique_ptr<cfc_msg, free_memory>;

/// Allocates a zeroed record with room for `payload_bytes`; null when there is no memory. The size
/// of the complete record is truncated to 16 bits; null also when it would then be smaller than the
/// header.
cfc_msg* cfc_msg_alloc(std::uint32_t payload_bytes);

/// Sends the record over the queue that cfc_get_mutex() found, and receives the reply into the same
/// memory. 0 when both succeeded, else the errno of the call that failed. `text_bytes` receives how
/// much of the message text the reply has overwritten: the rest is still the request's. Needs the
/// access lock held.
std::uint32_t cfc_exchange(cfc_msg* msg, std::size_t* text_bytes = nullptr);

/// cfc_exchange(), and on its success the service's result. 205 for a reply too short to contain
/// the result, or one that reports success and has less than `success_bytes` of message text.
std::uint32_t send_request(cfc_msg& msg, std::size_t success_bytes = text_result_bytes);

}  // namespace proreflax

#endif
