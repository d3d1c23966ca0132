/*
 * Asks a running configuration-center service for everything that a program can ask for, and checks
 * each answer. It uses the public interface alone, so that it can be built for one kind of
 * processor and meet a service that was built for another.
 *
 *   every_opcode set      registers, sets, reads back, is refused, flushes
 *   every_opcode kept     reads what "set" left, whoever set it
 *   every_opcode reset    goes back to the factory's defaults
 */
#include <proreflax/config.h>
#include <proreflax/sections.h>
#include <stdio.h>
#include <string.h>

static int checks;
static int failures;

static void check(int holds, const char* what, int line) {
  ++checks;
  if (!holds) {
    ++failures;
    printf("every_opcode.c:%d: %s\n", line, what);
    fflush(stdout); /* the next answer may never come */
  }
}

#define CHECK(what) check((what) != 0, #what, __LINE__)

#define NUMBER_OF(array) (sizeof(array) / sizeof *(array))

static const char app[] = "MIXED";
static const char other_app[] = "MIXED_UNDER_LOCK";

/* The longest names and the longest value, and as many bytes as fit into one. */
static const char long_section[] = "A_SECTION_NAME_OF_24_CHR";
static const char long_key[] = "a_key_of_as_many_characters_as_there_may_be_in_it";
static char long_value[200];
static uint8_t long_bytes[98];
static const uint8_t mac[6] = {0x02, 0x00, 0x5e, 0x10, 0x20, 0x30};

static void fill_the_longest(void) {
  size_t i;
  for (i = 0; i + 1 < sizeof long_value; ++i) {
    long_value[i] = (char)('!' + i % 90);
  }
  for (i = 0; i < sizeof long_bytes; ++i) {
    long_bytes[i] = (uint8_t)(0xFF - i);
  }
}

/* The stored text of a key is this one. */
static int holds_text(int locked, const char* section, const char* key, const char* expected) {
  char text[200];
  memset(text, '#', sizeof text);
  return __cfc_get_string(locked, section, key, text, sizeof text) == CFC_OK &&
         strcmp(text, expected) == 0;
}

static void set_values(int locked, const char* section) {
  CHECK(__cfc_set_u8(locked, section, "u8", 0xA5) == CFC_OK);
  CHECK(__cfc_set_u16(locked, section, "u16", 0xB6C7) == CFC_OK);
  CHECK(__cfc_set_u32(locked, section, "u32", UINT32_C(0xD8E9FA0B)) == CFC_OK);
  CHECK(__cfc_set_ip(locked, section, "ip", UINT32_C(0xC0A83E01)) == CFC_OK);
  CHECK(__cfc_set_string(locked, section, "string", "value, = and ]") == CFC_OK);
  CHECK(__cfc_set_string(locked, section, "empty", "") == CFC_OK);
  CHECK(__cfc_set_binary(locked, section, "binary", mac, sizeof mac) == CFC_OK);
}

static void values_are_there(int locked, const char* section) {
  uint8_t u8 = 0;
  uint16_t u16 = 0;
  uint32_t u32 = 0;
  uint32_t ip = 0;
  char string[15];
  uint8_t binary[8];
  int32_t count = sizeof binary;
  CHECK(__cfc_get_u8(locked, section, "u8", &u8) == CFC_OK && u8 == 0xA5);
  CHECK(__cfc_get_u16(locked, section, "u16", &u16) == CFC_OK && u16 == 0xB6C7);
  CHECK(__cfc_get_u32(locked, section, "u32", &u32) == CFC_OK && u32 == UINT32_C(0xD8E9FA0B));
  CHECK(__cfc_get_ip(locked, section, "ip", &ip) == CFC_OK && ip == UINT32_C(0xC0A83E01));
  CHECK(__cfc_get_string(locked, section, "string", string, sizeof string) == CFC_OK &&
        strcmp(string, "value, = and ]") == 0);
  CHECK(__cfc_get_binary(locked, section, "binary", binary, &count) == CFC_OK && count == 8 &&
        memcmp(binary, mac, sizeof mac) == 0 && binary[6] == 0 && binary[7] == 0);
  /* And as what they are stored. */
  CHECK(holds_text(locked, section, "u8", "0xa5"));
  CHECK(holds_text(locked, section, "u16", "0xb6c7"));
  CHECK(holds_text(locked, section, "u32", "0xd8e9fa0b"));
  CHECK(holds_text(locked, section, "ip", "192.168.62.1"));
  CHECK(holds_text(locked, section, "empty", ""));
  CHECK(holds_text(locked, section, "binary", "0x3020105e0002"));
}

static void set_the_longest(void) {
  CHECK(cfc_add_app_nosem(long_section) == CFC_OK);
  CHECK(__cfc_set_string(0, long_section, long_key, long_value) == CFC_OK);
  CHECK(__cfc_set_binary(0, long_section, "bytes", long_bytes, sizeof long_bytes) == CFC_OK);
}

static void the_longest_are_there(void) {
  uint8_t bytes[98];
  int32_t count = sizeof bytes;
  CHECK(strlen(long_section) == 24 && strlen(long_key) == 49 && strlen(long_value) == 199);
  CHECK(holds_text(0, long_section, long_key, long_value));
  CHECK(__cfc_get_binary(0, long_section, "bytes", bytes, &count) == CFC_OK &&
        memcmp(bytes, long_bytes, sizeof bytes) == 0);
}

static void is_refused(void) {
  uint8_t u8 = 7;
  uint32_t u32 = 7;
  char text[5] = "mark";
  CHECK(__cfc_get_u32(0, "NOWHERE", "u32", &u32) == CFC_ERR_NO_SECTION && u32 == 7);
  CHECK(__cfc_set_u32(0, "NOWHERE", "u32", 1) == CFC_ERR_NO_SECTION);
  CHECK(__cfc_get_u32(0, app, "no_such_key", &u32) == CFC_ERR_NO_KEY && u32 == 7);
  CHECK(__cfc_get_u8(0, app, "u16", &u8) == CFC_ERR_BAD_VALUE && u8 == 7);
  CHECK(__cfc_get_string(0, app, "string", text, sizeof text) == CFC_ERR_NO_ROOM &&
        strcmp(text, "mark") == 0);
  CHECK(__cfc_get_ip(0, app, "u32", &u32) == CFC_ERR_NOT_AN_ADDRESS && u32 == 7);
  /* By the service, not by the library: it could not be read back from flash. */
  CHECK(__cfc_set_string(0, app, "k", "") == CFC_ERR_BAD_ARGUMENT);
}

static void make_lan(lan_info* lan) {
  const lan_info made = {2,
                         UINT32_C(0x0A000005),
                         UINT32_C(0xFFFFFF00),
                         UINT32_C(0x0A0000FE),
                         UINT32_C(0x08080404),
                         UINT32_C(0xFFFFFFFF)};
  *lan = made;
}

static void make_sensors(sensors_cfg* sensors) {
  unsigned i;
  memset(sensors, 0, sizeof *sensors);
  for (i = 0; i < NUMBER_OF(sensors->sdata); ++i) {
    sprintf(sensors->sdata[i], "type=door,zone=%u", i);
    sprintf(sensors->sname[i], "room %u", 1000 - i);
  }
}

static void make_wireless(wireless_config* wireless) {
  memset(wireless, 0, sizeof *wireless);
  memset(wireless->essid, 'e', sizeof wireless->essid - 1);
  memcpy(wireless->apmac, mac, sizeof mac);
  strcpy(wireless->wepkey_4, "twenty-six characters here");
  wireless->beacon_interval = 100;
  wireless->key_select = UINT32_C(0xFFFFFFFE);
}

static void set_sections(void) {
  lan_info lan;
  static sensors_cfg sensors;
  wireless_config wireless;
  make_lan(&lan);
  make_sensors(&sensors);
  make_wireless(&wireless);
  CHECK(gui_set_lan_info(&lan) == CFC_OK);
  CHECK(set_sensors_cfg(&sensors) == CFC_OK);
  CHECK(gui_set_wireless_config(&wireless) == CFC_OK);
  CHECK(gui_wls_ac_add(mac) == CFC_OK);
}

static void sections_are_there(void) {
  lan_info lan;
  lan_info expected_lan;
  static sensors_cfg sensors;
  static sensors_cfg expected_sensors;
  wireless_config wireless;
  wireless_config expected_wireless;
  wls_mac_ac list;
  memset(&sensors, 0, sizeof sensors);
  memset(&wireless, 0, sizeof wireless);
  make_lan(&expected_lan);
  make_sensors(&expected_sensors);
  make_wireless(&expected_wireless);
  CHECK(gui_get_lan_info(&lan) == CFC_OK && memcmp(&lan, &expected_lan, sizeof lan) == 0);
  CHECK(get_sensors_cfg(&sensors) == CFC_OK &&
        memcmp(&sensors, &expected_sensors, sizeof sensors) == 0);
  CHECK(gui_get_wireless_config(&wireless) == CFC_OK &&
        memcmp(&wireless, &expected_wireless, sizeof wireless) == 0);
  CHECK(gui_get_wls_mac_ac(&list) == CFC_OK && memcmp(list.macFilters[0], mac, sizeof mac) == 0);
  CHECK(holds_text(0, "LAN", "LanGw", "10.0.0.254"));
  CHECK(holds_text(0, "SENSORS", "sname[100]", "room 900"));
}

static void everything_is_there(void) {
  values_are_there(0, app);
  CHECK(cfc_get_mutex() == CFC_OK);
  values_are_there(1, other_app);
  CHECK(cfc_put_mutex() == CFC_OK);
  the_longest_are_there();
  sections_are_there();
}

static void set(void) {
  CHECK(cfc_add_app_nosem(app) == CFC_OK);
  set_values(0, app);
  CHECK(cfc_add_app_nosem(app) == CFC_OK); /* keeps what is there */
  CHECK(cfc_get_mutex() == CFC_OK);
  CHECK(cfc_add_app_sem(other_app) == CFC_OK);
  set_values(1, other_app);
  CHECK(cfc_flush_all_sem() == CFC_OK);
  CHECK(cfc_put_mutex() == CFC_OK);
  set_the_longest();
  set_sections();
  is_refused();
  everything_is_there();
  CHECK(cfc_flush_all_nosem() == CFC_OK);
}

static void reset(void) {
  uint32_t ip = 0;
  uint8_t u8 = 7;
  CHECK(cfc_to_default() == CFC_OK);
  CHECK(__cfc_get_ip(0, "LAN", "LanIPAddr", &ip) == CFC_OK && ip == UINT32_C(0xC0A83E01));
  CHECK(__cfc_get_u8(0, app, "u8", &u8) == CFC_ERR_NO_SECTION && u8 == 7);
  CHECK(holds_text(0, "SENSORS", "sname[100]", ""));
}

int main(int argc, char** argv) {
  const char* const phase = argc == 2 ? argv[1] : "";
  fill_the_longest();
  if (strcmp(phase, "set") == 0) {
    set();
  } else if (strcmp(phase, "kept") == 0) {
    everything_is_there();
  } else if (strcmp(phase, "reset") == 0) {
    reset();
  } else {
    fprintf(stderr, "Usage: every_opcode set|kept|reset\n");
    return 2;
  }
  printf("%s, %u bits: %d checks, %d failed\n", phase, 8 * (unsigned)sizeof(void*), checks,
         failures);
  return failures == 0 ? 0 : 1;
}
