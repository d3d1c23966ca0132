/*
 * Shows the device's names, or gives it another host name and keeps that over a restart.
 *
 *   hostname
 *   hostname NAME
 */
#include <proreflax/config.h>
#include <proreflax/result_text.h>
#include <proreflax/sections.h>
#include <stdio.h>
#include <string.h>

static int fail(const char* what, uint32_t result) {
  fprintf(stderr, "hostname: %s: %s (%lu)\n", what, cfc_result_text(result), (unsigned long)result);
  return 1;
}

static int show(const system_uts_info* names) {
  printf("host name    %s\n", names->hostname);
  printf("domain name  %s\n", names->domainname);
  printf("web port     %u\n", (unsigned)names->webs_port);
  return 0;
}

static int change(system_uts_info* names, const char* hostname) {
  const size_t bytes = strlen(hostname) + 1;
  uint32_t result;
  if (bytes > sizeof names->hostname) {
    fprintf(stderr, "hostname: '%s' has more than %u characters\n", hostname,
            (unsigned)(sizeof names->hostname - 1));
    return 2;
  }
  memcpy(names->hostname, hostname, bytes);
  result = gui_set_system_uts_info(names);
  if (result != CFC_OK) {
    return fail("cannot write section SYSTEMUTS", result);
  }
  result = cfc_flush_all_nosem();
  return result == CFC_OK ? 0 : fail("cannot write to flash", result);
}

int main(int argc, char** argv) {
  system_uts_info names;
  const uint32_t result = gui_get_system_uts_info(&names);
  if (result != CFC_OK) {
    return fail("cannot read section SYSTEMUTS", result);
  }
  return argc > 1 ? change(&names, argv[1]) : show(&names);
}
