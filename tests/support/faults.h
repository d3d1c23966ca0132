// A counting fault injector.
//
// Test programs are linked so that the calls below go through here when the code under test makes
// them. Nothing fails until a test asks for it; then the n-th call of one kind fails once.
//
//   for (int n = 1; n < 100; ++n) {
//     faults::fail(faults::call::malloc, n);
//     const auto result = operation();
//     if (!faults::happened()) break;   // the operation makes fewer than n such calls
//     EXPECT_EQ(result, ...);
//   }
#ifndef PROREFLAX_TESTS_SUPPORT_FAULTS_H
#define PROREFLAX_TESTS_SUPPORT_FAULTS_H

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace faults {

enum class call {
  malloc,  // calloc and realloc too
  semget,
  semop,
  msgget,
  msgsnd,
  msgrcv,
  fork,
  execl,
  waitpid,
  unlink,
  fopen,
  fgets,
  fread,
  fwrite,
  fflush,
  fclose,
  openat,
  mkdirat,
  flock,
  fstat,
  lstat,
  pread,
  pwrite,
  ftruncate,
  fsync,
  rename,
  open,
  read,
  lseek,
  write,
  close,
  kinds
};

/// Makes the n-th call of a kind from now fail, once,
/// with this errno. Forgets what was asked before.
void fail(call kind, int nth, int error = EIO);

/// Makes the n-th call, of whatever kind, end the process with _exit(exit_cut) once it is done: the
/// power is cut.
void cut_after(int nth);
inline constexpr int exit_cut = 77;

/// Whether the failure asked for has happened.
bool happened();

/// From now on pread and pwrite move at most so many bytes a call; 0: as many as they are asked to.
void shorten_transfers(std::size_t most_bytes);

/// A change that a call made to a disk, or a promise that what was changed is on it.
struct disk_effect {
  enum class kind { folder_made, file_made, emptied, written, renamed, removed, synced };
  kind what;
  std::string path;
  std::string to = {};       // renamed: the new path
  std::uint64_t offset = 0;  // written
  std::string bytes = {};    // written
};

/// Notes the effects of the calls below in `effects`, until told nullptr. Paths are absolute.
/// fsync never asks the disk in these programs: a disk that loses what was not synced is played by
/// tests/support/power_cut.h, and waiting for a real one would prove nothing.
void note_effects(std::vector<disk_effect>* effects);

/// How many calls of a kind were made since the last reset() or fail().
int calls(call kind);

/// How many bytes the last malloc or calloc asked for.
std::size_t bytes_of_last_malloc();

/// The mode that the last fopen was called with.
std::string mode_of_last_fopen();

/// No more failures; counts start at 0.
void reset();

/// Memory that malloc and calloc gave the code under test and that was not yet freed cannot be told
/// here; the sanitizer build reports leaks when a test's process ends.

}  // namespace faults

#endif
