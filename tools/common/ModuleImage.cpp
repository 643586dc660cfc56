#include "ModuleImage.h"

namespace Halvorix::Tools {

namespace {

using namespace std::string_view_literals;

// Messages that only the implementation of a library holds, never a user of it:
// in libstdc++ and libc++, those of the handler for what nobody catches.
constexpr std::string_view CppRuntimeMarks[] = {
    "terminate called after throwing an instance of '"sv,
    "terminating with %s exception of type %s"sv,
};
constexpr std::string_view JsoncppMark =
    "A valid JSON document must be either an array or an object value."sv;

} // namespace

bool NamesFactoryProcedure(std::string const& name)
{
    return name.find("GetSSOClientFactory") != std::string::npos;
}

ModuleImage ReadModuleImage(std::string_view content)
{
    ModuleImage image;
    ByteView const bytes(content);
    if (content.substr(0, 4) == "\x7f"
                                "ELF"sv) {
        image.format = ImageFormat::Elf;
        ReadElfImage(bytes, image);
    } else if (content.substr(0, 2) == "MZ"sv) {
        image.format = ImageFormat::Pe;
        ReadPeImage(bytes, image);
    }
    for (std::string_view const mark : CppRuntimeMarks)
        image.holdsCppRuntime = image.holdsCppRuntime || bytes.Contains(mark);
    image.holdsJsoncpp = bytes.Contains(JsoncppMark);
    return image;
}

} // namespace Halvorix::Tools
