#include "doctor/ProgramStart.h"

#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include "common/ModuleGraph.h"
#include "common/Utf8.h"

namespace Halvorix::Doctor {

namespace {

bool MayBeExecutedByAnybody(std::filesystem::path const& file)
{
    struct stat status {};
    return ::stat(file.c_str(), &status) != 0 ||
           (status.st_mode & (S_IXUSR | S_IXGRP | S_IXOTH)) != 0;
}

bool IsMountedNoexec(std::filesystem::path const& file)
{
    struct statvfs status {};
    return ::statvfs(file.c_str(), &status) == 0 && (status.f_flag & ST_NOEXEC) != 0;
}

ProgramStart StartByLoader(Tools::ModuleImage const& image)
{
    if (!image.hasLoader)
        return {{}, {}, image.imports.empty()};
    if (image.loader.empty())
        return {"the name of its loader is empty", "install the program again"};
    Tools::ModuleImage const loader = Tools::ReadModuleImage(std::filesystem::path(image.loader));
    std::string flaw;
    if (!loader.flaw.empty())
        flaw = loader.flaw;
    else if (loader.machine != Tools::OwnMachine())
        flaw = "is not one for " + Tools::OwnMachine();
    if (flaw.empty())
        return {};
    return {"the loader that it names, " + image.loader + ", " + flaw,
            "install the program that is built for this system, or its loader"};
}

} // namespace

ProgramStart StartOf(std::filesystem::path const& file, Tools::ModuleImage const& image)
{
    if (!MayBeExecutedByAnybody(file))
        return {"its user may not execute it",
                "allow the program's user to execute " + Tools::Utf8(file)};
    if (IsMountedNoexec(file))
        return {"it lies on a file system that is mounted noexec",
                "install it on a file system that is not mounted noexec"};
    ProgramStart start = StartByLoader(image);
    // The program's user may be another one.
    start.isDenied = ::access(file.c_str(), X_OK) != 0;
    return start;
}

} // namespace Halvorix::Doctor
