#include "libtarn/IMemoryPool.hpp"

namespace libDomXml {

void* IMemoryPool::allocateMemory(unsigned int /*size*/) { return nullptr; }

void IMemoryPool::deallocateMemory(void* /*memory*/) {}

}  // namespace libDomXml
