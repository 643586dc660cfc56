#pragma once

#include <string_view>

namespace Rig {

/// While it lives, each block that goes back to the heap through operator delete
/// is searched for a secret: in bytes, in wide units, and in base64 wherever the
/// secret stands in what is encoded. One at a time.
class FreedMemory {
public:
    explicit FreedMemory(std::string_view secret);
    ~FreedMemory();
    FreedMemory(FreedMemory const&) = delete;
    FreedMemory& operator=(FreedMemory const&) = delete;

    /// Blocks with the secret that this program freed.
    int WithSecret() const;
    /// Those that another module freed, as far as the system shows them.
    int WithSecretOfOthers() const;
    /// All blocks that were searched.
    int Searched() const;
};

} // namespace Rig
