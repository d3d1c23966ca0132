// A flash tool that a test can signal while it works: it writes its process id to /etc/tool, waits
// for /etc/go, and becomes the real tool. Unlike a shell it leaves its signal mask alone.
#include <unistd.h>

#include <cstdio>

int main(int /*argc*/, char** argv) {
  constexpr char part[] = PROREFLAX_DEVICE_ROOT "/etc/tool.part";
  std::FILE* const file = std::fopen(part, "w");
  if (file == nullptr) {
    return 1;
  }
  std::fprintf(file, "%d", static_cast<int>(getpid()));
  std::fclose(file);
  if (std::rename(part, PROREFLAX_DEVICE_ROOT "/etc/tool") != 0) {
    return 1;
  }
  while (access(PROREFLAX_DEVICE_ROOT "/etc/go", F_OK) != 0) {
    usleep(5000);
  }
  execv(PROREFLAX_DEVICE_ROOT "/programs/writeflash", argv);
  return 1;
}
