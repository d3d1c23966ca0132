#include "transport/message.h"

#include <gtest/gtest.h>

#include "tests/support/request_queue.h"
#include "transport/raw_value.h"

using namespace proreflax;

TEST(RawGet, request_carries_section_and_key_and_points_behind_the_key) {
  request_queue queue;
  queue.reply_with_value("10.0.0.5");
  char out[16] = {};
  std::int32_t length = sizeof out;
  ASSERT_EQ(__cfc_get_raw_nosem("LAN", "LanIPAddr", out, &length), 0U);
  EXPECT_EQ(std::string_view(out, 8), "10.0.0.5");
  EXPECT_EQ(length, 8);
  const auto request = queue.take();
  ASSERT_TRUE(request);
  EXPECT_EQ(request->text, row(own_reply_type(), u32(10), u16(0), u16(4), u16(14), u16(0),
                               text("LAN"), text("LanIPAddr")));
}
