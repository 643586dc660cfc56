#pragma once

#include "discovery/SSOPathResolver.h"

namespace Halvorix::Doctor {

/// The library's resolver, asked for what it has read too.
class Resolver : public SSOServices::SSOPathResolver {
public:
    using SSOPathResolver::SSOPathResolver;

    using SSOPathResolver::CompatibilityDirectories;
    using SSOPathResolver::GetClientConfig;
    using SSOPathResolver::GetVersionCompatibilityFile;
    using SSOPathResolver::IsClientConfigLoaded;
    using SSOPathResolver::ModulePathKey;
    using SSOPathResolver::ReadModule;
    using SSOPathResolver::ResolvedSearchPaths;
    using SSOPathResolver::SetSupportFileSearchPaths;
};

} // namespace Halvorix::Doctor
