// A set of message types that grows as long as memory is available.
#ifndef PROREFLAX_SERVICE_TYPE_SET_H
#define PROREFLAX_SERVICE_TYPE_SET_H

#include <cstddef>
#include <cstdlib>
#include <utility>

namespace proreflax {

class type_set {
 public:
  type_set() = default;
  ~type_set() { std::free(types_); }
  type_set(const type_set&) = delete;
  type_set& operator=(const type_set&) = delete;

  bool holds(long type) const {
    for (std::size_t i = 0; i < size_; ++i) {
      if (types_[i] == type) {
        return true;
      }
    }
    return false;
  }

  std::size_t size() const { return size_; }

  /// False when there is no memory.
  bool add(long type) {
    if (size_ == room_ && !grow()) {
      return false;
    }
    types_[size_++] = type;
    return true;
  }

  void clear() { size_ = 0; }

  void swap(type_set& other) {
    std::swap(types_, other.types_);
    std::swap(size_, other.size_);
    std::swap(room_, other.room_);
  }

 private:
  bool grow() {
    const std::size_t larger = room_ == 0 ? 64 : 2 * room_;
    void* const moved = std::realloc(types_, larger * sizeof *types_);
    if (moved == nullptr) {
      return false;
    }
    types_ = static_cast<long*>(moved);
    room_ = larger;
    return true;
  }

  long* types_ = nullptr;
  std::size_t size_ = 0;
  std::size_t room_ = 0;
};

}  // namespace proreflax

#endif
