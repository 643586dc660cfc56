#include "json/Base64.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <boost/archive/iterators/base64_from_binary.hpp>
#include <boost/archive/iterators/binary_from_base64.hpp>
#include <boost/archive/iterators/dataflow_exception.hpp>
#include <boost/archive/iterators/transform_width.hpp>

#include "support/SecretText.h"

namespace Halvorix::SSOServices {

namespace {

namespace iterators = boost::archive::iterators;

using Position = std::string::const_iterator;
using Encoder = iterators::base64_from_binary<iterators::transform_width<Position, 6, 8>>;
using Decoder = iterators::transform_width<iterators::binary_from_base64<Position>, 8, 6>;

} // namespace

std::string Base64Encode(std::string const& bytes)
{
    // With all room at once: growth would leave copies behind.
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    std::copy(Encoder(bytes.begin()), Encoder(bytes.end()), std::back_inserter(text));
    text.append((3 - bytes.size() % 3) % 3, '=');
    return text;
}

std::string Base64Decode(std::string encoded)
{
    SecretText<char> text(std::move(encoded));
    auto const padding = static_cast<std::size_t>(std::count(text->begin(), text->end(), '='));
    std::replace(text->begin(), text->end(), '=', 'A');
    // Six bits alone make no byte: the iterator would look for more behind the
    // end, find none of the alphabet and throw just this.
    if (text->size() % 4 == 1)
        throw iterators::dataflow_exception(
            iterators::dataflow_exception::invalid_base64_character);
    SecretText<char> bytes;
    bytes->reserve(text->size() / 4 * 3 + 3);
    std::copy(Decoder(text->cbegin()), Decoder(text->cend()), std::back_inserter(*bytes));
    if (padding > bytes->size())
        throw std::out_of_range("invalid string position");
    bytes->erase(bytes->size() - padding);
    return std::move(*bytes);
}

} // namespace Halvorix::SSOServices
