#include "store/child_process.h"

#include <proreflax/result.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "store/paths.h"

namespace proreflax {
namespace {

// Exit statuses of a child whose exec failed.
constexpr int exit_no_gzip = 224;
constexpr int exit_no_gunzip = 225;
constexpr int exit_no_flash_write = 226;
constexpr int exit_no_flash_read = 227;

/// Waits for a child; signals do not end the wait. `status` is unchanged when the wait fails.
void wait_for(pid_t child, int* status) {
  while (waitpid(child, status, 0) == -1 && errno == EINTR) {
  }
}

bool succeeded(int status) {
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

std::uint32_t config_run_writeflash(int write, const char* path) {
  const pid_t child = fork();
  if (child == -1) {
    return write != 0 ? CFC_ERR_FORK_FLASH_W : CFC_ERR_FORK_FLASH_R;
  }
  if (child == 0) {
    execl(flash_tool, flash_tool, write != 0 ? "-w" : "-r", path, nullptr);
    // Not exit(): it would flush the streams inherited from the application.
    _exit(write != 0 ? exit_no_flash_write : exit_no_flash_read);
  }
  int status = -1;
  wait_for(child, &status);
  if (succeeded(status)) {
    return CFC_OK;
  }
  return write != 0 ? CFC_ERR_FLASH_W : CFC_ERR_FLASH_R;
}

std::uint32_t config_run_gzip(int unpack, const char* path) {
  std::uint32_t result = CFC_OK;
  const pid_t child = fork();
  if (child == -1) {
    result = unpack != 0 ? CFC_ERR_FORK_GUNZIP : CFC_ERR_FORK_GZIP;
  }
  if (child == 0) {
    execl(multi_call_binary, unpack != 0 ? "gunzip" : "gzip", path, nullptr);
    _exit(unpack != 0 ? exit_no_gunzip : exit_no_gzip);
  }
  // After a failed fork `child` is -1, so this waits for any child. The status starts as success,
  // so that the result is the fork's code when the wait fails too.
  int status = 0;
  wait_for(child, &status);
  if (succeeded(status)) {
    return result;
  }
  return unpack != 0 ? CFC_ERR_GUNZIP : CFC_ERR_GZIP;
}

}  // namespace proreflax
