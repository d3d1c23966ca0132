// The examples, run as the programs that they are.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>
#include <string>

#include "tests/support/child.h"
#include "tests/support/scripted_service.h"

using testing::Contains;
using testing::Field;
using testing::HasSubstr;

namespace {

class Examples : public testing::TestWithParam<const char*> {
 protected:
  Examples() {
    service.holds("SYSTEMUTS", "hostname", "ipcam");
    service.holds("SYSTEMUTS", "domainname", "localdomain");
    service.holds("SYSTEMUTS", "realm_name", "Network Camera");
    service.holds("SYSTEMUTS", "webs_port", "0x0050");
    service.holds("LAN", "ConnType", "0x00000000");
    for (const char* key : {"LanIPAddr", "LanNetmask", "LanGw", "DnsSrv1", "DnsSrv2"}) {
      service.holds("LAN", key, "10.0.0.1");
    }
  }

  scripted_service service;
};

/// A program of the examples with its output in a pipe. Ended when this is destroyed.
class running {
 public:
  running(const std::string& name, const char* argument) {
    int ends[2];
    if (pipe(ends) != 0) {
      throw std::runtime_error("no pipe");
    }
    const std::string path = PROREFLAX_BINARY_DIR "/examples/" + name;
    child_ = start_child([&] {
      dup2(ends[1], STDOUT_FILENO);
      dup2(ends[1], STDERR_FILENO);
      close(ends[0]);
      close(ends[1]);
      execl(path.c_str(), name.c_str(), argument, nullptr);
      return 127;
    });
    close(ends[1]);
    output_ = fdopen(ends[0], "r");
  }

  ~running() {
    if (child_ != -1) {
      kill(child_, SIGTERM);
      wait();
    }
    std::fclose(output_);
  }

  /// The next line, without its end; empty at the end of the output.
  std::string line() {
    char text[200] = "";
    if (std::fgets(text, sizeof text, output_) == nullptr) {
      return "";
    }
    std::string whole{text};
    whole.pop_back();
    return whole;
  }

  int wait() {
    const int status = wait_for_child(child_);
    child_ = -1;
    return status;
  }

 private:
  pid_t child_ = -1;
  std::FILE* output_ = nullptr;
};

}  // namespace

TEST_P(Examples, shows_the_names) {
  running program{GetParam(), nullptr};
  EXPECT_EQ(program.line(), "host name    ipcam");
  EXPECT_EQ(program.line(), "domain name  localdomain");
  EXPECT_EQ(program.line(), "web port     80");
  EXPECT_EQ(program.wait(), 0);
}

TEST_P(Examples, changes_the_host_name_and_flushes) {
  running program{GetParam(), "garden"};
  EXPECT_EQ(program.wait(), 0);
  EXPECT_EQ(service.value("SYSTEMUTS", "hostname"), "garden");
  EXPECT_EQ(service.value("SYSTEMUTS", "realm_name"), "Network Camera");
  EXPECT_THAT(service.take_requests(), Contains(Field(&seen_request::operation, 12U)).Times(1));
}

TEST_P(Examples, refuses_a_name_that_does_not_fit) {
  running program{GetParam(), "a-name-of-32-characters-is-too-long"};
  EXPECT_NE(program.line().find("has more than 31 characters"), std::string::npos);
  EXPECT_NE(program.wait(), 0);
  EXPECT_EQ(service.value("SYSTEMUTS", "hostname"), "ipcam");
}

TEST_P(Examples, tells_which_section_cannot_be_read) {
  service.lacks("SYSTEMUTS", "webs_port");
  running program{GetParam(), nullptr};
  EXPECT_THAT(program.line(), HasSubstr("cannot read section SYSTEMUTS: the section holds no such "
                                        "key (201)"));
  EXPECT_EQ(program.wait(), 1);
}

INSTANTIATE_TEST_SUITE_P(Both, Examples, testing::Values("hostname", "hostname_cpp"));

using Watcher = Examples;

TEST_F(Watcher, prints_the_addresses_and_then_what_changed) {
  running program{"watch_lan", "1"};
  EXPECT_EQ(program.line(), "address 10.0.0.1");
  for (const char* line :
       {"netmask 10.0.0.1", "gateway 10.0.0.1", "dns1 10.0.0.1", "dns2 10.0.0.1"}) {
    EXPECT_EQ(program.line(), line);
  }
  service.holds("LAN", "LanGw", "10.0.0.254");
  EXPECT_EQ(program.line(), "gateway 10.0.0.1 -> 10.0.0.254");
}
