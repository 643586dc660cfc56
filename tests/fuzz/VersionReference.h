#pragma once

#include <string>
#include <vector>

// The rules for versions, read once more and written as plainly as they are
// told, apart from the library's own code.
namespace Fuzz::Reference {

using Version = std::vector<std::string>;

struct Range {
    Version lowest;
    Version highest;
    std::vector<Version> listed;
};

Version Parse(std::string const& text);

/// -1, 0 or 1; a depth above 0 limits the positions compared.
int Compare(Version const& a, Version const& b, int depth);

Range MakeRange(std::string const& lowest, std::string const& highest,
                std::vector<std::string> const& listed);

bool IsEmpty(Range const& range);
bool Contains(Range const& range, Version const& version);

} // namespace Fuzz::Reference
