/**
 * Checking a firmware image and writing it to flash.
 *
 * The complete image is held in memory: a header of 64 bytes, then its data. A kernel is written
 * with its header, a ramdisk without; a multi-file image contains further images, which are written
 * one by one. docs/firmware-image.md describes the format, whose checksum is this device's own.
 *
 * Codes        CFC_OK, or one of CFC_ERR_FW_TOO_BIG to CFC_ERR_FW_WRITE. For an image with several
 *              errors the result is the first of: too big, device, short, magic, type, header
 *              checksum, data size, data checksum, part table; then, for each part, the part's own
 *              errors, its region, the region's size, position, write.
 * Image        Is only read, never beyond its size, and need not be aligned. Null is treated as an
 *              image of no bytes.
 * Lock         No function here touches the access lock or talks to the configuration service.
 * Threads      One update at a time in a process: the open device is a variable of the process.
 * Blocking     As long as the flash takes to write, possibly minutes. The checksums of an image are
 *              verified before any of it is written.
 */
#ifndef PROREFLAX_FIRMWARE_H
#define PROREFLAX_FIRMWARE_H

#include <proreflax/result.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The largest image that upgrade_kernel() accepts, in bytes: 11 MiB. */
#define FW_IMAGE_SIZE_MAX 0xB00000

/** Size of an image's header in bytes. */
#define FW_HEADER_SIZE 64

/** How many multi-file images may be nested, the outermost included. */
#define FW_NESTING_MAX 16

/**
 * Checks an image and writes it to flash.
 *
 * The header and checksums of a multi-file image are checked before its first part is written. Each
 * part is checked immediately before it is written: when one fails, the parts before it are already
 * on flash and stay there. A write that fails leaves its region undefined. Nothing is retried.
 *
 * @param image       the image
 * @param size_bytes  size of the image in bytes; a negative size counts as 0
 * @param ignored     ignored
 * @return CFC_OK                everything is on flash
 *         CFC_ERR_FW_TOO_BIG    size_bytes is above FW_IMAGE_SIZE_MAX, and the device was not
 *                               opened; or a part is larger than its region
 *         CFC_ERR_FW_OPEN       the flash device cannot be opened
 *         CFC_ERR_FW_BASE       the flash device does not report its base address
 *         CFC_ERR_FW_SHORT      image or part shorter than a header
 *         CFC_ERR_FW_MAGIC      not an image
 *         CFC_ERR_FW_TYPE       an image, but not a kernel, ramdisk or multi-file image
 *         CFC_ERR_FW_HDR_CRC    the header's checksum differs
 *         CFC_ERR_FW_TRUNCATED  fewer data bytes than the header declares; a part table without
 *                               parts, without an end, or with a part that does not fit; or a
 *                               multi-file image inside FW_NESTING_MAX others
 *         CFC_ERR_FW_DATA_CRC   the data's checksum differs
 *         CFC_ERR_FW_REGION     the flash device does not know the region of a kernel or ramdisk
 *         CFC_ERR_FW_SEEK       the flash device cannot be positioned
 *         CFC_ERR_FW_WRITE      the flash device did not accept all bytes in one write
 *         The flash device is closed in every case.
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t upgrade_kernel(const uint8_t* image, int32_t size_bytes,
                                                        uint32_t ignored);

/**
 * The part of upgrade_kernel() after the device is opened: checks an image and writes it. The size
 * is limited only by the regions. The device is open only while upgrade_kernel() runs; at any other
 * time an image with data to write gives CFC_ERR_FW_REGION.
 *
 * @param image       the image
 * @param size_bytes  size of the image in bytes
 * @return as upgrade_kernel(), without CFC_ERR_FW_OPEN and CFC_ERR_FW_BASE; a ramdisk without data
 *         has nothing to write and gives CFC_OK
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t updateFlashImage(const uint8_t* image,
                                                          uint32_t size_bytes);

/** Not supported on this device: does nothing with its arguments. @return CFC_FAILED always */
PROREFLAX_API uint32_t gui_set_firmware_upgrade(const void* image, uint32_t size_bytes);

/** Does nothing: an application that needs a restart requests it from the system. */
PROREFLAX_API void gui_sys_reset(void);

#ifdef __cplusplus
}
#endif

#endif
