#pragma once

#include <filesystem>
#include <string>

#include "discovery/SSOPathResolver.h"

namespace Bench {

/// A folder of its own for the life of the object, with a server application in
/// it, and a resolver that has found it.
class ResolverInTree {
public:
    /// The content is that of the version compatibility file.
    explicit ResolverInTree(std::string const& compatibility);
    ~ResolverInTree();
    ResolverInTree(ResolverInTree const&) = delete;
    ResolverInTree& operator=(ResolverInTree const&) = delete;

    std::filesystem::path const root;
    Halvorix::SSOServices::SSOPathResolver resolver;
};

} // namespace Bench
