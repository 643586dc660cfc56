#include "Host.h"

#include "System.h"
#include "platform/Platform.h"

namespace Halvorix::Tools {

Host ThisProgramAsHost()
{
    std::filesystem::path const here = FromWide(Platform::ExecutableFile()).parent_path();
    return {here, {here, here / HXSSO_LIBRARY_FOLDER}};
}

} // namespace Halvorix::Tools
