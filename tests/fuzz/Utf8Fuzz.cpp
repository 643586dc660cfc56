// UTF-8 and wide text: the input as bytes to widen and as units to narrow.
//
// Property: both agree with a table of the forms; nothing makes either fail; wide
// text that was narrowed widens to itself, whatever its units, save those that can
// be no character and become its replacement.

#include <cstring>
#include <string>

#include "fuzz/Property.h"
#include "fuzz/TextReference.h"
#include "support/TextConversion.h"

using namespace Halvorix::SSOServices;
using namespace Fuzz;

namespace {

void CheckNarrowing(std::wstring const& text)
{
    std::string const narrow = WideToUtf8(text);
    Same("the narrow text", Reference::Narrow(text), narrow);
    std::wstring expected = text;
    for (wchar_t& unit : expected)
        if (!Reference::IsCharacter(unit))
            unit = 0xFFFD;
    Same("what was narrowed widens", expected, Utf8ToWide(narrow));
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
