#include "service/ready_notice.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "service/log.h"

namespace proreflax {
namespace {

constexpr std::string_view ready = "READY=1";

bool send_to(const sockaddr_un& address, std::size_t name_length) {
  const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor == -1) {
    return false;
  }
  const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name_length);
  const bool sent = sendto(descriptor, ready.data(), ready.size(), MSG_NOSIGNAL,
                           reinterpret_cast<const sockaddr*>(&address), length) != -1;
  close(descriptor);
  return sent;
}

}  // namespace

void send_ready_notice() {
  const char* const name = std::getenv("NOTIFY_SOCKET");
  if (name == nullptr || *name == '\0') {
    return;
  }
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::size_t length = std::strlen(name);
  if (length >= sizeof address.sun_path) {
    log_line(log_level::warning, "NOTIFY_SOCKET is too long");
    return;
  }
  std::memcpy(address.sun_path, name, length);
  if (name[0] == '@') {
    address.sun_path[0] = '\0';
  }
  if (!send_to(address, length)) {
    log_line(log_level::warning, "no notice to NOTIFY_SOCKET: %s", std::strerror(errno));
  }
}

}  // namespace proreflax
