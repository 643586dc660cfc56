#include "host/ProcessLocale.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

#include <boost/filesystem/path.hpp>
#include <boost/locale/encoding_errors.hpp>
#include <boost/locale/generator.hpp>
#include <boost/locale/util.hpp>

#include "support/Undestroyed.h"

namespace Halvorix::SSOServices {

namespace {

// language[_territory][.character set][@modifier]. Boost's generator ends the process over
// a language longer than any there is, and over some keywords with values behind an @.
bool IsLocaleName(std::string const& text)
{
    constexpr std::size_t longest = 100;
    constexpr std::size_t longestLanguage = 11;
    constexpr char const* characters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.-@";
    return text.size() <= longest && text.find_first_not_of(characters) == std::string::npos &&
           std::min(text.find_first_of("_.-@"), text.size()) <= longestLanguage;
}

// Threads that use the library first at the same time each make it, and all but one let
// it go: none of them is the last to do so, or the C library unloads what another loads.
Undestroyed<std::optional<std::locale>> keptLocaleOfTheCLibrary;

} // namespace

// The environment may name anything: not a locale at all, or one with a character set
// that does not exist.
std::locale SystemLocale()
{
    boost::locale::generator const generate;
    if (!IsLocaleName(boost::locale::util::get_system_locale()))
        return generate("C.UTF-8");
    try {
        return generate("");
    } catch (boost::locale::conv::invalid_charset_error const&) {
        return generate("C.UTF-8");
    }
}

std::locale LocaleOfTheCLibrary()
{
    try {
        return std::locale("");
    } catch (std::runtime_error const&) {
        return std::locale::classic(); // not installed
    }
}

void SetProcessLocale(std::locale const& locale, std::locale const& ofTheCLibrary)
{
    keptLocaleOfTheCLibrary.value = ofTheCLibrary;
    std::locale::global(locale);
    try {
        boost::filesystem::path::imbue(locale);
    } catch (std::runtime_error const&) {
        // It is imbued by then. What cannot be made is the answer, the locale
        // before it, where the environment names one that is not installed.
    }
}

} // namespace Halvorix::SSOServices
