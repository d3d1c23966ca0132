/**
 * What the wireless driver reports about the access point: traffic counters, its event log, the
 * stations that are associated, and the channels of a regulatory region.
 *
 * The driver publishes two files, "/proc/wireless" and "/proc/wirelesslog". Every call reads the
 * first 4095 bytes of its file and fills records of the caller. Lengths count the bytes read; a
 * search ends at a NUL. Even if a file is truncated or malformed, nothing past the bytes read is
 * accessed and nothing outside the caller's records is written. A read error counts as the end of
 * the file. docs/driver-files.md describes the files.
 *
 * Results      CFC_OK, or CFC_FAILED for every failure: these functions return no other code.
 * Null         A null record, table or count gives CFC_FAILED, with nothing read.
 * Lock         No function here touches the access lock or talks to the configuration service.
 * Threads      All files are read into one buffer of the process: one thread at a time.
 * Blocking     As long as the driver takes to print its file.
 * Numbers      Decimal, converted with the platform's atoi(), also those out of its range: leading
 *              white space and a sign are allowed; the result is 0 without a digit.
 */
#ifndef PROREFLAX_WIRELESS_H
#define PROREFLAX_WIRELESS_H

#include <proreflax/result.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Records -------------------------------------------------------------------------------- */

/** Room for the longest interface status in the bytes read, and its NUL. */
#define WLS_IF_STATUS_SIZE 4096

/** Room for a MAC address as the driver prints it, and its NUL. */
#define WLS_MAC_TEXT_SIZE 21

/** Size of a MAC address in bytes. */
#define WLS_MAC_SIZE 6

/** Room for the message of an event; it has at most 79 characters and a NUL. */
#define WLS_MESSAGE_SIZE 82

/**
 * Rows that an event log table must have. The bytes read cannot contain more: at least 6 bytes
 * separate the first newline from the first row, and each row begins at least 22 bytes after the
 * previous one.
 */
#define WLS_EVENT_LOG_ROWS_MAX 186

/**
 * Rows that a table of associated stations must have. The bytes read cannot contain more: the
 * header has 24 bytes, and every line is a row, even an empty one.
 */
#define WLS_ASSOCIATE_ROWS_MAX 4071

/** The state of the wireless interface. */
typedef struct wls_11g_status {
  uint32_t recv_unicast;              /**< unicast frames received */
  uint32_t recv_multicast;            /**< multicast frames received */
  uint32_t recv_dropped;              /**< received frames that were dropped */
  uint32_t recv_failed;               /**< frames that were received with an error */
  uint32_t trans_unicast;             /**< unicast frames sent */
  uint32_t trans_multicast;           /**< multicast frames sent */
  uint32_t trans_dropped;             /**< frames that were dropped instead of sent */
  uint32_t trans_failed;              /**< frames that could not be sent */
  char mac_addr[WLS_MAC_TEXT_SIZE];   /**< MAC address as printed, truncated to 20 characters */
  char if_status[WLS_IF_STATUS_SIZE]; /**< status of the interface as printed, never truncated */
} wls_11g_status;

/** One event of the log. */
typedef struct wls_event_log_entry {
  int32_t number;            /**< number of the event, as printed */
  uint8_t mac[WLS_MAC_SIZE]; /**< MAC address of the station, as it is written: first byte first */
  char message[WLS_MESSAGE_SIZE]; /**< what happened, truncated to 79 characters */
} wls_event_log_entry;

/** One associated station. */
typedef struct wls_associate_entry {
  int32_t number;            /**< number of the station, as printed */
  uint8_t mac[WLS_MAC_SIZE]; /**< MAC address of the station, as it is written: first byte first */
} wls_associate_entry;

/* ---- Readers -------------------------------------------------------------------------------- */

/**
 * Reads counters, MAC address and status of the wireless interface: the first ten lines of
 * "/proc/wireless", each a name, '=', a value and a newline.
 *
 * @param status  receives each value whose line has a name that begins with a field's name. Lines
 *                with other names are skipped; fields without a line are left unchanged
 * @return CFC_OK      ten lines were read
 *         CFC_FAILED  the file cannot be opened, with *status untouched; or it has fewer lines,
 *                     with the fields of those lines filled
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_11g_status(wls_11g_status* status);

/**
 * Reads the event log, "/proc/wirelesslog". The count is the first argument here, but the second of
 * gui_get_wls_associate().
 *
 * A malformed MAC address is not reported: its first byte is 0 or decoded, and the bytes after the
 * error are unchanged.
 *
 * @param count  receives the number of events that the first line announces, also when it is
 *               negative and also when fewer rows follow: to detect missing rows, fill the table
 *               with a marker before the call. 0 when no line follows the first
 * @param table  receives the rows found: room for WLS_EVENT_LOG_ROWS_MAX of them
 * @return CFC_OK      the rows were read, or none are announced
 *         CFC_FAILED  the file cannot be opened or has fewer than 14 bytes, with both outputs
 *                     untouched; or a row contains no ':', with the rows before it and its own
 *                     number filled and the count as announced
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_event_log_table(int* count,
                                                                     wls_event_log_entry* table);

/**
 * Reads the stations that are associated, from the table after the line "Ralink Assocation Table"
 * (spelled so) of "/proc/wireless". A row that is truncated after 4095 bytes is omitted.
 *
 * A malformed MAC address is not reported, as in gui_get_wls_event_log_table().
 *
 * @param table  receives the rows: room for WLS_ASSOCIATE_ROWS_MAX of them
 * @param count  receives the number of rows
 * @return CFC_OK      the rows were read; there may be none
 *         CFC_FAILED  the file cannot be opened or lacks that line; both outputs are untouched
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_associate(wls_associate_entry* table,
                                                               int* count);

/* ---- Fixed results -------------------------------------------------------------------------- */

/**
 * Returns the channels of a regulatory region.
 *
 * @param region  1: channels 1 to 11; 2: 1 to 13; 3: 10 to 13; 4: 1 to 14; 5: 10 and 11; any other
 *                number: 1 to 14
 * @param first   receives the first channel; null when it is not needed
 * @param count   receives the number of channels, counted from the first; null when it is not
 *                needed
 * @return CFC_OK always
 */
PROREFLAX_API uint32_t gui_get_wls_channel_info(int region, int* first, int* count);

/**
 * Fails, because the driver does not report its firmware version. The arguments are ignored.
 *
 * @return CFC_FAILED always
 */
PROREFLAX_API uint32_t gui_get_wls_firmversion(void* version, void* size);

#ifdef __cplusplus
}
#endif

#endif
