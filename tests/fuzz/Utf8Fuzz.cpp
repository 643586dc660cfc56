// UTF-8 and wide text: the input as bytes to widen and as units to narrow.
//
// Property: both agree with a table of the forms; nothing makes either fail; wide
// text that was narrowed widens to itself, whatever its units, as long as each of
// them can be a character.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "../../src/support/TextConversion.h"
#include "Property.h"
#include "TextReference.h"

using namespace Halvorix::SSOServices;
using namespace Fuzz;

namespace {

void CheckNarrowing(std::wstring const& text)
{
    std::string const narrow = WideToUtf8(text);
    Same("the narrow text", Reference::Narrow(text), narrow);
    bool const areCharacters = std::all_of(text.begin(), text.end(), [](wchar_t unit) {
        return sizeof(wchar_t) == 2 || static_cast<std::uint32_t>(unit) <= 0x10FFFF;
    });
    if (areCharacters)
        Same("what was narrowed widens", text, Utf8ToWide(narrow));
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const input = AsText(data, size);
    std::wstring const wide = Utf8ToWide(input);
    Same("the wide text", Reference::Widen(input), wide);
    CheckNarrowing(wide);

    std::wstring units(size / sizeof(wchar_t), L'\0');
    if (!units.empty())
        std::memcpy(units.data(), data, units.size() * sizeof(wchar_t));
    CheckNarrowing(units);
    // Three bytes a unit reach every character and little else.
    std::wstring characters;
    for (std::size_t i = 0; i + 3 <= size; i += 3)
        characters += static_cast<wchar_t>((data[i] % 17u) << 16 | data[i + 1] << 8 | data[i + 2]);
    CheckNarrowing(characters);
    return 0;
}
