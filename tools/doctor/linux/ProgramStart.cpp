#include "../ProgramStart.h"

#include <unistd.h>

#include "../../common/ModuleGraph.h"
#include "../../common/Utf8.h"

namespace Halvorix::Doctor {

ProgramStart StartOf(std::filesystem::path const& file, Tools::ModuleImage const& image)
{
    if (::access(file.c_str(), X_OK) != 0)
        return {"its user may not execute it",
                "allow the program's user to execute " + Tools::Utf8(file)};
    if (image.loader.empty())
        return {{}, {}, image.imports.empty()};
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

} // namespace Halvorix::Doctor
