#include "hxsso/Text.h"

#include <ctime>
#include <iterator>

#include <boost/date_time/posix_time/conversion.hpp>
#include <boost/date_time/posix_time/posix_time_types.hpp>
#include <boost/date_time/posix_time/time_formatters.hpp>
#include <boost/locale/encoding_utf.hpp>
#include <boost/locale/utf.hpp>

#include "common/Utf8.h"

namespace Halvorix::HxSSO {

namespace {

namespace utf = boost::locale::utf;

template <class Unit>
void WipeUnits(std::basic_string<Unit>& text)
{
    // A compiler may leave out what nobody reads, but for what is volatile.
    text.resize(text.capacity());
    Unit volatile* const units = text.data();
    for (std::size_t i = 0; i < text.size(); ++i)
        units[i] = 0;
    text.clear();
}

} // namespace

std::string ToUtf8(std::wstring const& text) { return Tools::Utf8(text); }

std::wstring ToWide(std::string const& utf8)
{
    return boost::locale::conv::utf_to_utf<wchar_t>(Tools::Utf8(utf8));
}

std::string AsTime(std::int64_t seconds)
{
    auto const time = static_cast<std::time_t>(seconds);
    return boost::posix_time::to_iso_extended_string(boost::posix_time::from_time_t(time)) + 'Z';
}

std::int64_t Now() { return std::time(nullptr); }

void Wipe(std::string& text) { WipeUnits(text); }
void Wipe(std::wstring& text) { WipeUnits(text); }

void AppendUtf8(std::string& to, wchar_t const* text, std::size_t length)
{
    wchar_t const* const end = text + length;
    while (text != end) {
        utf::code_point const point = utf::utf_traits<wchar_t>::decode(text, end);
        utf::utf_traits<char>::encode(utf::is_valid_codepoint(point) ? point : 0xFFFD,
                                      std::back_inserter(to));
    }
}

} // namespace Halvorix::HxSSO
