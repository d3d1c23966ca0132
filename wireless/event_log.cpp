// The driver's event log: a first line that announces the number of events, then one row per event.
//
//     Event count: 2                            the number begins at the 14th character
//     [log] 1 00:0C:43:28:60:11 associated      a prefix of 6; number, address, message
//
// The announced number is passed to the caller unchanged. The size of the buffer already limits the
// number of rows to that of the table; the loop also checks it as a safeguard.
#include <proreflax/wireless.h>

#include <algorithm>
#include <cstring>

#include "wireless/decimal_number.h"
#include "wireless/driver_text.h"
#include "wireless/mac_text.h"
#include "wireless/proc_file.h"
#include "wireless/text_position.h"

namespace proreflax {
namespace {

constexpr std::size_t label_length = 13;
constexpr std::size_t prefix_length = 6;
constexpr std::size_t message_length_max = 79;

// The distance between two rows is at least that from the ':' of an address to the message, plus a
// newline and the next row's prefix.
constexpr std::size_t distance_to_message = mac_text_length - 2;
constexpr std::size_t row_distance = distance_to_message + 1 + prefix_length;
constexpr std::size_t rows_bytes = proc_buf_capacity - 1 - (1 + prefix_length);
static_assert((rows_bytes + row_distance - 1) / row_distance == WLS_EVENT_LOG_ROWS_MAX);
static_assert(message_length_max < WLS_MESSAGE_SIZE);

/// Reads the message that begins at `text` and returns the start of the next row: after the
/// newline, or the end of the text when the message has no newline.
const char* read_message(const char* text, const char* end, wls_event_log_entry* entry) {
  const char* const stop = text + std::strcspn(text, "\n");
  const std::size_t kept = std::min(left(text, stop), message_length_max);
  // Not memcpy(): because of the limit, compilers expand it into a string instruction, whose start
  // takes longer than the rest of the row.
  std::copy_n(text, kept, entry->message);
  entry->message[kept] = '\0';
  return *stop == '\n' ? stop + 1 : end;
}

/// Reads the row at `text` and returns the start of the next one; null when the row contains no
/// ':'.
const char* read_row(const char* text, const char* end, wls_event_log_entry* entry) {
  entry->number = decimal_number(text);
  const char* const colon = std::strchr(text, ':');
  if (colon == nullptr) {
    return nullptr;
  }
  // Every row has a prefix, so at least two characters precede the ':'.
  const char* const mac = colon - 2;
  static_cast<void>(parse_mac_text(mac, entry->mac));
  return read_message(ahead(mac, mac_text_length, end), end, entry);
}

}  // namespace

std::uint32_t parse_wls_event_log(const char* text, std::size_t length, int* count,
                                  wls_event_log_entry* table) {
  const char* const end = text + length;
  if (length <= label_length) {
    return CFC_FAILED;
  }
  *count = decimal_number(text + label_length);
  if (*count < 1) {
    return CFC_OK;
  }
  const char* const newline = std::strchr(text, '\n');
  if (newline == nullptr) {
    *count = 0;
    return CFC_OK;
  }
  const char* row = ahead(newline, 1 + prefix_length, end);
  const int rows = std::min(*count, WLS_EVENT_LOG_ROWS_MAX);
  for (int i = 0; i < rows; ++i) {
    row = read_row(row, end, &table[i]);
    if (row == nullptr) {
      return CFC_FAILED;
    }
    if (left(row, end) <= prefix_length) {
      return CFC_OK;
    }
    row += prefix_length;
  }
  return CFC_OK;
}

}  // namespace proreflax

using namespace proreflax;

std::uint32_t gui_get_wls_event_log_table(int* count, wls_event_log_entry* table) {
  char* text = nullptr;
  std::size_t length = 0;
  if (count == nullptr || table == nullptr ||
      read_proc_file(event_log_file, &text, &length) != CFC_OK) {
    return CFC_FAILED;
  }
  return parse_wls_event_log(text, length, count, table);
}
