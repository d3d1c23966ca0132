/* Sizes and offsets of the public records, to be written out by a C and by a C++ compiler. */
#ifndef PROREFLAX_TESTS_WIRELESS_RECORD_LAYOUT_H
#define PROREFLAX_TESTS_WIRELESS_RECORD_LAYOUT_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif
extern const size_t wireless_layout_in_c[];
extern const size_t wireless_layout_length;
#ifdef __cplusplus
}
#endif

#define WIRELESS_LAYOUT                                                                   \
  offsetof(wls_11g_status, recv_unicast), offsetof(wls_11g_status, recv_multicast),       \
      offsetof(wls_11g_status, recv_dropped), offsetof(wls_11g_status, recv_failed),      \
      offsetof(wls_11g_status, trans_unicast), offsetof(wls_11g_status, trans_multicast), \
      offsetof(wls_11g_status, trans_dropped), offsetof(wls_11g_status, trans_failed),    \
      offsetof(wls_11g_status, mac_addr), offsetof(wls_11g_status, if_status),            \
      sizeof(wls_11g_status), offsetof(wls_event_log_entry, number),                      \
      offsetof(wls_event_log_entry, mac), offsetof(wls_event_log_entry, message),         \
      sizeof(wls_event_log_entry), offsetof(wls_associate_entry, number),                 \
      offsetof(wls_associate_entry, mac), sizeof(wls_associate_entry)

#endif
