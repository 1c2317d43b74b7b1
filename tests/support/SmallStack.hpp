#pragma once

#include <functional>

namespace tarn_test {

/// Runs `work` on a thread with a stack of 256 KiB and waits for it.
void runOnSmallStack(const std::function<void()>& work);

}  // namespace tarn_test
