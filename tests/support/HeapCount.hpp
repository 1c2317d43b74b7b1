#pragma once

#include <cstddef>

namespace tarn_test {

/// Calls of operator new in this program so far.
std::size_t heapAllocations();

}  // namespace tarn_test
