#include "tests/support/faults.h"

#include <sys/msg.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
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
};

state now;

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

int calls(call kind) {
  return now.made[static_cast<std::size_t>(kind)];
}

std::size_t bytes_of_last_malloc() {
  return now.malloc_bytes;
}

void reset() {
  now = {};
}

}  // namespace faults

using faults::call;
using faults::done;
using faults::fails;

extern "C" {

void* __real_malloc(std::size_t size);
void* __wrap_malloc(std::size_t size) {
  faults::now.malloc_bytes = size;
  return fails(call::malloc) ? nullptr : __real_malloc(size);
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
  return fails(call::unlink) ? -1 : done(__real_unlink(path));
}

std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __wrap_fopen(const char* path, const char* mode) {
  return fails(call::fopen) ? nullptr : done(__real_fopen(path, mode));
}

char* __real_fgets(char* line, int size, std::FILE* stream);
char* __wrap_fgets(char* line, int size, std::FILE* stream) {
  return fails(call::fgets) ? nullptr : done(__real_fgets(line, size, stream));
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
}
