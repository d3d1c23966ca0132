/* What `cfc get WIRELESS beacon_interval` does, as a C program that does nothing else. */
#include <proreflax/config.h>
#include <stdio.h>

int main(void) {
  char value[257];
  if (__cfc_get_string(0, "WIRELESS", "beacon_interval", value, sizeof value) != CFC_OK) {
    return 1;
  }
  return puts(value) < 0;
}
