// The stations that are associated: a header line, then one row per station to the end of the file.
//
//     Ralink Assocation Table
//     [01] 00:0C:43:28:60:11   AID  1    address from column 5, number from column 29
//
// "Assocation" is the driver's own spelling.
#include <proreflax/wireless.h>

#include <cstring>

#include "wireless/decimal_number.h"
#include "wireless/driver_text.h"
#include "wireless/mac_text.h"
#include "wireless/proc_file.h"
#include "wireless/text_position.h"

namespace proreflax {
namespace {

constexpr char header[] = "Ralink Assocation Table\n";
constexpr std::size_t header_length = sizeof header - 1;
constexpr std::size_t mac_column = 5;
constexpr std::size_t number_column = 29;
constexpr std::size_t truncation_min = 4;  // a shorter file is parsed without dropping a row

static_assert(proc_buf_capacity - 1 - header_length == WLS_ASSOCIATE_ROWS_MAX);

/// Ends the text after its last newline, since the row after it is truncated, and returns the new
/// end.
const char* drop_truncated_row(char* text, std::size_t length) {
  if (length < truncation_min) {
    return text + length;
  }
  while (length > 0 && text[length - 1] != '\n') {
    --length;
  }
  text[length] = '\0';
  return text + length;
}

}  // namespace

std::uint32_t parse_wls_associate(char* text, std::size_t length, wls_associate_entry* table,
                                  int* count) {
  const char* const end = drop_truncated_row(text, length);
  const char* row = std::strstr(text, header);
  if (row == nullptr) {
    return CFC_FAILED;
  }
  row += header_length;
  int rows = 0;
  // A row without a newline was truncated by a NUL, and is omitted.
  const char* newline = std::strchr(row, '\n');
  for (; newline != nullptr && rows < WLS_ASSOCIATE_ROWS_MAX; ++rows) {
    static_cast<void>(parse_mac_text(ahead(row, mac_column, end), table[rows].mac));
    table[rows].number = decimal_number(ahead(row, number_column, end));
    row = newline + 1;
    newline = std::strchr(row, '\n');
  }
  *count = rows;
  return CFC_OK;
}

}  // namespace proreflax

using namespace proreflax;

std::uint32_t gui_get_wls_associate(wls_associate_entry* table, int* count) {
  char* text = nullptr;
  std::size_t length = 0;
  if (table == nullptr || count == nullptr ||
      read_proc_file(status_file, &text, &length) != CFC_OK) {
    return CFC_FAILED;
  }
  return parse_wls_associate(text, length, table, count);
}
