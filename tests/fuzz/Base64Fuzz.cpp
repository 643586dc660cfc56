// Base64, both ways: the input as bytes to encode and as text to decode.
//
// Property: both agree with a table of the alphabet; what was encoded decodes to
// the bytes; a bad text ends in the exception of its fault.

#include <stdexcept>
#include <string>

#include <boost/archive/iterators/dataflow_exception.hpp>

#include "fuzz/Property.h"
#include "fuzz/TextReference.h"
#include "json/Base64.h"

using namespace Halvorix::SSOServices;
using namespace Fuzz;

namespace {

void CheckDecoding(std::string const& text)
{
    std::string expected;
    Reference::Decoding const decoding = Reference::Decode64(text, expected);
    try {
        std::string const bytes = Base64Decode(text);
        Holds(decoding == Reference::Decoding::Done, "a bad text does not decode", text, bytes);
        Same("the decoded bytes", expected, bytes);
    } catch (boost::archive::iterators::dataflow_exception const&) {
        Holds(decoding == Reference::Decoding::NotInAlphabet, "the alphabet suffices", text);
    } catch (std::out_of_range const& error) {
        Holds(decoding == Reference::Decoding::MorePaddingThanBytes, "there are bytes to take away",
              text);
        Same("what is said", std::string("invalid string position"), std::string(error.what()));
    }
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const input = AsText(data, size);
    std::string const encoded = Base64Encode(input);
    Same("the encoded text", Reference::Encode64(input), encoded);
    Same("what was encoded decodes", input, Base64Decode(encoded));
    CheckDecoding(input);
    // Most inputs are no base64: made of the alphabet by their low bits they are.
    std::string const alphabet = Reference::Encode64("\xFB\xF0=\x10\x83\x10Q\x87 \x92\xCB") + '=';
    std::string text;
    for (char const byte : input)
        text += alphabet[static_cast<unsigned char>(byte) % alphabet.size()];
    CheckDecoding(text);
    return 0;
}
