// What the C++ library would do with an exception: a program that is compiled without them ends.
//
// Memory comes from malloc, and a program that gets none says so and ends with status 1. The
// functions of namespace std are those that the library's headers call where they would throw: each
// is defined here, so that no part of the library that can throw is linked in.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <new>

#include "tools/cfc/exit_status.h"

namespace {

[[noreturn]] void end_with(const char* why) {
  for (const char* each : {"cfc: ", why, "\n"}) {
    if (write(STDERR_FILENO, each, std::strlen(each)) == -1) {
      break;
    }
  }
  _exit(static_cast<int>(cfc::exit_status::failed));
}

void* allocate(std::size_t size) {
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    end_with("there is no memory left");
  }
  return memory;
}

}  // namespace

void* operator new(std::size_t size) {
  return allocate(size);
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}

namespace std {

void __throw_bad_alloc() {
  end_with("there is no memory left");
}

void __throw_bad_array_new_length() {
  end_with("there is no memory left");
}

void __throw_length_error(const char* why) {
  end_with(why);
}

void __throw_logic_error(const char* why) {
  end_with(why);
}

void __throw_out_of_range_fmt(const char* why, ...) {
  end_with(why);
}

void __throw_bad_function_call() {
  end_with("an empty function was called");
}

}  // namespace std
