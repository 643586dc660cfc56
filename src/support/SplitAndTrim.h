#pragma once

#include <algorithm>
#include <locale>
#include <string>
#include <vector>

#include <boost/algorithm/string/split.hpp>
#include <boost/algorithm/string/trim.hpp>

namespace Halvorix::SSOServices {

/// What stands between the separators, without the white space at its edges; nothing
/// for a piece that is empty then. What is white space is the global locale's.
template <class Char>
std::vector<std::basic_string<Char>> SplitAndTrim(std::basic_string<Char> const& text,
                                                  Char separator)
{
    std::locale const locale;
    // Once: boost::algorithm::trim looks it up for each character.
    auto const& classes = std::use_facet<std::ctype<Char>>(locale);
    auto const isSpace = [&](Char c) { return classes.is(std::ctype_base::space, c); };
    std::vector<std::basic_string<Char>> pieces;
    boost::algorithm::split(pieces, text, [=](Char c) { return c == separator; });
    for (std::basic_string<Char>& piece : pieces)
        boost::algorithm::trim_if(piece, isSpace);
    pieces.erase(std::remove(pieces.begin(), pieces.end(), std::basic_string<Char>()),
                 pieces.end());
    return pieces;
}

} // namespace Halvorix::SSOServices
