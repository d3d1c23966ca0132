// Replies for which the queue had no room, in the order in which they will be sent.
//
// There is at most one per client, so their number is limited by that of live processes: those of
// dead clients are removed with every sweep.
#ifndef PROREFLAX_SERVICE_REPLY_LIST_H
#define PROREFLAX_SERVICE_REPLY_LIST_H

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace proreflax {

struct kept_reply {
  kept_reply* next;
  std::size_t length;
  long type;  // together with the bytes after it, a message for msgsnd()
  char* text() { return reinterpret_cast<char*>(this + 1); }
};

class reply_list {
 public:
  reply_list() = default;
  ~reply_list() {
    remove_if([](long) { return true; });
  }
  reply_list(const reply_list&) = delete;
  reply_list& operator=(const reply_list&) = delete;

  bool empty() const { return first_ == nullptr; }
  kept_reply* first() const { return first_; }

  /// False when there is no memory.
  bool append(long type, const char* text, std::size_t length) {
    auto* const added = static_cast<kept_reply*>(std::malloc(sizeof(kept_reply) + length));
    if (added == nullptr) {
      return false;
    }
    *added = {.next = nullptr, .length = length, .type = type};
    std::memcpy(added->text(), text, length);
    kept_reply** link = &first_;
    while (*link != nullptr) {
      link = &(*link)->next;
    }
    *link = added;
    return true;
  }

  void remove_first() {
    kept_reply* const removed = first_;
    first_ = removed->next;
    std::free(removed);
  }

  /// Removes the replies whose type satisfies the condition.
  template <typename Condition>
  void remove_if(Condition condition) {
    for (kept_reply** link = &first_; *link != nullptr;) {
      if (condition((*link)->type)) {
        kept_reply* const removed = *link;
        *link = removed->next;
        std::free(removed);
      } else {
        link = &(*link)->next;
      }
    }
  }

 private:
  kept_reply* first_ = nullptr;
};

}  // namespace proreflax

#endif
