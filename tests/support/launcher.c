/* Stands in the place of an emulated program, under its name, and starts it with the same arguments
 * and name: emulated programs start each other as they would on their own machine. */
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

int main(int count, char** arguments) {
  static const char* const emulator[] = {EMULATOR, "-0"};
  const char** const row =
      calloc(sizeof emulator / sizeof *emulator + (size_t)count + 2, sizeof *row);
  int length = 0;
  if (row == NULL) {
    perror(arguments[0]);
    return 127;
  }
  for (unsigned i = 0; i < sizeof emulator / sizeof *emulator; ++i) {
    row[length++] = emulator[i];
  }
  row[length++] = arguments[0];
  row[length++] = PROGRAM;
  for (int i = 1; i < count; ++i) {
    row[length++] = arguments[i];
  }
  execvp(row[0], (char* const*)row);
  perror(row[0]);
  return 127;
}
