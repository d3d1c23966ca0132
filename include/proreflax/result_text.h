/**
 * Result codes in words, for logs and messages: the name of a code and a description of it.
 *
 * The only list of these descriptions; proreflax(3) shows it as a table. Header-only: the library
 * exports neither function, and a program that includes this header contains the strings it uses.
 *
 * Strings      Constant and NUL-terminated. Never null, so that they suit printf().
 * Lock         No function here touches the access lock or talks to the configuration service.
 * Threads      Any, except for cfc_result_text() of an errno value: it calls strerror().
 */
#ifndef PROREFLAX_RESULT_TEXT_H
#define PROREFLAX_RESULT_TEXT_H

#include <proreflax/result.h>
#include <string.h>

#ifdef __cplusplus
extern "C" {
#endif

/* One row for each code of result.h, in its order. */
#define PROREFLAX_RESULT_ROWS(ROW)                                                           \
  ROW(CFC_OK, "done")                                                                        \
  ROW(CFC_FAILED, "the operation failed")                                                    \
  ROW(CFC_ERR_NO_MEMORY, "out of memory")                                                    \
  ROW(CFC_ERR_NO_KEY, "the section holds no such key")                                       \
  ROW(CFC_ERR_BAD_ARGUMENT, "an argument is empty, too long, or has a forbidden character")  \
  ROW(CFC_ERR_BAD_VALUE, "the value is malformed or out of range")                           \
  ROW(CFC_ERR_NO_FILE, "the configuration file cannot be opened")                            \
  ROW(CFC_ERR_BUSY, "the store is being written out; try again")                             \
  ROW(CFC_ERR_NO_SECTION, "the store holds no such section")                                 \
  ROW(CFC_ERR_BAD_DIGIT, "a character is not a digit of the number's base")                  \
  ROW(CFC_ERR_OVERFLOW, "the number does not fit 32 bits")                                   \
  ROW(CFC_ERR_NO_ROOM, "the stored value does not fit the requested type or buffer")         \
  ROW(CFC_ERR_WRITE, "the temporary file could not be written; a later flush tries again")   \
  ROW(CFC_ERR_FORK_GZIP, "gzip could not be started")                                        \
  ROW(CFC_ERR_FORK_GUNZIP, "gunzip could not be started")                                    \
  ROW(CFC_ERR_FORK_FLASH_W, "the flash tool could not be started to write")                  \
  ROW(CFC_ERR_FORK_FLASH_R, "the flash tool could not be started to read")                   \
  ROW(CFC_ERR_GZIP, "gzip failed")                                                           \
  ROW(CFC_ERR_GUNZIP, "gunzip failed")                                                       \
  ROW(CFC_ERR_FLASH_W, "the flash tool failed to write")                                     \
  ROW(CFC_ERR_FLASH_R, "the flash tool failed to read")                                      \
  ROW(CFC_ERR_NOTHING_TO_FLUSH, "nothing to flush")                                          \
  ROW(CFC_ERR_NO_SEM, "the access lock does not exist: config-center is not running")        \
  ROW(CFC_ERR_NO_MSQ, "the request queue does not exist: config-center is not running")      \
  ROW(CFC_ERR_FW_TOO_BIG, "the firmware image is larger than its flash region or the limit") \
  ROW(CFC_ERR_FW_SHORT, "the firmware image is shorter than its header")                     \
  ROW(CFC_ERR_FW_HDR_CRC, "the firmware header does not match its checksum")                 \
  ROW(CFC_ERR_FW_DATA_CRC, "the firmware data does not match its checksum")                  \
  ROW(CFC_ERR_FW_TYPE, "the firmware image is of a type that this device does not take")     \
  ROW(CFC_ERR_FW_MAGIC, "not a firmware image")                                              \
  ROW(CFC_ERR_FW_TRUNCATED,                                                                  \
      "the firmware data is shorter than declared, or its part table is wrong")              \
  ROW(CFC_ERR_FW_OPEN, "the flash device cannot be opened")                                  \
  ROW(CFC_ERR_FW_BASE, "the flash device does not report its base address")                  \
  ROW(CFC_ERR_FW_REGION, "the flash device does not know the region")                        \
  ROW(CFC_ERR_FW_SEEK, "the flash device cannot be positioned")                              \
  ROW(CFC_ERR_FW_WRITE, "the flash device took fewer bytes than it was given")               \
  ROW(CFC_ERR_NOT_AN_ADDRESS, "the stored value is not a dotted IPv4 address")

#ifdef __cplusplus
#define PROREFLAX_AS_INT(code) static_cast<int>(code)
#else
#define PROREFLAX_AS_INT(code) ((int)(code))
#endif

#define PROREFLAX_NAME_ROW(code, description) \
  case code:                                  \
    return #code;

#define PROREFLAX_TEXT_ROW(code, description) \
  case code:                                  \
    return description;

/**
 * The name that result.h gives a code, such as "CFC_ERR_NO_KEY".
 *
 * @param code  any number
 * @return the name; an empty string for an errno value and for a number that is not a code
 */
static inline const char* cfc_result_name(uint32_t code) {
  switch (code) {
    PROREFLAX_RESULT_ROWS(PROREFLAX_NAME_ROW)
    default:
      return "";
  }
}

/**
 * Describes a code in a few words, without a capital and a full stop, to follow a colon: "cannot
 * save: %s".
 *
 * @param code  any number
 * @return the description. For an errno value, a number below 200 without a name, it is that of
 *         strerror(), valid until the next call of strerror(); for a number that is not a code,
 *         "unknown result code"
 */
static inline const char* cfc_result_text(uint32_t code) {
  switch (code) {
    PROREFLAX_RESULT_ROWS(PROREFLAX_TEXT_ROW)
    default:
      return code < 200 ? strerror(PROREFLAX_AS_INT(code)) : "unknown result code";
  }
}

#undef PROREFLAX_TEXT_ROW
#undef PROREFLAX_NAME_ROW
#undef PROREFLAX_AS_INT
#undef PROREFLAX_RESULT_ROWS

#ifdef __cplusplus
}
#endif

#endif
