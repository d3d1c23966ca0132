// The access lock, held for as long as an object lives.
#ifndef PROREFLAX_SETTINGS_ACCESS_LOCK_H
#define PROREFLAX_SETTINGS_ACCESS_LOCK_H

#include <proreflax/config.h>

namespace proreflax::settings {

/// What the typed operations of config.h are told about the lock.
enum class lock_flag : int { take = 0, held = 1 };

class access_lock {
 public:
  access_lock() : result_{cfc_get_mutex()} {}
  ~access_lock() {
    if (held()) {
      cfc_put_mutex();
    }
  }
  access_lock(const access_lock&) = delete;
  access_lock& operator=(const access_lock&) = delete;

  bool held() const { return result_ == CFC_OK; }
  /// CFC_OK, or why the lock could not be had.
  std::uint32_t result() const { return result_; }

 private:
  std::uint32_t result_;
};

}  // namespace proreflax::settings

#endif
