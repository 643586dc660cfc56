#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ByteView.h"

namespace Halvorix::Tools {

enum class ImageFormat { None, Elf, Pe };

/// What the headers of a module say, read without loading it.
struct ModuleImage {
    ImageFormat format = ImageFormat::None;
    std::string machine;   ///< "x86-64", say; for two images of one format comparable
    bool isModule = false; ///< and no program
    std::string flaw;      ///< why nothing more could be read; empty if all was

    std::vector<std::string> imports; ///< names of the modules that it needs
    /// Exported names that hold that of the factory procedure.
    std::vector<std::string> factoryNames;
    /// Folders in which the module's own imports are looked for.
    std::string runPath;
    /// The older kind, which counts only where there is none of the newer one.
    std::string inheritedRunPath;
    bool holdsCppRuntime = false; ///< a C++ runtime was linked statically
    bool holdsJsoncpp = false;    ///< jsoncpp was linked statically
};

/// Never throws for what the bytes are.
ModuleImage ReadModuleImage(std::string_view content);

/// No module needs more; what says so is damaged.
constexpr unsigned MostImports = 1024;

bool NamesFactoryProcedure(std::string const& name);

// One for each format; the bytes begin with its mark.
void ReadElfImage(ByteView const& bytes, ModuleImage& image);
void ReadPeImage(ByteView const& bytes, ModuleImage& image);

} // namespace Halvorix::Tools
