#include "tests/support/faults.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <vector>

namespace faults {
namespace {

constexpr auto kinds = static_cast<std::size_t>(call::kinds);

struct state {
  std::array<int, kinds> made{};
  call failing = call::kinds;
  int nth = 0;
  int error = 0;
  bool happened = false;
  int until_cut = 0;
  std::size_t malloc_bytes = 0;
  std::string fopen_mode = {};
};

state now;
std::size_t longest_transfer = 0;
std::vector<disk_effect>* noted = nullptr;

std::size_t transfer_size(std::size_t wanted) {
  return longest_transfer == 0 ? wanted : std::min(wanted, longest_transfer);
}

std::string path_of(int descriptor) {
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor));
}

std::string path_in(int folder, const char* name) {
  const std::filesystem::path path{name};
  return path.is_absolute()
             ? path
             : (folder == AT_FDCWD ? std::filesystem::current_path() : path_of(folder) / path);
}

void note(const disk_effect& effect) {
  if (noted != nullptr) {
    noted->push_back(effect);
  }
}

/// Counts a call; true when it is the one that shall fail, with errno set.
bool fails(call kind) {
  const int made = ++now.made[static_cast<std::size_t>(kind)];
  if (kind == now.failing && made == now.nth) {
    now.happened = true;
    errno = now.error;
    return true;
  }
  return false;
}

/// The result of a call that was made, unless the power is cut behind it.
template <typename Result>
Result done(Result result) {
  if (now.until_cut > 0 && --now.until_cut == 0) {
    _exit(exit_cut);
  }
  return result;
}

}  // namespace

void fail(call kind, int nth, int error) {
  now = {};
  now.failing = kind;
  now.nth = nth;
  now.error = error;
}

void cut_after(int nth) {
  now = {};
  now.until_cut = nth;
}

bool happened() {
  return now.happened;
}

void shorten_transfers(std::size_t most_bytes) {
  longest_transfer = most_bytes;
}

void note_effects(std::vector<disk_effect>* effects) {
  noted = effects;
}

int calls(call kind) {
  return now.made[static_cast<std::size_t>(kind)];
}

std::size_t bytes_of_last_malloc() {
  return now.malloc_bytes;
}

std::string mode_of_last_fopen() {
  return now.fopen_mode;
}

void reset() {
  now = {};
}

}  // namespace faults

using faults::call;
using faults::done;
using faults::fails;
using faults::note;
using faults::path_in;
using faults::path_of;
using effect = faults::disk_effect::kind;

extern "C" {

void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
  faults::now.malloc_bytes = size;
  return fails(call::malloc) ? nullptr : __real_malloc(size);
}

void* __real_realloc(void* memory, std::size_t size);
void* __wrap_realloc(void* memory, std::size_t size) {
  return fails(call::malloc) ? nullptr : __real_realloc(memory, size);
}

void* __real_calloc(std::size_t count, std::size_t size);
void* __wrap_calloc(std::size_t count, std::size_t size) {
  faults::now.malloc_bytes = count * size;
  return fails(call::malloc) ? nullptr : __real_calloc(count, size);
}

int __real_semget(key_t key, int count, int flags);
int __wrap_semget(key_t key, int count, int flags) {
  return fails(call::semget) ? -1 : done(__real_semget(key, count, flags));
}

int __real_semop(int id, sembuf* operations, std::size_t count);
int __wrap_semop(int id, sembuf* operations, std::size_t count) {
  return fails(call::semop) ? -1 : done(__real_semop(id, operations, count));
}

int __real_msgget(key_t key, int flags);
int __wrap_msgget(key_t key, int flags) {
  return fails(call::msgget) ? -1 : done(__real_msgget(key, flags));
}

int __real_msgsnd(int id, const void* message, std::size_t size, int flags);
int __wrap_msgsnd(int id, const void* message, std::size_t size, int flags) {
  return fails(call::msgsnd) ? -1 : done(__real_msgsnd(id, message, size, flags));
}

ssize_t __real_msgrcv(int id, void* message, std::size_t size, long type, int flags);
ssize_t __wrap_msgrcv(int id, void* message, std::size_t size, long type, int flags) {
  return fails(call::msgrcv) ? -1 : done(__real_msgrcv(id, message, size, type, flags));
}

pid_t __real_fork();
pid_t __wrap_fork() {
  return fails(call::fork) ? -1 : done(__real_fork());
}

int __wrap_execl(const char* path, const char* argument, ...) {
  if (fails(call::execl)) {
    return -1;
  }
  std::vector<char*> arguments;
  std::va_list rest;
  va_start(rest, argument);
  for (const char* next = argument; next != nullptr; next = va_arg(rest, const char*)) {
    arguments.push_back(const_cast<char*>(next));
  }
  va_end(rest);
  arguments.push_back(nullptr);
  return execv(path, arguments.data());
}

pid_t __real_waitpid(pid_t child, int* status, int options);
pid_t __wrap_waitpid(pid_t child, int* status, int options) {
  if (fails(call::waitpid)) {
    // A wait fails for good only once the child has ended, so that what the child does is done. It
    // stays to be waited for.
    if (faults::now.error != EINTR) {
      siginfo_t unused;
      waitid(child > 0 ? P_PID : P_ALL, static_cast<id_t>(child), &unused, WEXITED | WNOWAIT);
      errno = faults::now.error;
    }
    return -1;
  }
  return done(__real_waitpid(child, status, options));
}

int __real_unlink(const char* path);
int __wrap_unlink(const char* path) {
  if (fails(call::unlink)) {
    return -1;
  }
  const int result = __real_unlink(path);
  if (result == 0) {
    note({effect::removed, path_in(AT_FDCWD, path)});
  }
  return done(result);
}

std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __wrap_fopen(const char* path, const char* mode) {
  faults::now.fopen_mode = mode;
  return fails(call::fopen) ? nullptr : done(__real_fopen(path, mode));
}

char* __real_fgets(char* line, int size, std::FILE* stream);
char* __wrap_fgets(char* line, int size, std::FILE* stream) {
  return fails(call::fgets) ? nullptr : done(__real_fgets(line, size, stream));
}

std::size_t __real_fread(void* data, std::size_t size, std::size_t count, std::FILE* stream);
std::size_t __wrap_fread(void* data, std::size_t size, std::size_t count, std::FILE* stream) {
  return fails(call::fread) ? 0 : done(__real_fread(data, size, count, stream));
}

std::size_t __real_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* stream);
std::size_t __wrap_fwrite(const void* data, std::size_t size, std::size_t count,
                          std::FILE* stream) {
  return fails(call::fwrite) ? 0 : done(__real_fwrite(data, size, count, stream));
}

int __real_fflush(std::FILE* stream);
int __wrap_fflush(std::FILE* stream) {
  return fails(call::fflush) ? EOF : done(__real_fflush(stream));
}

int __real_fclose(std::FILE* stream);
int __wrap_fclose(std::FILE* stream) {
  if (fails(call::fclose)) {
    __real_fclose(stream);  // a stream whose close fails is closed all the same
    errno = faults::now.error;
    return EOF;
  }
  return done(__real_fclose(stream));
}

int __real_openat(int folder, const char* name, int flags, ...);
int __wrap_openat(int folder, const char* name, int flags, ...) {
  if (fails(call::openat)) {
    return -1;
  }
  std::va_list rest;
  va_start(rest, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(rest, mode_t) : 0;
  va_end(rest);
  const bool there = faccessat(folder, name, F_OK, 0) == 0;
  const int opened = __real_openat(folder, name, flags, mode);
  if (opened != -1 && !there) {
    note({effect::file_made, path_in(folder, name)});
  }
  return done(opened);
}

int __real_mkdirat(int folder, const char* name, mode_t mode);
int __wrap_mkdirat(int folder, const char* name, mode_t mode) {
  if (fails(call::mkdirat)) {
    return -1;
  }
  const int result = __real_mkdirat(folder, name, mode);
  if (result == 0) {
    note({effect::folder_made, path_in(folder, name)});
  }
  return done(result);
}

int __real_flock(int descriptor, int operation);
int __wrap_flock(int descriptor, int operation) {
  return fails(call::flock) ? -1 : done(__real_flock(descriptor, operation));
}

int __real_fstat(int descriptor, struct stat* about);
int __wrap_fstat(int descriptor, struct stat* about) {
  return fails(call::fstat) ? -1 : done(__real_fstat(descriptor, about));
}

int __real_lstat(const char* path, struct stat* about);
int __wrap_lstat(const char* path, struct stat* about) {
  return fails(call::lstat) ? -1 : done(__real_lstat(path, about));
}

ssize_t __real_pread(int descriptor, void* bytes, std::size_t count, off_t offset);
ssize_t __wrap_pread(int descriptor, void* bytes, std::size_t count, off_t offset) {
  if (fails(call::pread)) {
    return -1;
  }
  return done(__real_pread(descriptor, bytes, faults::transfer_size(count), offset));
}

ssize_t __real_pwrite(int descriptor, const void* bytes, std::size_t count, off_t offset);
ssize_t __wrap_pwrite(int descriptor, const void* bytes, std::size_t count, off_t offset) {
  if (fails(call::pwrite)) {
    return -1;
  }
  const ssize_t put = __real_pwrite(descriptor, bytes, faults::transfer_size(count), offset);
  if (put > 0) {
    note({effect::written,
          path_of(descriptor),
          "",
          static_cast<std::uint64_t>(offset),
          {static_cast<const char*>(bytes), static_cast<std::size_t>(put)}});
  }
  return done(put);
}

int __real_ftruncate(int descriptor, off_t length);
int __wrap_ftruncate(int descriptor, off_t length) {
  if (fails(call::ftruncate)) {
    return -1;
  }
  const int result = __real_ftruncate(descriptor, length);
  if (result == 0) {
    note({effect::emptied, path_of(descriptor)});
  }
  return done(result);
}

int __wrap_fsync(int descriptor) {
  if (fails(call::fsync) || fcntl(descriptor, F_GETFD) == -1) {
    return -1;
  }
  note({effect::synced, path_of(descriptor)});
  return done(0);
}

int __real_rename(const char* from, const char* to);
int __wrap_rename(const char* from, const char* to) {
  if (fails(call::rename)) {
    return -1;
  }
  const int result = __real_rename(from, to);
  if (result == 0) {
    note({effect::renamed, path_in(AT_FDCWD, from), path_in(AT_FDCWD, to)});
  }
  return done(result);
}

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
  if (fails(call::open)) {
    return -1;
  }
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0) {
    std::va_list rest;
    va_start(rest, flags);
    mode = va_arg(rest, mode_t);
    va_end(rest);
  }
  return done(__real_open(path, flags, mode));
}

ssize_t __real_read(int descriptor, void* buffer, std::size_t size);
ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size) {
  return fails(call::read) ? -1 : done(__real_read(descriptor, buffer, size));
}

off_t __real_lseek(int descriptor, off_t offset, int whence);
off_t __wrap_lseek(int descriptor, off_t offset, int whence) {
  return fails(call::lseek) ? -1 : done(__real_lseek(descriptor, offset, whence));
}

ssize_t __real_write(int descriptor, const void* data, std::size_t size);
ssize_t __wrap_write(int descriptor, const void* data, std::size_t size) {
  return fails(call::write) ? -1 : done(__real_write(descriptor, data, size));
}

int __real_close(int descriptor);
int __wrap_close(int descriptor) {
  if (fails(call::close)) {
    __real_close(descriptor);  // a descriptor whose close fails is closed all the same
    errno = faults::now.error;
    return -1;
  }
  return done(__real_close(descriptor));
}
}
