#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Halvorix::Doctor {

/// A member whose name its object has already.
struct RepeatedKey {
    std::size_t offset;
    std::string path; ///< as a JSON path
};

/// In a text that the JSON reader has taken: it keeps the last one and says nothing.
std::vector<RepeatedKey> FindRepeatedKeys(std::string const& text);

} // namespace Halvorix::Doctor
