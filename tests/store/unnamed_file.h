// A file without a name: it lives in memory, is opened again through its path, and goes with the
// object. And standard output, turned into one for a while.
#ifndef PROREFLAX_TESTS_STORE_UNNAMED_FILE_H
#define PROREFLAX_TESTS_STORE_UNNAMED_FILE_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>
#include <string_view>

class unnamed_file {
 public:
  explicit unnamed_file(std::string_view text = "") : descriptor_{memfd_create("test", 0)} {
    if (descriptor_ == -1 ||
        ::write(descriptor_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
      throw std::runtime_error("cannot make a file in memory");
    }
  }
  ~unnamed_file() { close(descriptor_); }
  unnamed_file(const unnamed_file&) = delete;
  unnamed_file& operator=(const unnamed_file&) = delete;

  int descriptor() const { return descriptor_; }
  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

  std::string content() const {
    std::string all(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)), '\0');
    const ssize_t bytes = pread(descriptor_, all.data(), all.size(), 0);
    all.resize(bytes < 0 ? 0 : static_cast<std::size_t>(bytes));
    return all;
  }

 private:
  int descriptor_;
};

class captured_stdout {
 public:
  captured_stdout() {
    std::fflush(stdout);
    dup2(file_.descriptor(), STDOUT_FILENO);
  }
  ~captured_stdout() {
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
  }
  captured_stdout(const captured_stdout&) = delete;
  captured_stdout& operator=(const captured_stdout&) = delete;

  std::string text() const {
    std::fflush(stdout);
    return file_.content();
  }

 private:
  unnamed_file file_;
  int saved_ = dup(STDOUT_FILENO);
};

#endif
