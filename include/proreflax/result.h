/**
 * Result codes and the conventions that hold for every function of proreflax.
 *
 * Results      Functions return an unsigned 32-bit result code unless their description says
 *              otherwise: CFC_OK (0) or one code of the list below. A number is never reused.
 *              Codes below 200 are the platform's errno values: a failed send or receive on the
 *              request queue is reported by the errno of the call that failed.
 * Strings      NUL-terminated bytes, neither trimmed nor converted.
 * Ownership    The caller supplies every output buffer and its size. The library does not return
 *              memory that it allocated, except where store.h says so.
 * Null         A null pointer is refused with CFC_ERR_BAD_ARGUMENT unless a function says
 *              otherwise.
 * Byte order   Numbers are in the machine's own byte order; an IPv4 address is a 32-bit number
 *              whose most significant byte is the first dotted part.
 * Lock         One semaphore serialises all access to the configuration on the device. Every
 *              function states whether it takes the lock, needs it held, or never touches it. A
 *              name ending in _sem needs it held; one ending in _nosem takes and releases it. The
 *              lock is not recursive: taking it twice in one thread blocks indefinitely.
 * Threads      The library creates no threads. Its few process-wide variables are not protected.
 */
#ifndef PROREFLAX_RESULT_H
#define PROREFLAX_RESULT_H

#include <stdint.h>

/** Marks what the shared library exports. */
#define PROREFLAX_API __attribute__((visibility("default")))

/** Marks a result that must not be ignored. */
#define PROREFLAX_CHECKED __attribute__((warn_unused_result))

/** Every result code except CFC_ERR_NOT_AN_ADDRESS, which does not fit a C enumeration. */
enum cfc_result {
  CFC_OK = 0,                 /**< done */
  CFC_FAILED = 1,             /**< failure outside the store's protocol */
  CFC_ERR_NO_MEMORY = 12,     /**< an allocation failed (the platform's ENOMEM) */
  CFC_ERR_NO_KEY = 201,       /**< the section does not contain the key */
  CFC_ERR_BAD_ARGUMENT = 204, /**< null, empty, too long, or with a forbidden character */
  CFC_ERR_BAD_VALUE = 205,    /**< malformed or out-of-range value; malformed line */
  CFC_ERR_NO_FILE = 206,      /**< the configuration file cannot be opened */
  CFC_ERR_BUSY = 208,         /**< the store is being written out */
  CFC_ERR_NO_SECTION = 209,   /**< the store does not contain the section */
  CFC_ERR_BAD_DIGIT = 210,    /**< a character is not a digit of the number's base */
  CFC_ERR_OVERFLOW = 211,     /**< a number grew past 32 bits while it was read */
  CFC_ERR_NO_ROOM = 212,      /**< the stored value is longer than the caller's buffer */
  CFC_ERR_WRITE = 215,        /**< the export file cannot be opened, or a write was incomplete */
  CFC_ERR_FORK_GZIP = 216,    /**< no process could be created for gzip */
  CFC_ERR_FORK_GUNZIP = 217,  /**< no process could be created for gunzip */
  CFC_ERR_FORK_FLASH_W = 218, /**< no process could be created for the flash tool, writing */
  CFC_ERR_FORK_FLASH_R = 219, /**< no process could be created for the flash tool, reading */
  CFC_ERR_GZIP = 220,         /**< gzip failed */
  CFC_ERR_GUNZIP = 221,       /**< gunzip failed */
  CFC_ERR_FLASH_W = 222,      /**< the flash tool failed, writing */
  CFC_ERR_FLASH_R = 223,      /**< the flash tool failed, reading */
  CFC_ERR_NOTHING_TO_FLUSH = 229, /**< internal: nothing to flush, reported as CFC_OK */
  CFC_ERR_NO_SEM = 230,           /**< the access semaphore does not exist: no service runs */
  CFC_ERR_NO_MSQ = 231,           /**< the request queue does not exist: no service runs */
  CFC_ERR_FW_TOO_BIG = 232,       /**< firmware image larger than the limit or its flash region */
  CFC_ERR_FW_SHORT = 233,         /**< firmware image shorter than its header */
  CFC_ERR_FW_HDR_CRC = 234,       /**< firmware header checksum differs */
  CFC_ERR_FW_DATA_CRC = 235,      /**< firmware data checksum differs */
  CFC_ERR_FW_TYPE = 236,          /**< firmware image of a type that this device does not accept */
  CFC_ERR_FW_MAGIC = 237,         /**< not a firmware image */
  CFC_ERR_FW_TRUNCATED = 238,     /**< firmware data shorter than declared, or a bad part table */
  CFC_ERR_FW_OPEN = 239,          /**< the flash device cannot be opened */
  CFC_ERR_FW_BASE = 240,          /**< the flash device does not report its base address */
  CFC_ERR_FW_REGION = 241,        /**< the flash device does not know the region */
  CFC_ERR_FW_SEEK = 242,          /**< the flash device cannot be positioned */
  CFC_ERR_FW_WRITE = 243          /**< the flash device accepted fewer bytes than it was given */
};

/** Only from __cfc_get_ip(): the stored value is not a dotted IPv4 address. */
#define CFC_ERR_NOT_AN_ADDRESS UINT32_C(0xFFFFFFFF)

#endif
