/* result_text.h as C99, for result_text_test.cpp. */
#include <proreflax/result_text.h>

#include "tests/library/result_text_in_c.h"

const char* result_name_in_c(uint32_t code) {
  return cfc_result_name(code);
}

const char* result_text_in_c(uint32_t code) {
  return cfc_result_text(code);
}
