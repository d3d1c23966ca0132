/**
 * What the wireless driver tells about the access point: traffic counters, its event log, the
 * stations that are associated, and the channels of a regulatory region.
 *
 * The driver publishes texts, "/proc/wireless" and "/proc/wirelesslog". Every call reads its text
 * anew, as far as its first 4095 bytes, and fills records of the caller. Lengths count the bytes
 * read; a search ends at a NUL. However a text is cut off or malformed, nothing past the bytes read
 * is looked at and nothing outside the caller's records is written. An error while a text is read
 * ends it there. docs/driver-files.md shows the texts.
 *
 * Results      CFC_OK, or CFC_FAILED for every failure: these functions have no other code.
 * Null         A null record, table or count gives CFC_FAILED, with nothing read.
 * Lock         No function here touches the access lock or talks to the configuration service.
 * Threads      The texts pass through one buffer of the process: one thread at a time.
 * Blocking     As long as the driver takes to print its text; nothing is waited for.
 * Numbers      Decimal, converted with the platform's atoi(), also those out of its range: leading
 *              white space and a sign are allowed, 0 where there is no digit.
 */
#ifndef PROREFLAX_WIRELESS_H
#define PROREFLAX_WIRELESS_H

#include <proreflax/result.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Records -------------------------------------------------------------------------------- */

/** Room for the longest interface status that a text can hold, and its NUL. */
#define WLS_IF_STATUS_SIZE 4096

/** Room for a MAC address as the driver prints it, and its NUL. */
#define WLS_MAC_TEXT_SIZE 21

/** Bytes of a MAC address. */
#define WLS_MAC_SIZE 6

/** Room for the message of an event; it holds at most 79 characters and a NUL. */
#define WLS_MESSAGE_SIZE 82

/**
 * Rows that an event log table must have. No text holds more: behind its first newline at least 6
 * bytes lead to the first row, and each row is followed by the next at a distance of 22 or more.
 */
#define WLS_EVENT_LOG_ROWS_MAX 186

/**
 * Rows that a table of associated stations must have. No text holds more: 24 bytes are its header,
 * and a row is a line, were it an empty one.
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
  char mac_addr[WLS_MAC_TEXT_SIZE];   /**< MAC address as printed, cut to 20 characters */
  char if_status[WLS_IF_STATUS_SIZE]; /**< status of the interface as printed, never cut */
} wls_11g_status;

/** One event of the log. */
typedef struct wls_event_log_entry {
  int32_t number;            /**< number of the event, as printed */
  uint8_t mac[WLS_MAC_SIZE]; /**< MAC address of the station, as it is written: first byte first */
  char message[WLS_MESSAGE_SIZE]; /**< what happened, cut to 79 characters */
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
 *                with other names are passed over; fields without a line are left as they were
 * @return CFC_OK      ten lines were read
 *         CFC_FAILED  the text cannot be opened, with *status untouched; or it has fewer lines,
 *                     with the fields of those lines filled
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_11g_status(wls_11g_status* status);

/**
 * Reads the event log, "/proc/wirelesslog". The count comes first here, and second in
 * gui_get_wls_associate().
 *
 * A MAC address that is malformed leaves its first byte 0 or decoded, the bytes behind the fault as
 * they were, and is not reported.
 *
 * @param count  receives the number of events that the first line announces, also when it is
 *               negative and also when fewer rows follow: fill the table with a mark of your own to
 *               tell them. 0 when there is no line behind the first
 * @param table  receives the rows that are there: room for WLS_EVENT_LOG_ROWS_MAX of them
 * @return CFC_OK      the rows were read, or none are announced
 *         CFC_FAILED  the text cannot be opened or has fewer than 14 bytes, with both outputs
 *                     untouched; or a row holds no ':', with the rows before it and its own number
 *                     filled and the count as announced
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_event_log_table(int* count,
                                                                     wls_event_log_entry* table);

/**
 * Reads the stations that are associated, from the table behind the line "Ralink Assocation Table"
 * (so spelled) of "/proc/wireless". A row that the end of the 4095 bytes cut off is left out.
 *
 * A malformed MAC address is not reported, as in gui_get_wls_event_log_table().
 *
 * @param table  receives the rows: room for WLS_ASSOCIATE_ROWS_MAX of them
 * @param count  receives the number of rows
 * @return CFC_OK      the rows were read; there may be none
 *         CFC_FAILED  the text cannot be opened or has no such line; both outputs are untouched
 */
PROREFLAX_API PROREFLAX_CHECKED uint32_t gui_get_wls_associate(wls_associate_entry* table,
                                                               int* count);

/* ---- Fixed answers -------------------------------------------------------------------------- */

/**
 * Tells the channels of a regulatory region.
 *
 * @param region  1: channels 1 to 11; 2: 1 to 13; 3: 10 to 13; 4: 1 to 14; 5: 10 and 11; any other
 *                number: 1 to 14
 * @param first   receives the first channel; null when it is not wanted
 * @param count   receives the number of channels from the first on; null when it is not wanted
 * @return CFC_OK always
 */
PROREFLAX_API uint32_t gui_get_wls_channel_info(int region, int* first, int* count);

/**
 * Would tell the version of the driver's firmware; the driver does not. The arguments are ignored.
 *
 * @return CFC_FAILED always
 */
PROREFLAX_API uint32_t gui_get_wls_firmversion(void* version, void* size);

#ifdef __cplusplus
}
#endif

#endif
