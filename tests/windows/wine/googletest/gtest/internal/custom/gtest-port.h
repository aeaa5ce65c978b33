// GoogleTest's place for what a platform lacks: here std::mutex, which one class of it is made of.
#pragma once

#include <atomic>

#define GTEST_HAS_NOTIFICATION_ 1

namespace testing::internal {

// Lets a thread wait for another one. Only GoogleTest's own tests do that.
class Notification {
 public:
  void Notify() { notified_ = true; }
  void WaitForNotification() const {
    while (!notified_) continue;
  }

 private:
  std::atomic<bool> notified_ = false;
};

}  // namespace testing::internal
