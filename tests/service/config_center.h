// A device whose configuration service is started by a test.
#ifndef PROREFLAX_TESTS_SERVICE_CONFIG_CENTER_H
#define PROREFLAX_TESTS_SERVICE_CONFIG_CENTER_H

#include <gtest/gtest.h>
#include <proreflax/config.h>
#include <sys/msg.h>

#include <algorithm>
#include <string>

#include "tests/support/device_root.h"
#include "tests/support/request_queue.h"
#include "tests/support/service_process.h"
#include "transport/ipc_keys.h"

inline constexpr const char* factory =
    "[LAN]\nConnType=1\nLanIPAddr=192.168.62.1\n\n[WORK]\nspare=1\n";

class ConfigCenter : public testing::Test {
 protected:
  ConfigCenter() {
    device_root::clear();
    device_root::install_flash_tool();
    device_root::write("/etc/config-file.ini", factory);
  }

  static std::string get(const char* section, const char* key) {
    char value[256];
    const std::uint32_t result = __cfc_get_string(0, section, key, value, sizeof value);
    return result == 0 ? value : "result " + std::to_string(result);
  }

  static bool has_lock_or_queue() { return request_queue::keys_in_use(); }

  static std::size_t waiting() {
    msqid_ds state{};
    msgctl(msgget(proreflax::CFC_MSQ_KEY, 0), IPC_STAT, &state);
    return state.msg_qnum;
  }

  static bool send_raw(long type, const bytes& content, int flags = IPC_NOWAIT) {
    struct {
      long type;
      char text[8000];
    } message{type, {}};
    std::copy(content.begin(), content.end(), message.text);
    return msgsnd(msgget(proreflax::CFC_MSQ_KEY, 0), &message, content.size(), flags) == 0;
  }
};

#endif
