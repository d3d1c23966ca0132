/**
 * Reading and writing the device's configuration from an application.
 *
 * The configuration is a set of named sections, each holding key=value entries whose values are
 * short texts. One service, config-center, owns them; these functions ask it, one request and one
 * reply at a time, over the device's request queue. result.h tells the conventions and all codes.
 *
 * Names        A section name has 1 to 24 characters and no CR or LF. A key has 1 to 49 characters,
 *              does not begin with '[' and holds no '=', '*', CR or LF. A value has 0 to 199
 *              characters and no CR or LF. Whatever breaks these rules is refused with
 *              CFC_ERR_BAD_ARGUMENT before anything is sent.
 * Blocking     Every function that talks to the service waits for the lock, for room on the queue
 *              and for the reply, each without a time limit. The service answers a get or a set at
 *              once; a flush or a reset takes as long as the flash does.
 * Exchange     A function that talks to the service also returns, unless it says otherwise:
 *                CFC_ERR_NO_MEMORY      no memory for the request; nothing was sent
 *                an errno value         the send or the receive failed (EINTR: see "Signals")
 *                CFC_ERR_BAD_VALUE      the reply was malformed
 *                CFC_ERR_BAD_ARGUMENT   the service refused the request (a one-character key takes
 *                                       no empty value: the saved text could not be read back)
 *                CFC_ERR_BUSY           the store is being written out
 *              Outputs are untouched by all of these. A failed send also prints one line,
 *              "msq_id=..., mtype=..., real_len=...", on standard output.
 * Signals      A signal handler that runs during the wait for the reply ends it with EINTR, also
 *              one that was installed with SA_RESTART: no system restarts a receive. The service
 *              executes the request all the same, and its reply still comes. The process's next
 *              request therefore begins by removing the replies that have come in the meantime,
 *              without waiting for one. A window is left: a reply that the service sends after this
 *              removal, because it was still executing the old request, is taken for the reply to
 *              the new one, with its result and its value. The reply that is then one too many is
 *              removed before one of the requests that follow. A program that must exclude this
 *              keeps handlers from running: it blocks the signals in the calling thread
 *              (pthread_sigmask()) around the call, or blocks them in every thread and accepts
 *              them in a thread of their own (sigwait()) or from signalfd().
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
 * while it holds the lock gives it back. Service and queue are looked up anew on every call, so a
 * restarted service is found without further ado. Not recursive.
 *
 * @return CFC_OK          the lock is held; give it back with cfc_put_mutex()
 *         CFC_ERR_NO_SEM  there is no lock (no service runs); it is not held
 *         CFC_ERR_NO_MSQ  there is no queue; the lock was taken and given back
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_get_mutex(void);

/**
 * Gives the access lock back. Call it once for every cfc_get_mutex() that returned CFC_OK: a call
 * without one raises the semaphore above 1, and it no longer excludes. Never blocks.
 *
 * @return CFC_OK always, also when the lock no longer exists
 */
PROREFLAX_API uint32_t cfc_put_mutex(void);

/* ---- Requests that concern the whole store -------------------------------------------------- */

/**
 * Registers an application: the store has a section of its name from then on, empty if it is new.
 * A section that is there already keeps its entries.
 *
 * Lock: must be held by the caller.
 *
 * @param name  the application's name; obeys the rules of a section name
 * @return CFC_OK                the section is there
 *         CFC_ERR_BAD_ARGUMENT  the name breaks the rules (or is null); nothing was sent
 *         CFC_ERR_NO_SECTION    the service has no configuration: a reset to defaults failed
 *         or a code of "Exchange" above
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_add_app_sem(const char* name);

/**
 * cfc_add_app_sem() with the lock taken and given back around it.
 *
 * @return as cfc_add_app_sem(), and CFC_ERR_NO_SEM or CFC_ERR_NO_MSQ, with nothing sent
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_add_app_nosem(const char* name);

/**
 * Writes the whole store to flash, if anything was set since it was last written. Blocks until the
 * flash tool is done.
 *
 * Lock: must be held by the caller; every other client waits meanwhile.
 *
 * @return CFC_OK                what was set is on flash, or there was nothing to write
 *         CFC_ERR_WRITE         the temporary text could not be written; a later flush tries again
 *         CFC_ERR_FORK_FLASH_W  the flash tool could not be started; a later flush tries again
 *         CFC_ERR_FLASH_W       the flash tool failed; a later flush tries again
 *         or a code of "Exchange" above
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_flush_all_sem(void);

/**
 * cfc_flush_all_sem() with the lock taken and given back around it.
 *
 * @return as cfc_flush_all_sem(), and CFC_ERR_NO_SEM or CFC_ERR_NO_MSQ, with nothing sent
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_flush_all_nosem(void);

/**
 * Replaces the whole configuration, in memory and on flash, by the factory defaults.
 *
 * Lock: takes it and gives it back. There is no variant for a caller that holds the lock: calling
 * this with the lock held waits for ever.
 *
 * @return CFC_OK             the defaults are in force
 *         CFC_ERR_NO_SEM, CFC_ERR_NO_MSQ  no service runs; nothing was sent
 *         CFC_ERR_NO_FILE    the factory file cannot be opened; the store is empty now
 *         CFC_ERR_BAD_VALUE  the factory file is malformed; the store is empty now
 *         CFC_ERR_NO_MEMORY  also: the service had none for a section; the store is empty now
 *         or a code of "Exchange" above
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t cfc_to_default(void);

/* ---- Typed values --------------------------------------------------------------------------- */

/*
 * Each of the twelve operations reads or writes one value, named by section and key, in one
 * exchange. They share these arguments and results:
 *
 *   locked   non-zero: the caller holds the lock, and it is left alone; zero: the operation takes
 *            it and gives it back
 *   section  name of the section
 *   key      name of the entry
 *
 *   CFC_OK                 the value was read into the output, or written
 *   CFC_ERR_BAD_ARGUMENT   section or key break the rules, or an argument is null or out of range;
 *                          nothing was sent
 *   CFC_ERR_NO_SEM, CFC_ERR_NO_MSQ  no service runs (only with locked zero); nothing was sent
 *   CFC_ERR_NO_SECTION     there is no such section
 *   CFC_ERR_NO_KEY         getters: there is no such key; setters create it instead
 *   or a code of "Exchange" above
 *
 * A getter that fails leaves its output untouched, except where it says otherwise. A getter of a
 * number or an address that is called with a null output makes its exchange all the same and
 * reports its result, then that of the conversion.
 *
 * A number is written as lower-case hexadecimal with "0x", in the full width of its type. It is
 * read as decimal, or as hexadecimal after "0x" or "0X", with one optional sign in front; leading
 * zeros do not make it octal. A negative text stands for its two's complement.
 */

/**
 * Reads a number of 8 bits.
 *
 * @param out  receives the number, 0 to 255
 * @return the codes above, and
 *         CFC_ERR_NO_ROOM       the stored text is longer than 15 characters
 *         CFC_ERR_BAD_ARGUMENT  also when the stored text is empty
 *         CFC_ERR_BAD_DIGIT     the stored text holds a character that is no digit of its base
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
 * @return as __cfc_get_u8(), with 65535 as the greatest number
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_u16(int locked, const char* section,
                                                       const char* key, uint16_t* out);

/**
 * Reads a number of 32 bits.
 *
 * @param out  receives the number. A stored text that is no number (CFC_ERR_BAD_DIGIT,
 *             CFC_ERR_OVERFLOW, or CFC_ERR_BAD_ARGUMENT for an empty text) leaves 0 here; every
 *             other failure leaves it untouched
 * @return as __cfc_get_u8(), but never CFC_ERR_BAD_VALUE for a number: a stored -1 reads as
 *         0xFFFFFFFF. CFC_ERR_BAD_ARGUMENT also when a value was read and out is null, whatever
 *         the value is
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_u32(int locked, const char* section,
                                                       const char* key, uint32_t* out);

/**
 * Reads an IPv4 address that is stored as a dotted quad.
 *
 * @param out  receives the address, its first part in the most significant byte
 * @return the codes above, and
 *         CFC_ERR_NO_ROOM         the stored text is longer than 15 characters
 *         CFC_ERR_NOT_AN_ADDRESS  the stored value is not a dotted quad, or a value was read and
 *                                 out is null (all ones, on purpose not the code of the number
 *                                 getters)
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_ip(int locked, const char* section,
                                                      const char* key, uint32_t* out);

/**
 * Reads a text.
 *
 * @param out         receives the text and its NUL; it is never cut
 * @param size_bytes  room in out, NUL included; at least 2
 * @return the codes above, and
 *         CFC_ERR_NO_ROOM       the stored text has size_bytes characters or more
 *         CFC_ERR_BAD_ARGUMENT  also when out is null or size_bytes below 2 or above 2^31
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_get_string(int locked, const char* section,
                                                          const char* key, char* out,
                                                          uint32_t size_bytes);

/**
 * Reads binary data that is stored as hexadecimal text.
 *
 * @param out    receives count bytes: the stored bytes first, zeros behind them when fewer are
 *               stored; how many were stored cannot be told
 * @param count  points to the number of bytes wanted, at least 1; it is not changed
 * @return the codes above, and
 *         CFC_ERR_NO_ROOM       more than *count bytes are stored; out is untouched
 *         CFC_ERR_BAD_VALUE     the stored text is no hexadecimal text of whole bytes; out is
 *                               zeroed and holds what was decoded before the fault (a malformed
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
 * Writes a text.
 *
 * @param value  0 to 199 characters without CR or LF
 * @return the codes above; CFC_ERR_BAD_ARGUMENT also when the value breaks its rules or is null
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_set_string(int locked, const char* section,
                                                          const char* key, const char* value);

/**
 * Writes binary data as hexadecimal text: "0x", then two digits a byte, the last byte first.
 *
 * @param data   the bytes
 * @param count  how many, 1 to 98
 * @return the codes above; CFC_ERR_BAD_ARGUMENT also when data is null or count out of range
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t __cfc_set_binary(int locked, const char* section,
                                                          const char* key, const uint8_t* data,
                                                          int32_t count);

/* ---- IPv4 addresses as text ----------------------------------------------------------------- */

/**
 * Reads a dotted quad: four decimal parts of 0 to 255, single dots between them, nothing before or
 * behind. Leading zeros are allowed and do not make a part octal. Touches no lock; never blocks.
 *
 * @param text  the text
 * @param out   receives the address, its first part in the most significant byte
 * @return 0; or -1 for any other text or a null argument, with out untouched
 */
PROREFLAX_API PROREFLAX_CHECKED int32_t translate_ip_to_u32(const char* text, uint32_t* out);

/**
 * Writes an address as a dotted quad. Touches no lock; never blocks.
 *
 * @param buffer      receives the text and its NUL, at most 16 bytes
 * @param size_bytes  room in buffer; at least 16, however short the text will be
 * @param address     the address, its first part in the most significant byte
 * @return 0; or -1 when buffer is null or size_bytes below 16, with buffer untouched
 */
PROREFLAX_API PROREFLAX_CHECKED int32_t translate_u32_to_ip(char* buffer, int32_t size_bytes,
                                                            uint32_t address);

/** An address offered to applications, 192.168.62.1 at the start. The library never reads it. */
PROREFLAX_API extern uint32_t s_ip;

/** A netmask offered to applications, 255.255.255.0 at the start. The library never reads it. */
PROREFLAX_API extern uint32_t s_mask;

#ifdef __cplusplus
}
#endif

#endif
