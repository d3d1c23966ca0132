// A stretch of a test in which nothing may be sent.
#ifndef PROREFLAX_TESTS_SUPPORT_NO_REQUEST_H
#define PROREFLAX_TESTS_SUPPORT_NO_REQUEST_H

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/request_queue.h"

/// Fails the test when a request is on the queue as it goes. Replies lie ready meanwhile, so that a
/// client that does send one is told a code that no one expects instead of waiting for ever.
class no_request {
 public:
  explicit no_request(const request_queue& queue) : queue_{queue} {
    for (int i = 0; i < 16; ++i) {
      queue_.reply_with(4242);
    }
  }
  ~no_request() {
    EXPECT_FALSE(queue_.take()) << "a request was sent";
    while (queue_.take(getpid() + 2)) {
    }
  }
  no_request(const no_request&) = delete;
  no_request& operator=(const no_request&) = delete;

 private:
  const request_queue& queue_;
};

#endif
