/* Stands in the place of an emulated program, under its name, and starts it with the same arguments
 * and name: emulated programs start each other as they would on their own machine. */
#include <stdio.h>
#include <unistd.h>

int main(int count, char** arguments) {
  static const char* const emulator[] = {EMULATOR, "-0"};
  const char* row[1024];
  int length = 0;
  for (unsigned i = 0; i < sizeof emulator / sizeof *emulator; ++i) {
    row[length++] = emulator[i];
  }
  row[length++] = arguments[0];
  row[length++] = PROGRAM;
  for (int i = 1; i < count && length < 1023; ++i) {
    row[length++] = arguments[i];
  }
  row[length] = NULL;
  execvp(row[0], (char* const*)row);
  perror(row[0]);
  return 127;
}
