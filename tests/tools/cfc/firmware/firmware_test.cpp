// The firmware verbs: images that a second writing of the format made, and the file-backed flash of
// the device's folder.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "tests/firmware/image_builder.h"
#include "tests/support/child.h"
#include "tests/support/device_root.h"
#include "tests/tools/cfc/run_program.h"
#include "tools/cfc/firmware/image.h"
#include "tools/cfc/firmware/image_names.h"
#include "tools/cfc/firmware/info.h"
#include "tools/cfc/firmware/pack.h"
#include "tools/cfc/firmware/write.h"

using namespace cfc;
using namespace proreflax::settings;
using nlohmann::json;
using std::string;
using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;
using words = std::vector<string>;

namespace {

constexpr std::size_t kernel_region = 0x1000;
constexpr std::size_t ramdisk_region = 0x2000;

string text_of(const bytes& data) {
  return {data.begin(), data.end()};
}

bytes bytes_of(const string& text) {
  return {text.begin(), text.end()};
}

/// Makes the flash driver fail, in this process and in those it starts.
class failing_flash {
 public:
  explicit failing_flash(const char* what) { setenv("PROREFLAX_FLASH_FAIL", what, 1); }
  ~failing_flash() { unsetenv("PROREFLAX_FLASH_FAIL"); }
  failing_flash(const failing_flash&) = delete;
  failing_flash& operator=(const failing_flash&) = delete;
};

/// A pipe with a name, read by the test, that has room for just so many bytes: what a program
/// writes beyond that waits.
class nearly_full_pipe {
 public:
  nearly_full_pipe(const string& path, std::size_t room) {
    mkfifo(path.c_str(), 0600);
    end_ = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    capacity_ = fcntl(end_, F_SETPIPE_SZ, 4096);
    const string filling(static_cast<std::size_t>(capacity_) - room, '.');
    filled_ = write(end_, filling.data(), filling.size()) == static_cast<ssize_t>(filling.size());
    unread_filling_ = filling.size();
  }
  ~nearly_full_pipe() { close(end_); }
  nearly_full_pipe(const nearly_full_pipe&) = delete;
  nearly_full_pipe& operator=(const nearly_full_pipe&) = delete;

  bool is_full() const {
    int unread = 0;
    return filled_ && ioctl(end_, FIONREAD, &unread) == 0 && unread == capacity_;
  }

  /// What programs have written so far, and was not taken yet.
  string take() {
    string all;
    std::array<char, 4096> buffer{};
    for (ssize_t count = 0; (count = ::read(end_, buffer.data(), buffer.size())) > 0;) {
      all.append(buffer.data(), static_cast<std::size_t>(count));
    }
    all.erase(0, std::exchange(unread_filling_, 0));
    return all;
  }

 private:
  int end_ = -1;
  int capacity_ = 0;
  std::size_t unread_filling_ = 0;
  bool filled_ = false;
};

class Firmware : public testing::Test {
 protected:
  Firmware() {
    device_root::clear();
    device_root::write("/etc/flash-regions",
                       "base 0x10000000\nregion 2 0x10001000 0x1000\nregion 4 0x10002000 0x800\n");
  }

  static string path(const string& name) { return device_root::path("/var/" + name).string(); }

  static string file(const string& name, const bytes& contents) {
    device_root::write("/var/" + name, text_of(contents));
    return path(name);
  }

  static bytes read(const string& name) {
    return bytes_of(device_root::read("/var/" + name).value_or(""));
  }

  static ended firmware(words line, std::string_view input = {}) {
    line.insert(line.begin(), "firmware");
    return run_cfc(std::move(line), input);
  }

  static ended write_to_flash(const bytes& image) {
    return firmware({"write", "--yes", file("image", image)});
  }

  static std::optional<bytes> flash_at(std::size_t offset, std::size_t size) {
    const auto all = device_root::read("/dev/flash");
    return all ? std::optional{bytes_of(all->substr(std::min(offset, all->size()), size))}
               : std::nullopt;
  }
};

string refusal_of(const bytes& image) {
  const image_view view = look_at_image(image);
  const auto fault = first_fault(view);
  return fault ? fault->in_words() : "taken";
}

std::uint32_t header_crc_of(const bytes& image) {
  bytes header(image.begin(), image.begin() + 64);
  put_big_endian(header, 4, 0);
  return bitwise_crc(header);
}

bytes with_fields() {
  bytes image = kernel(some_bytes(100));
  put_big_endian(image, 8, 1234567890);
  put_big_endian(image, 16, 0x80002000);
  put_big_endian(image, 20, 0x80345678);
  image[28] = 5;
  image[29] = 5;
  image[31] = 1;
  const string name = "a name of exactly 32 characters.";
  std::ranges::copy(name, image.begin() + 32);
  correct_checksums(image);
  return image;
}

}  // namespace

TEST_F(Firmware, info_tells_every_field_in_words) {
  const bytes image = with_fields();
  const ended info = firmware({"info", file("k", image)});
  EXPECT_EQ(info.status, 0);
  EXPECT_EQ(info.err, "");
  const string header_crc = show_word(header_crc_of(image));
  const string data_crc = show_word(bitwise_crc({image.begin() + 64, image.end()}));
  EXPECT_EQ(info.out,
            "image: kernel \"a name of exactly 32 characters.\", 164 bytes\n"
            "   name          \"a name of exactly 32 characters.\"\n"
            "   magic         0x27051956\n"
            "   time          2009-02-13 23:31:30 UTC (1234567890)\n"
            "   data size     100 bytes\n"
            "   load address  0x80002000\n"
            "   entry point   0x80345678\n"
            "   system        Linux (5)\n"
            "   processor     MIPS (5)\n"
            "   type          kernel (2)\n"
            "   compression   gzip (1)\n"
            "   header CRC    expected " +
                header_crc + ", found " + header_crc +
                ": right\n"
                "   data CRC      expected " +
                data_crc + ", found " + data_crc +
                ": right\n"
                "result: 0 CFC_OK: the device takes this image where its flash has room\n");
}

TEST_F(Firmware, info_as_json_tells_every_field) {
  const bytes image = with_fields();
  const ended info = firmware({"info", "--json", file("k", image)});
  EXPECT_EQ(info.status, 0);
  EXPECT_EQ(info.err, "");
  EXPECT_EQ(std::ranges::count(info.out, '\n'), 1);
  json expected = json::parse(R"({"image":{"size":164,"name":"a name of exactly 32 characters.",
      "magic":654645590,"time":1234567890,"data_size":100,
      "load_address":2147491840,"entry_point":2150913656,
      "system":{"number":5,"name":"Linux"},"processor":{"number":5,"name":"MIPS"},
      "type":{"number":2,"name":"kernel"},"compression":{"number":1,"name":"gzip"}},
      "code":0,"name":"CFC_OK"})");
  expected["file"] = path("k");
  const std::pair<const char*, std::uint32_t> checksums[] = {
      {"header_crc", header_crc_of(image)},
      {"data_crc", bitwise_crc({image.begin() + 64, image.end()})}};
  for (const auto& [field, crc] : checksums) {
    expected["image"][field] = {{"expected", crc}, {"found", crc}, {"right", true}};
  }
  EXPECT_EQ(json::parse(info.out), expected);
}

TEST_F(Firmware, info_as_json_holds_parts_and_what_is_wrong_with_them) {
  bytes bad = kernel(some_bytes(8));
  bad.back() ^= 1;
  const ended info =
      firmware({"info", file("m", multi_file({ramdisk({1}), multi_file({bad})})), "--json"});
  EXPECT_EQ(info.status, 1);
  EXPECT_THAT(info.err, HasSubstr(": part 2.1: 235 CFC_ERR_FW_DATA_CRC: "));
  const json told = json::parse(info.out);
  EXPECT_EQ(told["code"], 235);
  EXPECT_EQ(told["name"], "CFC_ERR_FW_DATA_CRC");
  EXPECT_EQ(told["place"], "part 2.1");
  EXPECT_THAT(told["message"].get<string>(),
              StartsWith("the firmware data does not match its checksum (the header says 0x"));
  const json& parts = told["image"]["parts"];
  ASSERT_EQ(parts.size(), 2U);
  EXPECT_FALSE(told["image"].contains("place"));
  EXPECT_EQ(parts[0]["place"], "part 1");
  EXPECT_EQ(parts[0]["type"]["name"], "ramdisk");
  EXPECT_FALSE(parts[0].contains("parts"));
  const json& checksum = parts[1]["parts"][0]["data_crc"];
  EXPECT_EQ(checksum["right"], false);
  EXPECT_EQ(checksum["found"], bitwise_crc({bad.begin() + 64, bad.end()}));
  EXPECT_EQ(checksum["expected"], bitwise_crc(some_bytes(8)));
}

TEST_F(Firmware, info_as_json_leaves_out_what_cannot_be_told) {
  bytes cut = build({.data = some_bytes(100)});
  cut[32] = 0xff;
  cut.resize(80);
  const json image = json::parse(firmware({"info", "--json", file("k", cut)}).out)["image"];
  EXPECT_EQ(image["data_crc"]["expected"], bitwise_crc(some_bytes(100)));
  EXPECT_EQ(image["data_crc"]["found"], nullptr);
  EXPECT_EQ(image["data_crc"]["right"], nullptr);
  EXPECT_EQ(image["name"], "\xef\xbf\xbd");
  EXPECT_EQ(image["name_bytes"], "ff");
  const ended none = firmware({"info", "--json", file("text", bytes(100, 'x'))});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(json::parse(none.out)["image"], json({{"size", 100}}));
  EXPECT_EQ(json::parse(none.out)["code"], 237);
  EXPECT_EQ(firmware({"info", "--json", path("none")}).out, "");
}

TEST_F(Firmware, numbers_have_the_names_of_the_published_format) {
  EXPECT_EQ(operating_system_name(0), "invalid");
  EXPECT_EQ(operating_system_name(14), "VxWorks");
  EXPECT_EQ(operating_system_name(17), "firmware");
  EXPECT_EQ(operating_system_name(21), "INTEGRITY");
  EXPECT_EQ(operating_system_name(200), "unknown");
  EXPECT_EQ(architecture_name(2), "ARM");
  EXPECT_EQ(architecture_name(7), "PowerPC");
  EXPECT_EQ(architecture_name(15), "Nios II");
  EXPECT_EQ(architecture_name(22), "ARM64");
  EXPECT_EQ(architecture_name(26), "RISC-V");
  EXPECT_EQ(architecture_name(27), "unknown");
  EXPECT_EQ(image_type_name(4), "multi-file");
  EXPECT_EQ(image_type_name(8), "flat device tree");
  EXPECT_EQ(image_type_name(255), "unknown");
  EXPECT_EQ(compression_name(3), "lzma");
  EXPECT_EQ(compression_name(6), "zstd");
  EXPECT_EQ(compression_name(7), "unknown");
}

TEST_F(Firmware, info_shows_parts_as_a_tree) {
  const bytes inner = multi_file({ramdisk(some_bytes(5))});
  const ended info = firmware({"info", file("m", multi_file({kernel(some_bytes(6)), inner}))});
  EXPECT_EQ(info.status, 0);
  EXPECT_THAT(info.out, StartsWith("image: multi-file \"\", "));
  EXPECT_THAT(info.out, HasSubstr("\n|  type          multi-file (4)\n"));
  EXPECT_THAT(info.out, HasSubstr("\n|\n+- part 1: kernel \"\", 70 bytes\n|     name  "));
  EXPECT_THAT(info.out, HasSubstr("\n|\n+- part 2: multi-file \"\", "));
  EXPECT_THAT(info.out,
              HasSubstr("\n   |\n   +- part 2.1: ramdisk \"\", 69 bytes\n         name "));
}

TEST_F(Firmware, info_shows_no_fields_of_a_part_that_is_no_image) {
  const ended info = firmware({"info", file("m", multi_file({bytes(100, 'x')}))});
  EXPECT_EQ(info.status, 1);
  EXPECT_THAT(info.out, HasSubstr("\n|\n+- part 1: no image, 100 bytes\nresult: part 1: 237 "));
}

TEST_F(Firmware, the_name_of_an_image_does_not_reach_the_terminal_as_it_is) {
  bytes image = kernel({1});
  std::ranges::copy(string{"\x1b[2J"}, image.begin() + 32);
  correct_checksums(image);
  EXPECT_THAT(firmware({"info", file("k", image)}).out,
              AllOf(StartsWith("image: kernel \"\\x1b[2J\", 65 bytes\n"),
                    HasSubstr("\n   name          \"\\x1b[2J\"\n")));
}

TEST_F(Firmware, info_gives_the_result_that_the_device_would_give) {
  bytes bad_header = kernel(some_bytes(8));
  bad_header[4] ^= 1;
  const ended header = firmware({"info", file("k", bad_header)});
  EXPECT_EQ(header.status, 1);
  EXPECT_THAT(header.out, AllOf(HasSubstr(": wrong\n"), HasSubstr(": right\n"),
                                HasSubstr("\nresult: 234 CFC_ERR_FW_HDR_CRC: ")));
  EXPECT_THAT(header.err, StartsWith("cfc: firmware info: " + path("k") + ": 234 "));

  bytes bad_data = kernel(some_bytes(8));
  bad_data.back() ^= 1;
  const ended nested = firmware(
      {"info", file("m", multi_file({ramdisk(some_bytes(1)), bad_data, kernel(some_bytes(2))}))});
  EXPECT_EQ(nested.status, 1);
  EXPECT_THAT(nested.out, HasSubstr("\nresult: part 2: 235 CFC_ERR_FW_DATA_CRC: "));
  EXPECT_THAT(nested.out, Not(HasSubstr("part 3")));
}

TEST_F(Firmware, each_fault_tells_its_numbers) {
  EXPECT_EQ(refusal_of({}),
            "233 CFC_ERR_FW_SHORT: the firmware image is shorter than its header (0 bytes, and a "
            "header has 64)");
  EXPECT_THAT(refusal_of(bytes(63)), EndsWith("(63 bytes, and a header has 64)"));
  EXPECT_THAT(refusal_of(bytes(1)), EndsWith("(1 byte, and a header has 64)"));
  EXPECT_EQ(refusal_of(build({.data = {1}, .magic = 0x7f454c46})),
            "237 CFC_ERR_FW_MAGIC: not a firmware image (it begins with 0x7f454c46, not with "
            "0x27051956)");
  EXPECT_THAT(refusal_of(build({.type = 5, .data = {1}})), EndsWith("(type 5, firmware)"));
  EXPECT_THAT(refusal_of(build({.data = {1}, .header_crc = 7})),
              HasSubstr("(the header says 0x00000007, the bytes give 0x"));
  EXPECT_THAT(
      refusal_of(build({.data = {1}, .data_crc = 7})),
      HasSubstr("235 CFC_ERR_FW_DATA_CRC: the firmware data does not match its checksum (the "
                "header says 0x00000007, the bytes give 0x"));
  EXPECT_THAT(refusal_of(build({.data = {1, 2}, .data_size = 0xFFFFFFFF})),
              EndsWith("(the header declares 4294967295 bytes of data, and 2 are there)"));
  EXPECT_THAT(refusal_of(build({.type = 4, .data = bytes(8)})),
              AllOf(StartsWith("238 "), EndsWith("(its table of parts)")));
  EXPECT_THAT(refusal_of(multi_file({bytes(3)})), StartsWith("part 1: 233 "));
}

TEST_F(Firmware, the_limits_of_size_and_nesting_are_the_devices) {
  EXPECT_EQ(refusal_of(kernel(bytes(FW_IMAGE_SIZE_MAX - 64))), "taken");
  EXPECT_THAT(refusal_of(kernel(bytes(FW_IMAGE_SIZE_MAX - 63))), StartsWith("232 "));
  bytes nested = kernel({1});
  for (int i = 0; i < FW_NESTING_MAX; ++i) {
    nested = multi_file({nested});
  }
  EXPECT_EQ(refusal_of(nested), "taken");
  EXPECT_THAT(refusal_of(multi_file({nested})), HasSubstr("1.1.1.1: 238 "));
}

TEST_F(Firmware, what_is_no_image_gets_a_message_and_no_fields) {
  const std::pair<string, string> rows[] = {{file("empty", {}), "233 "},
                                            {file("text", bytes(100, 'x')), "237 "}};
  for (const auto& [name, code] : rows) {
    const ended info = firmware({"info", name});
    EXPECT_EQ(info.status, 1);
    EXPECT_EQ(info.out, "");
    EXPECT_THAT(info.err, StartsWith("cfc: firmware info: " + name + ": " + code));
  }
  EXPECT_EQ(firmware({"info", path("none")}).err,
            "cfc: firmware info: " + path("none") + ": No such file or directory\n");
  EXPECT_EQ(firmware({"info", path("")}).err,
            "cfc: firmware info: " + path("") + ": Is a directory\n");
  const ended endless = firmware({"info", "/dev/zero"});
  EXPECT_EQ(endless.status, 1);
  EXPECT_THAT(endless.err, StartsWith("cfc: firmware info: /dev/zero: 232 "));
}

TEST_F(Firmware, a_file_cut_short_still_shows_its_header) {
  bytes image = kernel(some_bytes(100));
  image.resize(80);
  const ended info = firmware({"info", file("k", image)});
  EXPECT_EQ(info.status, 1);
  EXPECT_THAT(info.out, HasSubstr(", and the data is not there as a whole\n"));
  EXPECT_THAT(info.out, HasSubstr("result: 238 CFC_ERR_FW_TRUNCATED: "));
  EXPECT_THAT(info.err, EndsWith("(the header declares 100 bytes of data, and 16 are there)\n"));
}

TEST_F(Firmware, pack_makes_what_the_second_writing_makes) {
  for (const auto& [type, number] : {std::pair{"kernel", 2}, std::pair{"ramdisk", 3}}) {
    const ended pack = firmware({"pack", "--type", type, "-o", path("out"), "--name", "release 7",
                                 "--load", "0x80002000", "--entry", "2147493648", "--time",
                                 "1234567890", file("data", some_bytes(101))});
    EXPECT_EQ(pack.status, 0) << pack.err;
    EXPECT_EQ(pack.out, path("out") + ": " + type + " \"release 7\", 165 bytes\n");
    bytes expected = build({.type = static_cast<std::uint8_t>(number), .data = some_bytes(101)});
    put_big_endian(expected, 8, 1234567890);
    put_big_endian(expected, 16, 0x80002000);
    put_big_endian(expected, 20, 0x80002710);
    expected[28] = 5;
    std::ranges::copy(string{"release 7"}, expected.begin() + 32);
    correct_checksums(expected);
    EXPECT_EQ(read("out"), expected) << type;
  }
}

TEST_F(Firmware, the_entry_point_is_the_load_address_unless_it_is_given) {
  ASSERT_EQ(firmware({"pack", "--type=kernel", "--load=0x1234", "--output", path("out"),
                      file("data", {1})})
                .status,
            0);
  const bytes image = read("out");
  EXPECT_EQ(bytes(image.begin() + 16, image.begin() + 24),
            (bytes{0, 0, 0x12, 0x34, 0, 0, 0x12, 0x34}));
}

TEST_F(Firmware, the_time_is_that_of_packing_unless_it_is_given) {
  const std::time_t earliest = std::time(nullptr);
  ASSERT_EQ(firmware({"pack", "--type", "kernel", "-o", path("out"), file("data", {1})}).status, 0);
  const std::time_t latest = std::time(nullptr);
  const bytes image = read("out");
  std::time_t packed = 0;
  for (std::size_t i = 8; i < 12; ++i) {
    packed = packed * 256 + image.at(i);
  }
  EXPECT_GE(packed, earliest);
  EXPECT_LE(packed, latest);
}

TEST_F(Firmware, pack_aligns_the_parts_of_a_multi_file_image) {
  const string first = file("first", kernel(some_bytes(6)));
  const string second = file("second", ramdisk(some_bytes(4)));
  ASSERT_EQ(
      firmware({"pack", "--type", "multi", "--time", "0", "-o", path("out"), first, second}).status,
      0);
  const bytes image = read("out");
  EXPECT_EQ(bytes(image.begin() + 64, image.end()),
            multi_data({kernel(some_bytes(6)), ramdisk(some_bytes(4))}));
  EXPECT_EQ(image.size(), 64U + 12 + 72 + 68);
  EXPECT_EQ(firmware({"info", path("out")}).status, 0);
}

TEST_F(Firmware, pack_refuses_what_the_device_would_refuse) {
  bytes broken = kernel({1, 2});
  broken.back() ^= 1;
  const ended part = firmware({"pack", "--type", "multi", "-o", path("out"),
                               file("good", kernel({1})), file("bad", broken)});
  EXPECT_EQ(part.status, 1);
  EXPECT_THAT(part.err, StartsWith("cfc: firmware pack: " + path("bad") +
                                   ": the parts of a multi-file image are images: 235 "));
  const ended inner =
      firmware({"pack", "--type", "multi", "-o", path("out"), file("bad", multi_file({broken}))});
  EXPECT_EQ(inner.status, 1);
  EXPECT_THAT(inner.err, StartsWith("cfc: firmware pack: " + path("bad") +
                                    ": the parts of a multi-file image are images: part 1: 235 "));
  const ended big = firmware(
      {"pack", "--type", "kernel", "-o", path("out"), file("big", bytes(FW_IMAGE_SIZE_MAX - 63))});
  EXPECT_EQ(big.status, 1);
  EXPECT_THAT(big.err, HasSubstr("the device would not take it: 232 "));
  const ended empty = firmware({"pack", "--type", "kernel", "-o", path("out"), file("none", {})});
  EXPECT_EQ(empty.status, 1);
  EXPECT_EQ(empty.err, "cfc: firmware pack: " + path("none") + ": the file is empty\n");
  EXPECT_FALSE(device_root::exists("/var/out"));
}

TEST_F(Firmware, pack_says_what_is_wrong_with_its_words) {
  const string data = file("data", {1});
  const std::pair<words, string> rows[] = {
      {{"pack", "--type", "kernel", "-o", path("out"), data, data}, "from one file, not from 2"},
      {{"pack", "--type", "ramdisk", "-o", path("out"), data, data}, "from one file, not from 2"},
      {{"pack", "--type", "disk", "-o", path("out"), data}, "disk not in"},
      {{"pack", "--type", "kernel", data}, "--output is required"},
      {{"pack", "-o", path("out"), data}, "--type is required"},
      {{"pack", "--type", "kernel", "-o", path("out")}, "PART is required"},
      {{"pack", "--type", "kernel", "-o", path("out"), "--load", "12x", data}, "--load: 12x: "},
      {{"pack", "--type", "kernel", "-o", path("out"), "--time", "4294967296", data}, "--time: "},
      {{"pack", "--type", "kernel", "-o", path("out"), "--name", string(33, 'n'), data},
       "more than 32 bytes"},
  };
  for (const auto& [line, sentence] : rows) {
    const ended refused = firmware(line);
    EXPECT_EQ(refused.status, 2) << sentence;
    EXPECT_THAT(refused.err, AllOf(HasSubstr(sentence), HasSubstr("(see: cfc firmware pack")));
  }
  EXPECT_FALSE(device_root::exists("/var/out"));
}

TEST_F(Firmware, pack_tells_that_its_file_cannot_be_made) {
  const ended refused =
      firmware({"pack", "--type", "kernel", "-o", path("no/out"), file("data", {1})});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, AllOf(HasSubstr(path("no/out")), HasSubstr("No such file")));
}

TEST_F(Firmware, write_tells_its_plan_writes_and_reads_back) {
  const bytes first = kernel(some_bytes(1000));
  const bytes data = some_bytes(700, 2);
  const ended write = write_to_flash(multi_file({first, ramdisk(data)}));
  EXPECT_EQ(write.status, 0) << write.err;
  EXPECT_EQ(write.err, "");
  EXPECT_EQ(
      write.out,
      "1/3 check: " + path("image") +
          " is whole, and goes to flash like this:\n"
          "  part 1: kernel \"\", 1064 bytes: 1064 bytes to 0x10001000, region 2 of 4096 bytes\n"
          "  part 2: ramdisk \"\", 764 bytes: 700 bytes to 0x10002000, region 4 of 2048 bytes\n"
          "2/3 write: this may take minutes; leave the power on\n"
          "3/3 verify\n"
          "  part 1: read back, the same\n"
          "  part 2: read back, the same\n");
  EXPECT_EQ(flash_at(kernel_region, first.size()), first);
  EXPECT_EQ(flash_at(ramdisk_region, data.size()), data);
}

TEST_F(Firmware, what_pack_makes_write_writes) {
  ASSERT_EQ(
      firmware({"pack", "--type", "kernel", "-o", path("k"), file("data", some_bytes(9))}).status,
      0);
  ASSERT_EQ(firmware({"pack", "--type", "multi", "-o", path("m"), path("k")}).status, 0);
  EXPECT_EQ(firmware({"write", path("m"), "--yes"}).status, 0);
  EXPECT_EQ(flash_at(kernel_region, 73), read("k"));
}

TEST_F(Firmware, a_part_that_another_overwrites_is_told_and_not_compared) {
  const ended write = write_to_flash(multi_file({kernel({1}), kernel({2})}));
  EXPECT_EQ(write.status, 0) << write.err;
  EXPECT_THAT(write.out, HasSubstr("4096 bytes; a later part takes its place\n  part 2"));
  EXPECT_THAT(write.out, EndsWith("3/3 verify\n  part 2: read back, the same\n"));
}

TEST_F(Firmware, without_a_terminal_and_without_yes_nothing_is_written) {
  const ended write = firmware({"write", file("k", kernel({1}))}, "y\n");
  EXPECT_EQ(write.status, 1);
  EXPECT_THAT(write.err, HasSubstr("there is no terminal to ask on; nothing was written"));
  EXPECT_EQ(flash_at(0, 1).value_or(bytes{}), bytes{});
}

TEST_F(Firmware, on_a_terminal_only_yes_goes_on) {
  const string image = file("k", kernel({1}));
  for (const auto& [answer, status] : {std::pair{"n\n", 1},
                                       {"\n", 1},
                                       {"yesterday\n", 1},
                                       {"\x04", 1},
                                       {"y\n", 0},
                                       {"yes\n", 0}}) {
    std::filesystem::remove(device_root::path("/dev/flash"));
    const ended asked = run_cfc_on_terminal({"firmware", "write", image}, answer);
    EXPECT_EQ(asked.status, status) << answer << asked.err;
    EXPECT_THAT(asked.err, HasSubstr("What is there now is lost. [y/N]\n"));
    EXPECT_EQ(asked.err.ends_with("cfc: firmware write: nothing was written\n"), status == 1);
    EXPECT_EQ(flash_at(kernel_region, 65), status == 0 ? kernel({1}) : bytes{}) << answer;
  }
}

TEST_F(Firmware, what_the_device_would_refuse_is_refused_before_anything_is_written) {
  bytes broken = ramdisk({1, 2});
  broken.back() ^= 1;
  const std::pair<bytes, string> rows[] = {
      {multi_file({kernel({1}), broken}), "part 2: 235 "},
      {multi_file({kernel({1}), ramdisk(bytes(0x801))}), "part 2: 232 "},
      {kernel(bytes(FW_IMAGE_SIZE_MAX)), "232 "},
      {{}, "233 "}};
  for (const auto& [image, code] : rows) {
    const ended write = write_to_flash(image);
    EXPECT_EQ(write.status, 1);
    EXPECT_EQ(write.out, "");
    EXPECT_THAT(write.err, AllOf(StartsWith("cfc: firmware write: " + path("image") + ": " + code),
                                 EndsWith("; nothing was written\n")));
    EXPECT_EQ(flash_at(0, 1).value_or(bytes{}), bytes{}) << code;
  }
}

TEST_F(Firmware, an_image_that_is_too_big_is_told_before_the_flash_is_opened) {
  const failing_flash failing{"open"};
  EXPECT_THAT(write_to_flash(kernel(bytes(FW_IMAGE_SIZE_MAX))).err, HasSubstr(": 232 "));
}

TEST_F(Firmware, data_may_fill_its_region_to_the_last_byte) {
  const bytes data = some_bytes(0x800);
  EXPECT_EQ(write_to_flash(ramdisk(data)).status, 0);
  EXPECT_EQ(flash_at(ramdisk_region, data.size()), data);
}

TEST_F(Firmware, a_flash_that_fails_gives_the_devices_result) {
  const std::pair<const char*, string> before[] = {{"open", "(/dev/flash: Input/output error)"},
                                                   {"open", "239 CFC_ERR_FW_OPEN"},
                                                   {"base", "240 CFC_ERR_FW_BASE"},
                                                   {"region", "241 CFC_ERR_FW_REGION"}};
  for (const auto& [call, code] : before) {
    const failing_flash failing{call};
    const ended write = write_to_flash(kernel({1}));
    EXPECT_EQ(write.status, 1);
    EXPECT_THAT(write.err, AllOf(HasSubstr(code), EndsWith("; nothing was written\n")));
  }
  const std::pair<const char*, string> during[] = {{"seek", "242 CFC_ERR_FW_SEEK"},
                                                   {"write", "243 CFC_ERR_FW_WRITE"},
                                                   {"short", "243 CFC_ERR_FW_WRITE"}};
  for (const auto& [call, code] : during) {
    const failing_flash failing{call};
    const ended write = write_to_flash(kernel({1}));
    EXPECT_EQ(write.status, 1);
    EXPECT_THAT(write.err, AllOf(HasSubstr(code), HasSubstr("the flash may hold a part")));
    EXPECT_THAT(write.out, Not(HasSubstr("3/3")));
  }
}

TEST_F(Firmware, a_flash_that_holds_something_else_is_found_out) {
  const bytes image = kernel(some_bytes(10));
  ASSERT_EQ(write_to_flash(image).status, 0);
  const image_view view = look_at_image(image);
  const flash_plan plan = plan_writes(view);
  ASSERT_EQ(plan.writes.size(), 1U);
  EXPECT_EQ(compare_with_flash(plan.writes[0]).found, comparison::state::same);
  string flash = *device_root::read("/dev/flash");
  flash[kernel_region + 70] ^= 1;
  device_root::write("/dev/flash", flash);
  const comparison differing = compare_with_flash(plan.writes[0]);
  EXPECT_EQ(differing.found, comparison::state::differs);
  EXPECT_THAT(differing.sentence, EndsWith("first at byte 70 of the region"));
  device_root::write("/dev/flash", flash.substr(0, kernel_region + 20));
  const comparison cut = compare_with_flash(plan.writes[0]);
  EXPECT_EQ(cut.found, comparison::state::not_readable);
  EXPECT_EQ(cut.sentence, "written, but not verified: the flash cannot be read back: it ends");
  const failing_flash failing{"seek"};
  EXPECT_EQ(compare_with_flash(plan.writes[0]).found, comparison::state::not_readable);
}

TEST_F(Firmware, a_flash_that_cannot_be_read_back_is_told_plainly) {
  const failing_flash closed{"open"};
  const comparison compared = compare_with_flash({.length = 1});
  EXPECT_EQ(compared.found, comparison::state::not_readable);
  EXPECT_EQ(compared.sentence,
            "written, but not verified: the flash cannot be read back: Input/output error");
}

TEST_F(Firmware, data_of_many_pieces_is_compared_to_its_end) {
  device_root::write("/etc/flash-regions", "base 0x10000000\nregion 4 0x10002000 0x4000\n");
  const bytes image = ramdisk(some_bytes(10000));
  const ended write = write_to_flash(image);
  EXPECT_EQ(write.status, 0) << write.err;
  EXPECT_THAT(write.out, EndsWith("3/3 verify\n  image: read back, the same\n"));
  string flash = *device_root::read("/dev/flash");
  flash[ramdisk_region + 9000] ^= 1;
  device_root::write("/dev/flash", flash);
  const image_view view = look_at_image(image);
  EXPECT_THAT(compare_with_flash(plan_writes(view).writes.at(0)).sentence,
              EndsWith("first at byte 9000 of the region"));
}

TEST_F(Firmware, every_part_that_differs_is_told_and_ends_in_1) {
  device_root::write("/etc/flash-regions",
                     "base 0x10000000\nregion 2 0x10000000 0x1000\nregion 4 0x10000000 0x800\n");
  std::filesystem::create_symlink("/dev/zero", device_root::path("/dev/flash"));
  const ended write = write_to_flash(multi_file({kernel({1}), ramdisk({0, 0, 5})}));
  EXPECT_EQ(write.status, 1);
  const string first =
      "part 1: the flash differs from what was written, first at byte 0 of the "
      "region\n";
  const string second =
      "part 2: the flash differs from what was written, first at byte 2 of the "
      "region\n";
  EXPECT_THAT(write.out, EndsWith("3/3 verify\n  " + first + "  " + second));
  EXPECT_EQ(write.err, "cfc: firmware write: " + first + "cfc: firmware write: " + second);
}

TEST_F(Firmware, a_flash_that_cannot_be_read_back_is_told_and_is_no_failure) {
  device_root::write("/etc/flash-regions", "base 0x10000000\nregion 2 0x10000000 0x1000\n");
  std::filesystem::create_symlink("/dev/null", device_root::path("/dev/flash"));
  const ended write = write_to_flash(kernel({1}));
  EXPECT_EQ(write.status, 0);
  EXPECT_EQ(write.err, "");
  EXPECT_THAT(write.out, EndsWith("  image: written, but not verified: the flash cannot be read "
                                  "back: it ends\n"));
}

TEST_F(Firmware, signals_wait_until_writing_and_comparing_are_done) {
  const bytes image = kernel(some_bytes(1000));
  const string name = file("image", image);
  const string before_verify =
      "1/3 check: " + name +
      " is whole, and goes to flash like this:\n"
      "  image: kernel \"\", 1064 bytes: 1064 bytes to 0x10001000, region 2 of 4096 bytes\n"
      "2/3 write: this may take minutes; leave the power on\n";
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::filesystem::remove(device_root::path("/dev/flash"));
    nearly_full_pipe pipe{path("pipe" + std::to_string(signal)), before_verify.size()};
    started_program write{"cfc",
                          {"firmware", "write", "--yes", name},
                          {},
                          path("pipe" + std::to_string(signal)).c_str()};
    ASSERT_TRUE(eventually([&] { return pipe.is_full(); }));
    write.send(signal);
    string told = pipe.take();
    EXPECT_EQ(write.wait().status, -signal);
    told += pipe.take();
    EXPECT_EQ(told, before_verify + "3/3 verify\n  image: read back, the same\n");
    EXPECT_EQ(flash_at(kernel_region, image.size()), image);
  }
}

TEST_F(Firmware, an_empty_ramdisk_has_nothing_to_write) {
  const ended write = write_to_flash(ramdisk({}));
  EXPECT_EQ(write.status, 0) << write.err;
  EXPECT_THAT(write.out, HasSubstr("  nothing to write: there is no data\n"));
}
