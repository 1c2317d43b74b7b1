#include "support/SmallStack.hpp"

#include <pthread.h>

#include <stdexcept>

namespace tarn_test {

namespace {

void* call(void* work) {
  (*static_cast<const std::function<void()>*>(work))();
  return nullptr;
}

}  // namespace

void runOnSmallStack(const std::function<void()>& work) {
  constexpr std::size_t stack_size = std::size_t{256} * 1024;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, stack_size);
  pthread_t thread{};
  void* const argument = const_cast<void*>(static_cast<const void*>(&work));
  const int result = pthread_create(&thread, &attributes, &call, argument);
  pthread_attr_destroy(&attributes);
  if (result != 0) throw std::runtime_error("no thread");
  pthread_join(thread, nullptr);
}

}  // namespace tarn_test
