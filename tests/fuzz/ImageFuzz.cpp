// A module's image: the input as the file of a module.
//
// Property: reading it comes to an end, within its limits and without an exception; each
// name that comes of it stands in the file; and what is read from a source that fails
// now and then is no more than what is there.

#include <set>
#include <string>

#include "common/ModuleImage.h"
#include "fuzz/Property.h"

using namespace Halvorix::Tools;
using namespace Fuzz;

namespace {

// One that ends earlier than its size says, as a file does that is being written.
class ShortSource : public ByteSource {
public:
    explicit ShortSource(std::string const& content) : text(content) {}
    std::uint64_t Size() const override { return text.size() + 65536; }
    bool Read(std::uint64_t offset, char* to, std::size_t size) override
    {
        return offset + size <= text.size() && TextSource(text).Read(offset, to, size);
    }

private:
    std::string const& text;
};

// A function that is taken by its number has none there.
void StandsIn(std::string const& bytes, std::string const& name)
{
    bool const isNumber = name.size() > 1 && name[0] == '#' &&
                          name.find_first_not_of("0123456789", 1) == std::string::npos;
    Holds(isNumber || bytes.find(name) != std::string::npos, "a name stands in the file", name);
}

void CheckImage(std::string const& bytes, ModuleImage const& image)
{
    Holds(image.imports.size() <= MostImports + 1, "imports are limited", image.imports.size());
    for (std::string const* const name :
         {&image.ownName, &image.runPath, &image.inheritedRunPath, &image.loader})
        StandsIn(bytes, *name);
    for (std::string const& name : image.imports) {
        StandsIn(bytes, name);
        Holds(!name.empty() || !image.flaw.empty(), "an import has a name", image.flaw);
    }
    Holds(image.format != ImageFormat::None || image.imports.empty(),
          "what is no module needs none", image.imports);
}

bool IsAny(std::string const&) { return true; }

void CheckSymbols(std::string const& bytes, ByteView const& view)
{
    SymbolBudget budget;
    ModuleNeeds const needs = ReadModuleNeeds(view, budget);
    ModuleOffers const offers = ReadModuleOffers(view, IsAny, budget);
    std::vector<std::string> const own = ReadOwnSymbols(view, IsAny, budget);
    // Many of them may be one and the same.
    std::set<std::string> names(offers.exports.begin(), offers.exports.end());
    std::size_t kept = 0;
    for (Import const& import : needs.imports) {
        names.insert({import.symbol, import.module});
        kept += sizeof(import) + import.symbol.size() + import.module.size();
    }
    for (NeededVersion const& needed : needs.versions) {
        names.insert({needed.module, needed.version});
        kept += sizeof(needed) + needed.module.size() + needed.version.size();
    }
    for (auto const* list : {&offers.exports, &own})
        for (std::string const& name : *list)
            kept += sizeof(name) + name.size();
    Holds(kept <= MostSymbolText + bytes.size(), "the memory of names is limited", kept);
    names.insert(offers.versions.begin(), offers.versions.end());
    names.insert(own.begin(), own.end());
    for (std::string const& name : names)
        StandsIn(bytes, name);
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const input = AsText(data, size);
    TextSource source(input);
    ByteView const bytes(source);
    ModuleImage const image = ReadModuleImage(bytes);
    CheckImage(input, image);
    ModuleImage const again = ReadModuleImage(bytes);
    Same("a second reading's imports", image.imports, again.imports);
    Same("a second reading's flaw", image.flaw, again.flaw);
    if (image.format == NativeFormat)
        CheckSymbols(input, bytes);
    LookForRuntimes(bytes);

    ShortSource failing(input);
    CheckImage(input + std::string(1, '\0'), ReadModuleImage(ByteView(failing)));
    return 0;
}
