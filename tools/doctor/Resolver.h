#pragma once

#include <utility>

#include "discovery/SSOPathResolver.h"

namespace Halvorix::Doctor {

/// The library's resolver, asked for its reasons too.
class Resolver : public SSOServices::SSOPathResolver {
public:
    Resolver(SSOServices::Version version, SSOServices::LogFunction log)
        : SSOPathResolver(std::move(version), std::move(log))
    {
        KeepSearched(directories);
    }
    Resolver(Resolver const&) = delete;
    Resolver& operator=(Resolver const&) = delete;

    Searched directories;

    using SSOPathResolver::CompatibilityDirectories;
    using SSOPathResolver::GetClientConfig;
    using SSOPathResolver::GetVersionCompatibilityFile;
    using SSOPathResolver::IsClientConfigLoaded;
    using SSOPathResolver::ModulePathKey;
    using SSOPathResolver::ReadModuleRecord;
    using SSOPathResolver::ResolvedSearchPaths;
    using SSOPathResolver::SetSupportFileSearchPaths;
};

} // namespace Halvorix::Doctor
