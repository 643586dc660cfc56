#include "framework/ThisBuild.h"

namespace Rig {

bool IsSanitized() { return HXSSO_SANITIZED; }

bool IsInstrumented() { return HXSSO_INSTRUMENTED; }

std::string BuildName() { return HXSSO_BUILD_NAME; }

std::filesystem::path DependentModule() { return HXSSO_DEPENDENT_MODULE; }

std::filesystem::path SourceFile(std::string const& relative)
{
    return std::filesystem::u8path(HXSSO_SOURCE_FOLDER) / relative;
}

} // namespace Rig
