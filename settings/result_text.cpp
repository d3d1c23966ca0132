// One row a code, every code of result.h: the sentence says what happened, not what the constant is
// called. Below 200 stand the platform's errno values, except for the two that result.h names.
#include "settings/result_text.h"

#include <proreflax/result.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace proreflax::settings {
namespace {

struct result_row {
  std::uint32_t code;
  std::string_view name;
  std::string_view sentence;
};

constexpr std::array result_rows{
    result_row{CFC_OK, "CFC_OK", "done"},
    result_row{CFC_FAILED, "CFC_FAILED", "it failed"},
    result_row{CFC_ERR_NO_MEMORY, "CFC_ERR_NO_MEMORY", "there is no memory left"},
    result_row{CFC_ERR_NO_KEY, "CFC_ERR_NO_KEY", "the section holds no such key"},
    result_row{CFC_ERR_BAD_ARGUMENT, "CFC_ERR_BAD_ARGUMENT",
               "empty, too long, or with a forbidden character"},
    result_row{CFC_ERR_BAD_VALUE, "CFC_ERR_BAD_VALUE", "a text of the wrong form, or out of range"},
    result_row{CFC_ERR_NO_FILE, "CFC_ERR_NO_FILE", "the configuration text cannot be opened"},
    result_row{CFC_ERR_BUSY, "CFC_ERR_BUSY", "the store is being written out; try again"},
    result_row{CFC_ERR_NO_SECTION, "CFC_ERR_NO_SECTION", "the store holds no such section"},
    result_row{CFC_ERR_BAD_DIGIT, "CFC_ERR_BAD_DIGIT",
               "a character is no digit of the number's base"},
    result_row{CFC_ERR_OVERFLOW, "CFC_ERR_OVERFLOW", "the number does not fit 32 bits"},
    result_row{CFC_ERR_NO_ROOM, "CFC_ERR_NO_ROOM",
               "the stored value is longer than the type asked for takes"},
    result_row{CFC_ERR_WRITE, "CFC_ERR_WRITE",
               "the text for the flash could not be written; a later flush tries again"},
    result_row{CFC_ERR_FORK_GZIP, "CFC_ERR_FORK_GZIP", "gzip could not be started"},
    result_row{CFC_ERR_FORK_GUNZIP, "CFC_ERR_FORK_GUNZIP", "gunzip could not be started"},
    result_row{CFC_ERR_FORK_FLASH_W, "CFC_ERR_FORK_FLASH_W",
               "the flash tool could not be started to write"},
    result_row{CFC_ERR_FORK_FLASH_R, "CFC_ERR_FORK_FLASH_R",
               "the flash tool could not be started to read"},
    result_row{CFC_ERR_GZIP, "CFC_ERR_GZIP", "gzip failed"},
    result_row{CFC_ERR_GUNZIP, "CFC_ERR_GUNZIP", "gunzip failed"},
    result_row{CFC_ERR_FLASH_W, "CFC_ERR_FLASH_W",
               "the flash tool failed to write; set a value before the next flush, or it writes "
               "nothing"},
    result_row{CFC_ERR_FLASH_R, "CFC_ERR_FLASH_R", "the flash tool failed to read"},
    result_row{CFC_ERR_NOTHING_TO_FLUSH, "CFC_ERR_NOTHING_TO_FLUSH", "there is nothing to flush"},
    result_row{CFC_ERR_NO_SEM, "CFC_ERR_NO_SEM",
               "there is no access lock: config-center does not run"},
    result_row{CFC_ERR_NO_MSQ, "CFC_ERR_NO_MSQ",
               "there is no request queue: config-center does not run"},
    result_row{CFC_ERR_FW_TOO_BIG, "CFC_ERR_FW_TOO_BIG",
               "the firmware image is larger than its place on flash"},
    result_row{CFC_ERR_FW_SHORT, "CFC_ERR_FW_SHORT",
               "the firmware image is shorter than its header"},
    result_row{CFC_ERR_FW_HDR_CRC, "CFC_ERR_FW_HDR_CRC",
               "the checksum of the firmware header differs"},
    result_row{CFC_ERR_FW_DATA_CRC, "CFC_ERR_FW_DATA_CRC",
               "the checksum of the firmware data differs"},
    result_row{CFC_ERR_FW_TYPE, "CFC_ERR_FW_TYPE",
               "the firmware image is of a type that this device does not take"},
    result_row{CFC_ERR_FW_MAGIC, "CFC_ERR_FW_MAGIC", "this is no firmware image"},
    result_row{CFC_ERR_FW_TRUNCATED, "CFC_ERR_FW_TRUNCATED",
               "the firmware data is shorter than declared, or its table of parts is wrong"},
    result_row{CFC_ERR_FW_OPEN, "CFC_ERR_FW_OPEN", "the flash device cannot be opened"},
    result_row{CFC_ERR_FW_BASE, "CFC_ERR_FW_BASE",
               "the flash device does not tell its base address"},
    result_row{CFC_ERR_FW_REGION, "CFC_ERR_FW_REGION", "the flash device does not know the region"},
    result_row{CFC_ERR_FW_SEEK, "CFC_ERR_FW_SEEK", "the flash device cannot be positioned"},
    result_row{CFC_ERR_FW_WRITE, "CFC_ERR_FW_WRITE",
               "the flash device took fewer bytes than it was given"},
    result_row{CFC_ERR_NOT_AN_ADDRESS, "CFC_ERR_NOT_AN_ADDRESS",
               "the text is no dotted IPv4 address"},
};

constexpr std::uint32_t first_own_code = 200;

const result_row* find_row(std::uint32_t code) {
  const auto* const row = std::ranges::find(result_rows, code, &result_row::code);
  return row == result_rows.end() ? nullptr : row;
}

}  // namespace

std::string_view result_name(std::uint32_t code) {
  const result_row* const row = find_row(code);
  return row == nullptr ? std::string_view{} : row->name;
}

std::string result_sentence(std::uint32_t code) {
  if (const result_row* const row = find_row(code); row != nullptr) {
    return std::string{row->sentence};
  }
  if (code < first_own_code) {
    return std::strerror(static_cast<int>(code));
  }
  return "the service answered with a code that is not known here";
}

}  // namespace proreflax::settings
