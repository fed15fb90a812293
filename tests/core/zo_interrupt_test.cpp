#include "zo_core/zo_interrupt.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace zo {
namespace {

class Answer : public IInterruptable {
 public:
  explicit Answer(int answer) : _answer(answer) {}
  int isInterrupted() override { return _answer; }

 private:
  int _answer;
};

TEST(IInterruptableTest, HasTheQueryInItsFirstSlot) {
  Answer answer(5);
  IInterruptable* p_interface = &answer;
  using Query = int (*)(IInterruptable*);
  Query const* p_slots = *reinterpret_cast<Query const* const*>(p_interface);
  EXPECT_EQ(5, p_slots[0](p_interface));
}

TEST(IInterruptableTest, IsDestroyedThroughTheInterface) {
  struct Counting : IInterruptable {
    explicit Counting(int& destroyed) : _destroyed(destroyed) {}
    ~Counting() override { ++_destroyed; }
    int isInterrupted() override { return 0; }
    int& _destroyed;
  };
  int destroyed = 0;
  IInterruptable* p_interface = new Counting(destroyed);
  delete p_interface;
  EXPECT_EQ(1, destroyed);
}

int returnOpaque(void* p_opaque) {
  return *static_cast<int*>(p_opaque);
}

int throwSomething(void*) {
  throw std::runtime_error("from the callback");
}

TEST(InterruptCallbackTest, NeverInterruptsWithoutACallback) {
  InterruptCallback callback;
  EXPECT_EQ(0, callback.isInterrupted());
}

TEST(InterruptCallbackTest, AsksTheFunctionWithTheOpaquePointer) {
  InterruptCallback callback;
  int value = 0;
  callback.setCallback(&returnOpaque, &value);
  EXPECT_EQ(0, callback.isInterrupted());
  value = -3;
  EXPECT_EQ(-3, callback.isInterrupted());
}

TEST(InterruptCallbackTest, TakesANullFunctionAsNoCallback) {
  InterruptCallback callback;
  int value = 1;
  callback.setCallback(&returnOpaque, &value);
  callback.setCallback(nullptr, &value);
  EXPECT_EQ(0, callback.isInterrupted());
}

TEST(InterruptCallbackTest, LetsExceptionsThrough) {
  InterruptCallback callback;
  callback.setCallback(&throwSomething, nullptr);
  EXPECT_THROW(callback.isInterrupted(), std::runtime_error);
}

}  // namespace
}  // namespace zo
