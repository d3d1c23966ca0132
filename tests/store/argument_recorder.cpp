// Stands in for the programs that the store runs: writes the arguments it got, argv[0] included,
// one a line, to the device's /var/arguments.
#include <cstdio>

int main(int argc, char** argv) {
  std::FILE* const file = std::fopen(PROREFLAX_DEVICE_ROOT "/var/arguments", "w");
  if (file == nullptr) {
    return 1;
  }
  for (int i = 0; i < argc; ++i) {
    std::fprintf(file, "%s\n", argv[i]);
  }
  return std::fclose(file);
}
