// The notice to whoever started the service, as that one receives it.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "tests/support/device_root.h"
#include "tests/support/service_process.h"

namespace {

/// A datagram socket with a name; "@" in front is the abstract namespace.
class listener {
 public:
  explicit listener(const std::string& name)
      : name_{name}, descriptor_{socket(AF_UNIX, SOCK_DGRAM, 0)} {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    name.copy(address.sun_path, sizeof address.sun_path - 1);
    if (name.front() == '@') {
      address.sun_path[0] = '\0';
    }
    const std::size_t length = offsetof(sockaddr_un, sun_path) + name.size();
    if (bind(descriptor_, reinterpret_cast<const sockaddr*>(&address),
             static_cast<socklen_t>(length)) != 0) {
      throw std::runtime_error(std::strerror(errno));
    }
  }
  ~listener() {
    close(descriptor_);
    unlink(name_.c_str());
  }
  listener(const listener&) = delete;
  listener& operator=(const listener&) = delete;

  /// The next notice, or nothing where none has come.
  std::string heard() const {
    char text[64];
    ssize_t length = -1;
    eventually([&] { return (length = recv(descriptor_, text, sizeof text, MSG_DONTWAIT)) >= 0; });
    return length > 0 ? std::string(text, static_cast<std::size_t>(length)) : "";
  }
  bool has_heard_more() const {
    char text[64];
    return recv(descriptor_, text, sizeof text, MSG_DONTWAIT) >= 0;
  }

 private:
  std::string name_;
  int descriptor_;
};

class ReadyNotice : public testing::Test {
 protected:
  ReadyNotice() {
    device_root::clear();
    device_root::install_flash_tool();
    device_root::write("/etc/config-file.ini", "[LAN]\nConnType=1\n");
  }
  ~ReadyNotice() override { unsetenv("NOTIFY_SOCKET"); }

  // Short: a folder of the build tree may be longer than the name of a socket can be.
  std::string path = "/tmp/proreflax-notice." + std::to_string(getpid());
};

}  // namespace

TEST_F(ReadyNotice, comes_once_by_a_path) {
  const listener starter{path};
  setenv("NOTIFY_SOCKET", path.c_str(), 1);
  {
    const service_process service;
    EXPECT_EQ(starter.heard(), "READY=1");
  }
  EXPECT_FALSE(starter.has_heard_more());
}

TEST_F(ReadyNotice, comes_by_an_abstract_name) {
  const listener starter{"@" + path};
  setenv("NOTIFY_SOCKET", ("@" + path).c_str(), 1);
  const service_process service;
  EXPECT_EQ(starter.heard(), "READY=1");
}

TEST_F(ReadyNotice, does_not_come_from_a_service_that_cannot_start) {
  const listener starter{"@" + path};
  setenv("NOTIFY_SOCKET", ("@" + path).c_str(), 1);
  device_root::write("/etc/config-file.ini", "no section\n");
  service_process service;
  EXPECT_EQ(service.status(), 1);
  EXPECT_FALSE(starter.has_heard_more());
}

TEST_F(ReadyNotice, to_nobody_or_to_a_name_that_is_too_long_is_a_warning) {
  for (const std::string& name : {path, std::string(200, 'x')}) {
    setenv("NOTIFY_SOCKET", name.c_str(), 1);
    service_process service;
    EXPECT_EQ(service.end(), 0);
    EXPECT_NE(service.log().find("warning"), std::string::npos) << service.log();
    EXPECT_NE(service.log().find("NOTIFY_SOCKET"), std::string::npos) << service.log();
  }
}

TEST_F(ReadyNotice, that_nobody_asked_for_is_not_mentioned) {
  service_process service;
  EXPECT_EQ(service.end(), 0);
  EXPECT_EQ(service.log().find("NOTIFY_SOCKET"), std::string::npos) << service.log();
}
