/**
 * Reading and writing the device's configuration from an application.
 *
 * The configuration is a set of named sections, each with key=value entries whose values are short
 * strings. One service, config-center, owns them. These functions send it requests over the
 * device's request queue and wait for each reply. result.h defines the conventions and all result
 * codes.
 *
 * Names        A section name has 1 to 24 characters and no CR or LF. A key has 1 to 49 characters,
 *              does not begin with '[' and contains no '=', '*', CR or LF. A value has 0 to 199
 *              characters and no CR or LF. A name or value that breaks these rules is refused with
 *              CFC_ERR_BAD_ARGUMENT before anything is sent.
 * Blocking     Every function that talks to the service waits for the lock, for space on the queue
 *              and for the reply, each without a time limit. The service replies to a get or a set
 *              immediately; a flush or a reset takes as long as the flash does.
 * Exchange     A function that talks to the service also returns, unless it says otherwise:
 *                CFC_ERR_NO_MEMORY      no memory for the request; nothing was sent
 *                an errno value         the send or the receive failed (EINTR: see "Signals")
 *                CFC_ERR_BAD_VALUE      the reply was malformed
 *                CFC_ERR_BAD_ARGUMENT   the service refused the request (a one-character key takes
 *                                       no empty value: the saved file could not be read back)
 *                CFC_ERR_BUSY           the store is being written out
 *              Outputs are untouched by all of these. A failed send also prints one line,
 *              "msq_id=..., mtype=..., real_len=...", on standard output.
 * Signals      A signal handler that runs during the wait for the reply ends it with EINTR, also
 *              one that was installed with SA_RESTART: no system restarts a receive. The service
 *              still executes the request and sends its reply. The process's next request
 *              therefore begins by removing the replies that have arrived in the meantime, without
 *              waiting for one. One race remains: if the service is still executing the old request
 *              and replies after this removal, that reply is taken for the reply to the new
 *              request, with its result and its value. The surplus reply is removed before one of
 *              the following requests. A program that must exclude this prevents handlers from
 *              running: it blocks the signals in the calling thread (pthread_sigmask()) around the
 *              call, or blocks them in every thread and accepts them in a dedicated thread
 *              (sigwait()) or from signalfd().
 */
#ifndef PROREFLAX_CONFIG_H
#define PROREFLAX_CONFIG_H

#include <proreflax/result.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The lock ------------------------------------------------------------------------------- */

/**
 * Takes the access lock and attaches to the request queue.
 *
 * Blocks until the lock is free; a signal does not end the wait. A process that ends, or is killed,
 * while it holds the lock releases it. Lock and queue are looked up on every call, so a restarted
 * service is found automatically. Not recursive.
 *
 * @return CFC_OK          the lock is held; release it with cfc_put_mutex()
 *         CFC_ERR_NO_SEM  the lock does not exist (no service runs); it is not held
 *         CFC_ERR_NO_MSQ  the queue does not exist; the lock was taken and released
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_get_mutex(void);

/**
 * Releases the access lock. Call it once for every cfc_get_mutex() that returned CFC_OK: a call
 * without one raises the semaphore above 1, and several processes can then hold the lock at the
 * same time. Never blocks.
 *
 * @return CFC_OK always, also when the lock no longer exists
 */
PROREFLAX_API uint32_t cfc_put_mutex(void);

/* ---- Requests that concern the whole store -------------------------------------------------- */

/**
 * Registers an application: creates an empty section with its name in the store. An existing
 * section keeps its entries.
 *
 * Lock: must be held by the caller.
 *
 * @param name  the application's name; follows the rules of a section name
 * @return CFC_OK                the section exists
 *         CFC_ERR_BAD_ARGUMENT  the name breaks the rules (or is null); nothing was sent
 *         CFC_ERR_NO_SECTION    the service has no configuration: a reset to defaults failed
 *         or a code of "Exchange" above
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_add_app_sem(const char* name);

/**
 * Takes the lock, calls cfc_add_app_sem() and releases the lock.
 *
 * @return as cfc_add_app_sem(), and CFC_ERR_NO_SEM or CFC_ERR_NO_MSQ, with nothing sent
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_add_app_nosem(const char* name);

/**
 * Writes the whole store to flash, if a value was set since it was last written. Blocks until the
 * flash tool is done.
 *
 * Lock: must be held by the caller; every other client waits meanwhile.
 *
 * @return CFC_OK                the store is on flash, or there was nothing to write
 *         CFC_ERR_WRITE         the temporary file could not be written; a later flush tries again
 *         CFC_ERR_FORK_FLASH_W  the flash tool could not be started; a later flush tries again
 *         CFC_ERR_FLASH_W       the flash tool failed; a later flush tries again
 *         or a code of "Exchange" above
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_flush_all_sem(void);

/**
 * Takes the lock, calls cfc_flush_all_sem() and releases the lock.
 *
 * @return as cfc_flush_all_sem(), and CFC_ERR_NO_SEM or CFC_ERR_NO_MSQ, with nothing sent
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_flush_all_nosem(void);

/**
 * Replaces the whole configuration, in memory and on flash, by the factory defaults.
 *
 * Lock: takes and releases it. No variant exists for a caller that holds the lock: calling this
 * with the lock held blocks indefinitely.
 *
 * @return CFC_OK             the defaults are active
 *         CFC_ERR_NO_SEM, CFC_ERR_NO_MSQ  no service runs; nothing was sent
 *         CFC_ERR_NO_FILE    the factory file cannot be opened; the store is empty now
 *         CFC_ERR_BAD_VALUE  the factory file is malformed; the store is empty now
 *         CFC_ERR_NO_MEMORY  also: the service had no memory for a section; the store is empty now
 *         or a code of "Exchange" above
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_to_default(void);

/* ---- Typed values --------------------------------------------------------------------------- */

/*
 * Each of the twelve operations reads or writes one value, named by section and key, in one
 * exchange. They share these arguments and results:
 *
 *   locked   non-zero: the caller holds the lock, and the operation does not touch it; zero: the
 *            operation takes and releases it
 *   section  name of the section
 *   key      name of the entry
 *
 *   CFC_OK                 the value was read into the output, or written
 *   CFC_ERR_BAD_ARGUMENT   section or key break the rules, or an argument is null or out of range;
 *                          nothing was sent
 *   CFC_ERR_NO_SEM, CFC_ERR_NO_MSQ  no service runs (only with locked zero); nothing was sent
 *   CFC_ERR_NO_SECTION     the section does not exist
 *   CFC_ERR_NO_KEY         getters: the key does not exist; setters create it instead
 *   or a code of "Exchange" above
 *
 * A getter that fails leaves its output untouched, except where it says otherwise. A getter of a
 * number or an address that is called with a null output still performs its exchange and reports
 * its result, then that of the conversion.
 *
 * A number is written as lower-case hexadecimal with "0x", in the full width of its type. It is
 * read as decimal, or as hexadecimal after "0x" or "0X", with one optional leading sign; leading
 * zeros do not make it octal. A negative number is read as its two's complement.
 */

/**
 * Reads a number of 8 bits.
 *
 * @param out  receives the number, 0 to 255
 * @return the codes above, and
 *         CFC_ERR_NO_ROOM       the stored value is longer than 15 characters
 *         CFC_ERR_BAD_ARGUMENT  also when the stored value is empty
 *         CFC_ERR_BAD_DIGIT     the stored value contains a character that is not a digit of its
 *                               base
 *         CFC_ERR_OVERFLOW      the stored number grew past 32 bits
 *         CFC_ERR_BAD_VALUE     the stored number is above 255, or negative
 *         CFC_ERR_BAD_ARGUMENT  also when out is null and the number would be stored
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_u8(int locked, const char* section,
                                                      const char* key, uint8_t* out);

/**
 * Reads a number of 16 bits.
 *
 * @param out  receives the number, 0 to 65535
 * @return as __cfc_get_u8(), with 65535 as the largest number
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_u16(int locked, const char* section,
                                                       const char* key, uint16_t* out);

/**
 * Reads a number of 32 bits.
 *
 * @param out  receives the number. A stored value that is not a number (CFC_ERR_BAD_DIGIT,
 *             CFC_ERR_OVERFLOW, or CFC_ERR_BAD_ARGUMENT for an empty value) leaves 0 here; every
 *             other failure leaves it untouched
 * @return as __cfc_get_u8(), but never CFC_ERR_BAD_VALUE for a number: a stored -1 reads as
 *         0xFFFFFFFF. CFC_ERR_BAD_ARGUMENT also when a value was read and out is null, for any
 *         value
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_u32(int locked, const char* section,
                                                       const char* key, uint32_t* out);

/**
 * Reads an IPv4 address that is stored as a dotted quad.
 *
 * @param out  receives the address, its first part in the most significant byte
 * @return the codes above, and
 *         CFC_ERR_NO_ROOM         the stored value is longer than 15 characters
 *         CFC_ERR_NOT_AN_ADDRESS  the stored value is not a dotted quad, or a value was read and
 *                                 out is null. This code, all ones, differs from the code of the
 *                                 number getters; callers depend on it
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_ip(int locked, const char* section,
                                                      const char* key, uint32_t* out);

/**
 * Reads a string.
 *
 * @param out         receives the string and its NUL; it is never truncated
 * @param size_bytes  size of out, NUL included; at least 2
 * @return the codes above, and
 *         CFC_ERR_NO_ROOM       the stored string has size_bytes characters or more
 *         CFC_ERR_BAD_ARGUMENT  also when out is null or size_bytes below 2 or above 2^31
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_string(int locked, const char* section,
                                                          const char* key, char* out,
                                                          uint32_t size_bytes);

/**
 * Reads binary data that is stored as a hexadecimal string.
 *
 * @param out    receives count bytes: the stored bytes, then zeros when fewer are stored; the
 *               number of stored bytes is not reported
 * @param count  points to the number of bytes wanted, at least 1; it is not changed
 * @return the codes above, and
 *         CFC_ERR_NO_ROOM       more than *count bytes are stored; out is untouched
 *         CFC_ERR_BAD_VALUE     the stored value is not a hexadecimal string of complete bytes; out
 *                               is zeroed and holds what was decoded before the error (a malformed
 *                               reply gives this code too, with out untouched)
 *         CFC_ERR_BAD_ARGUMENT  also when out or count is null, or *count below 1 or above
 *                               1073741822
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_binary(int locked, const char* section,
                                                          const char* key, uint8_t* out,
                                                          int32_t* count);

/** Writes a number of 8 bits, as 4 characters ("0x0a"). @return the codes above */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_set_u8(int locked, const char* section,
                                                      const char* key, uint8_t value);

/** Writes a number of 16 bits, as 6 characters ("0x01bb"). @return the codes above */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_set_u16(int locked, const char* section,
                                                       const char* key, uint16_t value);

/** Writes a number of 32 bits, as 10 characters ("0xc0a83e01"). @return the codes above */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_set_u32(int locked, const char* section,
                                                       const char* key, uint32_t value);

/**
 * Writes an IPv4 address as a dotted quad.
 *
 * @param address  its first part in the most significant byte: 192.168.62.1 is 0xC0A83E01
 * @return the codes above
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_set_ip(int locked, const char* section,
                                                      const char* key, uint32_t address);

/**
 * Writes a string.
 *
 * @param value  0 to 199 characters without CR or LF
 * @return the codes above; CFC_ERR_BAD_ARGUMENT also when the value breaks its rules or is null
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_set_string(int locked, const char* section,
                                                          const char* key, const char* value);

/**
 * Writes binary data as a hexadecimal string: "0x", then two digits per byte, the last byte first.
 *
 * @param data   the bytes
 * @param count  how many, 1 to 98
 * @return the codes above; CFC_ERR_BAD_ARGUMENT also when data is null or count out of range
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_set_binary(int locked, const char* section,
                                                          const char* key, const uint8_t* data,
                                                          int32_t count);

/* ---- IPv4 addresses as strings -------------------------------------------------------------- */

/**
 * Parses a dotted quad: four decimal parts of 0 to 255, single dots between them, nothing before or
 * after. Leading zeros are allowed and do not make a part octal. Touches no lock; never blocks.
 *
 * @param text  the string to parse
 * @param out   receives the address, its first part in the most significant byte
 * @return 0; or -1 for any other string or a null argument, with out untouched
 */
PROREFLAX_API PROREFLAX_CHECKED int32_t translate_ip_to_u32(const char* text, uint32_t* out);

/**
 * Writes an address as a dotted quad. Touches no lock; never blocks.
 *
 * @param buffer      receives the string and its NUL, at most 16 bytes
 * @param size_bytes  size of buffer; at least 16, even for a shorter string
 * @param address     the address, its first part in the most significant byte
 * @return 0; or -1 when buffer is null or size_bytes below 16, with buffer untouched
 */
PROREFLAX_API PROREFLAX_CHECKED int32_t translate_u32_to_ip(char* buffer, int32_t size_bytes,
                                                            uint32_t address);

/** An address offered to applications, initially 192.168.62.1. The library never reads it. */
PROREFLAX_API extern uint32_t s_ip;

/** A netmask offered to applications, initially 255.255.255.0. The library never reads it. */
PROREFLAX_API extern uint32_t s_mask;

#ifdef __cplusplus
}
#endif

#endif
