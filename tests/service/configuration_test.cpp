// What happens to the saved configuration when the flash tool fails, or signals reach it.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "tests/service/config_center.h"
#include "tests/support/files.h"

using testing::HasSubstr;
using testing::Not;

namespace {

class Configuration : public ConfigCenter {
 protected:
  /// A flash with LAN ConnType=7 saved, and the service that saved it gone.
  static void save_seven() {
    service_process service;
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
    ASSERT_EQ(service.end(), 0) << service.log();
  }

  /// A flash tool whose reads fail in one way, whose writes are noted in /etc/writes and done.
  static void install_failing_read(const std::string& failure) {
    device_root::install_flash_script("if [ \"$1\" = -r ]; then " + failure +
                                      "; fi\n"
                                      "echo write >>\"${0%/*}/../etc/writes\"\n"
                                      "exec \"${0%/*}/../programs/writeflash\" \"$@\"");
  }

  /// A flash tool that shows its process id in /etc/tool and works once there is /etc/go.
  static void install_slow_flash_tool() {
    unlink(device_root::path("/sbin/writeflash").c_str());
    std::filesystem::create_symlink(SLOW_FLASH_TOOL, device_root::path("/sbin/writeflash"));
  }

  /// What cfc prints.
  static std::string cfc(const std::string& arguments) {
    const std::string command = device_root::path("/programs/cfc").string() + " " + arguments;
    std::FILE* const pipe = popen(command.c_str(), "r");
    char text[4096] = "";
    const std::size_t length = fread(text, 1, sizeof text, pipe);
    pclose(pipe);
    return {text, length};
  }

  static std::string status() { return device_root::read("/run/proreflax/status").value_or(""); }
};

}  // namespace

TEST_F(Configuration, that_could_not_be_read_is_not_overwritten) {
  save_seven();
  for (const char* failure : {"exit 1", "exit 2", "exit 4", "kill -KILL $$", "exit 227"}) {
    install_failing_read(failure);
    {
      service_process service;
      EXPECT_EQ(get("LAN", "ConnType"), "1") << "the factory settings are served";
      EXPECT_THAT(service.log(), HasSubstr("could not be read")) << failure;
      EXPECT_THAT(status(), HasSubstr("source=factory\nflash=unreadable\n"));
      EXPECT_THAT(cfc("status"), HasSubstr("the saved configuration could not be read"));
      EXPECT_EQ(cfc_flush_all_nosem(), 0U) << "nothing was set";
      EXPECT_EQ(service.end(), 0) << service.log();
    }
    EXPECT_FALSE(device_root::exists("/etc/writes")) << failure;
    device_root::install_flash_tool();
    const service_process later;
    EXPECT_EQ(get("LAN", "ConnType"), "0x07") << failure;
    EXPECT_THAT(status(), HasSubstr("source=flash\nflash=ok\n"));
    EXPECT_THAT(cfc("status"), HasSubstr("configuration: loaded from flash\n"));
  }
}

TEST_F(Configuration, is_read_once_as_a_second_read_might_fail) {
  save_seven();
  install_failing_read(
      "reads=\"${0%/*}/../etc/reads\"; if [ -e \"$reads\" ]; then exit 1; fi; : >\"$reads\"; "
      "exec \"${0%/*}/../programs/writeflash\" \"$@\"");
  service_process service;
  EXPECT_EQ(get("LAN", "ConnType"), "0x07");
  EXPECT_THAT(status(), HasSubstr("source=flash\nflash=ok\n"));
  EXPECT_FALSE(device_root::exists("/sbin/config-file.tmp"));
  EXPECT_EQ(service.end(), 0) << service.log();
  EXPECT_FALSE(device_root::exists("/etc/writes"));
}

TEST_F(Configuration, whose_copy_cannot_be_read_back_is_not_overwritten) {
  for (const char* copying : {"exit 0", "rm -f \"$2\"; mkdir \"$2\"; exit 0"}) {
    device_root::clear();
    device_root::write("/etc/config-file.ini", factory);
    install_failing_read(copying);
    service_process service;
    EXPECT_EQ(get("LAN", "ConnType"), "1");
    EXPECT_THAT(status(), HasSubstr("source=factory\nflash=unreadable\n")) << copying;
    EXPECT_THAT(
        service.log(),
        HasSubstr(
            "/sbin/config-file.tmp cannot be loaded: the configuration file cannot be opened"));
    EXPECT_EQ(service.end(), 0) << service.log();
    EXPECT_FALSE(device_root::exists("/etc/writes")) << copying;
  }
}

TEST_F(Configuration, that_a_missing_tool_could_not_read_names_the_tool) {
  save_seven();
  unlink(device_root::path("/sbin/writeflash").c_str());
  {
    service_process service;
    EXPECT_EQ(get("LAN", "ConnType"), "1");
    EXPECT_THAT(service.log(), HasSubstr("/sbin/writeflash cannot be executed"));
    EXPECT_EQ(service.end(), 0);
  }
  device_root::install_flash_tool();
  const service_process later;
  EXPECT_EQ(get("LAN", "ConnType"), "0x07");
}

TEST_F(Configuration, changed_while_the_saved_one_is_unreadable_is_not_saved_at_the_end) {
  save_seven();
  install_failing_read("exit 1");
  service_process service;
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 9), 0U);
  EXPECT_EQ(service.end(), 1);
  EXPECT_THAT(service.log(), HasSubstr("what was set is lost"));
  EXPECT_FALSE(device_root::exists("/etc/writes"));
}

TEST_F(Configuration, replaces_an_unreadable_one_when_a_client_asks_for_it) {
  save_seven();
  install_failing_read("exit 1");
  service_process service;
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 9), 0U);
  ASSERT_EQ(cfc_flush_all_nosem(), 0U);
  EXPECT_THAT(status(), HasSubstr("flash=ok\n"));
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 10), 0U);
  EXPECT_EQ(service.end(), 0) << "saved at the end as usual";
  device_root::install_flash_tool();
  const service_process later;
  EXPECT_EQ(get("LAN", "ConnType"), "0x0a");
}

TEST_F(Configuration, replaces_an_unreadable_one_at_the_end_when_a_client_asked_in_vain) {
  save_seven();
  install_failing_read("exit 1");
  {
    service_process service;
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 9), 0U);
    device_root::install_flash_script("exit 1");
    ASSERT_EQ(cfc_flush_all_nosem(), 222U);
    EXPECT_THAT(status(), HasSubstr("flash=unreadable\n"));
    device_root::install_flash_tool();
    EXPECT_EQ(service.end(), 0) << service.log();
  }
  const service_process later;
  EXPECT_EQ(get("LAN", "ConnType"), "0x09");
}

TEST_F(Configuration, replaces_an_unreadable_one_by_a_reset_to_defaults) {
  save_seven();
  install_failing_read("exit 1");
  service_process service;
  ASSERT_EQ(cfc_to_default(), 0U);
  EXPECT_THAT(status(), HasSubstr("flash=ok\n"));
  ASSERT_EQ(service.end(), 0);
  device_root::install_flash_tool();
  const service_process later;
  EXPECT_EQ(get("LAN", "ConnType"), "1");
}

TEST_F(Configuration, stays_unreadable_until_it_really_was_replaced) {
  save_seven();
  device_root::install_flash_script("exit 1");
  service_process service;
  ASSERT_EQ(cfc_flush_all_nosem(), 0U) << "nothing to save";
  EXPECT_THAT(status(), HasSubstr("flash=unreadable\n"));
  ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 9), 0U);
  ASSERT_EQ(cfc_flush_all_nosem(), 222U);
  EXPECT_THAT(status(), HasSubstr("flash=unreadable\n"));
  ASSERT_EQ(cfc_to_default(), 0U);
  EXPECT_THAT(status(), HasSubstr("flash=unreadable\n"));
  EXPECT_EQ(service.end(), 1);
}

TEST_F(Configuration, of_a_new_device_is_saved_at_the_first_start) {
  install_failing_read("exit 3");
  service_process service;
  EXPECT_EQ(get("LAN", "ConnType"), "1");
  EXPECT_EQ(device_root::read("/etc/writes"), "write\n");
  EXPECT_THAT(status(), HasSubstr("source=factory\nflash=ok\n"));
}

TEST_F(Configuration, that_is_malformed_gives_way_to_the_factory_settings) {
  device_root::install_flash_script(
      "if [ \"$1\" = -r ]; then echo garbage >\"$2\"; exit 0; fi\n"
      "echo write >>\"${0%/*}/../etc/writes\"");
  const service_process service;
  EXPECT_EQ(get("LAN", "ConnType"), "1");
  EXPECT_EQ(device_root::read("/etc/writes"), "write\n");
  EXPECT_THAT(status(), HasSubstr("source=factory\nflash=ok\n"));
}

TEST_F(Configuration, served_from_memory_needs_a_factory_file) {
  install_failing_read("exit 1");
  for (const char* text : {"", "garbage\n", "k=v\n", "[LAN]\nk\n"}) {
    device_root::write("/etc/config-file.ini", text);
    service_process service;
    EXPECT_EQ(service.status(), 1) << text;
    EXPECT_THAT(service.log(),
                HasSubstr("malformed; cfc check reports where (205 CFC_ERR_BAD_VALUE)"))
        << text;
  }
  unlink(device_root::path("/etc/config-file.ini").c_str());
  service_process service;
  EXPECT_EQ(service.status(), 1);
  EXPECT_THAT(service.log(), HasSubstr("(206 CFC_ERR_NO_FILE)"));
}

TEST_F(Configuration, served_from_memory_is_all_of_the_factory_file_in_its_order) {
  const std::string text = "[A]\nx=1\ny=2\nx=3\nzz=\n\n[B]\n[A]\nk9=a=b\n";
  device_root::write("/etc/config-file.ini", text);
  install_failing_read("exit 1");
  {
    service_process service;
    EXPECT_EQ(get("A", "k9"), "a=b");
    EXPECT_EQ(get("A", "x"), "3");
    EXPECT_EQ(get("B", "x"), "result 201");
    ASSERT_EQ(__cfc_set_string(0, "B", "new", "1"), 0U);
    ASSERT_EQ(cfc_flush_all_nosem(), 0U);
  }
  const std::string saved = device_root::path("/etc/saved");
  ASSERT_EQ(
      std::system((device_root::path("/programs/writeflash").string() + " -r " + saved).c_str()),
      0);
  EXPECT_EQ(device_root::read("/etc/saved"), "\n[A]\nx=3\nzz=\nk9=a=b\ny=2\n\n[B]\nnew=1\n");
}

TEST_F(Configuration, whose_save_failed_is_saved_by_the_next_flush) {
  {
    service_process service;
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
    device_root::install_flash_script("exit 1");
    ASSERT_EQ(cfc_flush_all_nosem(), 222U);
    device_root::install_flash_tool();
    ASSERT_EQ(cfc_flush_all_nosem(), 0U);
    service.end(SIGKILL);
  }
  const service_process later;
  EXPECT_EQ(get("LAN", "ConnType"), "0x07");
}

TEST_F(Configuration, whose_save_failed_is_saved_at_the_end) {
  {
    service_process service;
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
    device_root::install_flash_script("kill -KILL $$");
    ASSERT_EQ(cfc_flush_all_nosem(), 222U);
    device_root::install_flash_tool();
    EXPECT_EQ(service.end(), 0) << service.log();
  }
  const service_process later;
  EXPECT_EQ(get("LAN", "ConnType"), "0x07");
}

TEST_F(Configuration, reset_without_being_saved_is_saved_by_the_next_flush) {
  {
    service_process service;
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
    ASSERT_EQ(cfc_flush_all_nosem(), 0U);
    device_root::install_flash_script("exit 1");
    ASSERT_EQ(cfc_to_default(), 0U) << "the defaults are active";
    EXPECT_THAT(service.log(), HasSubstr("the factory settings could not be saved"));
    device_root::install_flash_tool();
    ASSERT_EQ(cfc_flush_all_nosem(), 0U);
    service.end(SIGKILL);
  }
  const service_process later;
  EXPECT_EQ(get("LAN", "ConnType"), "1");
}

TEST_F(Configuration, saved_by_a_tool_that_was_stopped_for_a_while_counts_as_saved) {
  const service_process service;
  install_slow_flash_tool();
  child client{[] { return static_cast<int>(cfc_to_default()); }};
  ASSERT_TRUE(eventually([] { return device_root::exists("/etc/tool"); }));
  const std::string tool = device_root::read("/etc/tool").value();
  const auto tool_is = [&](const char* state) {
    return eventually(
        [&] { return files::text_of("/proc/" + tool + "/stat").find(state) != std::string::npos; });
  };
  service.freeze();
  kill(std::stoi(tool), SIGSTOP);
  ASSERT_TRUE(tool_is(") T "));
  kill(std::stoi(tool), SIGCONT);
  device_root::write("/etc/go", "");
  ASSERT_TRUE(tool_is(") Z "));
  service.thaw();
  EXPECT_EQ(client.wait(), 0);
  EXPECT_THAT(service.log(), Not(HasSubstr("could not be saved")));
}

TEST_F(Configuration, of_a_new_device_that_could_not_be_saved_is_saved_at_the_end) {
  device_root::install_flash_script("if [ \"$1\" = -r ]; then exit 3; fi; exit 1");
  {
    service_process service;
    EXPECT_THAT(service.log(), HasSubstr("the factory settings could not be saved"));
    device_root::install_flash_tool();
    EXPECT_EQ(service.end(), 0);
  }
  unlink(device_root::path("/etc/config-file.ini").c_str());
  const service_process later;
  EXPECT_EQ(get("LAN", "ConnType"), "1");
}

TEST_F(Configuration, is_saved_though_every_stop_signal_reaches_the_flash_tool_as_well) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGALRM, SIGPIPE, SIGUSR1}) {
    device_root::install_flash_tool();
    unlink(device_root::path("/etc/go").c_str());
    unlink(device_root::path("/etc/tool").c_str());
    service_process service;
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", static_cast<std::uint8_t>(signal)), 0U);
    install_slow_flash_tool();
    const pid_t stopping = service.id();
    kill(stopping, SIGTERM);
    ASSERT_TRUE(eventually([] { return device_root::exists("/etc/tool"); }));
    const pid_t tool = std::stoi(device_root::read("/etc/tool").value());
    kill(tool, signal);
    kill(stopping, signal);
    device_root::write("/etc/go", "");
    EXPECT_EQ(service.status(), 0) << service.log();
    device_root::install_flash_tool();
    const service_process later;
    std::uint8_t value = 0;
    EXPECT_EQ(__cfc_get_u8(0, "LAN", "ConnType", &value), 0U);
    EXPECT_EQ(value, signal);
  }
}

TEST_F(Configuration, that_a_client_saves_is_saved_though_a_stop_signal_reaches_the_flash_tool) {
  for (const auto save : {cfc_flush_all_nosem, cfc_to_default}) {
    device_root::install_flash_tool();
    unlink(device_root::path("/etc/go").c_str());
    unlink(device_root::path("/etc/tool").c_str());
    service_process service;
    ASSERT_EQ(__cfc_set_u8(0, "LAN", "ConnType", 7), 0U);
    install_slow_flash_tool();
    child client{[save] { return static_cast<int>(save()); }};
    ASSERT_TRUE(eventually([] { return device_root::exists("/etc/tool"); }));
    kill(std::stoi(device_root::read("/etc/tool").value()), SIGINT);
    device_root::write("/etc/go", "");
    EXPECT_EQ(client.wait(), 0);
    EXPECT_THAT(service.log(), Not(HasSubstr("could not be saved")));
    service.end(SIGKILL);
    device_root::install_flash_tool();
    const service_process later;
    EXPECT_EQ(get("LAN", "ConnType"), save == cfc_flush_all_nosem ? "0x07" : "1");
  }
}

TEST_F(Configuration, of_a_new_device_is_saved_though_a_stop_signal_reaches_the_flash_tool) {
  device_root::install_flash_script("if [ \"$1\" = -r ]; then exit 3; fi\nexec '" +
                                    std::string{SLOW_FLASH_TOOL} + "' \"$@\"");
  const child console{[] {
    if (!eventually([] { return device_root::exists("/etc/tool"); })) {
      return 1;
    }
    kill(std::stoi(device_root::read("/etc/tool").value()), SIGUSR1);
    device_root::write("/etc/go", "");
    return 0;
  }};
  service_process service;
  EXPECT_THAT(service.log(), Not(HasSubstr("could not be saved")));
  EXPECT_EQ(get("LAN", "ConnType"), "1");
  EXPECT_EQ(service.end(), 0);
}

TEST_F(Configuration, that_was_reset_comes_from_the_factory_file) {
  save_seven();
  const service_process service;
  EXPECT_THAT(status(), HasSubstr("source=flash\n"));
  ASSERT_EQ(cfc_to_default(), 0U);
  EXPECT_THAT(status(), HasSubstr("source=factory\n"));
}

TEST_F(Configuration, status_is_for_everyone_to_read_and_gone_after_a_stop) {
  service_process service;
  struct stat about {};
  ASSERT_EQ(stat(device_root::path("/run/proreflax/status").c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 0777U, 0644U);
  ASSERT_EQ(stat(device_root::path("/run/proreflax").c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 0777U, 0755U);
  EXPECT_THAT(status(), HasSubstr("pid=" + std::to_string(service.id()) + "\nstarted="));
  EXPECT_EQ(service.end(), 0);
  EXPECT_EQ(status(), "");
}

TEST_F(Configuration, status_is_gone_before_the_lock_that_the_next_service_needs) {
  service_process service;
  ASSERT_EQ(cfc_get_mutex(), 0U);
  // The stop waits for the holder of the lock.
  kill(service.id(), SIGTERM);
  EXPECT_TRUE(eventually([] { return status().empty(); }));
  EXPECT_TRUE(service.runs());
  EXPECT_NE(semget(proreflax::CFC_SEM_KEY, 0, 0), -1);
  cfc_put_mutex();
  EXPECT_EQ(service.status(), 0);
}

TEST_F(Configuration, is_served_though_the_status_cannot_be_written) {
  device_root::write("/run", "a file in its place");
  service_process service;
  EXPECT_EQ(get("LAN", "ConnType"), "1");
  EXPECT_THAT(service.log(), HasSubstr("/run/proreflax"));
  EXPECT_EQ(service.end(), 0);
  unlink(device_root::path("/run").c_str());
}
