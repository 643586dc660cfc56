#pragma once

#include <cstddef>

// What a test that watches the heap needs of the operating system.
namespace Rig {

/// Size of a block of malloc, as the system knows it.
std::size_t BlockSize(void* block);

/// Of a call of operator delete that is under way: whether this program's own
/// code frees the block, or another module does. Where the system cannot tell,
/// another module's calls do not come here in the first place.
bool IsFreedByThisProgram();

/// Before the first question: lets the system load what it needs for an answer.
void PrepareForQuestions();

} // namespace Rig
