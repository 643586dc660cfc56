#include "framework/Heap.h"

#include <malloc.h>

namespace Rig {

std::size_t BlockSize(void* block) { return ::_msize(block); }

// A replaced operator delete is that of one module alone.
bool IsFreedByThisProgram() { return true; }

void PrepareForQuestions() {}

} // namespace Rig
