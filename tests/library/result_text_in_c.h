/* What a C program gets from result_text.h. */
#ifndef PROREFLAX_TESTS_LIBRARY_RESULT_TEXT_IN_C_H
#define PROREFLAX_TESTS_LIBRARY_RESULT_TEXT_IN_C_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

const char* result_name_in_c(uint32_t code);
const char* result_text_in_c(uint32_t code);

#ifdef __cplusplus
}
#endif

#endif
