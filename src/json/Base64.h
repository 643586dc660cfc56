#pragma once

#include <string>

namespace Halvorix::SSOServices {

/// Standard alphabet, padded with "=", no line breaks.
std::string Base64Encode(std::string const& bytes);

/// An "=" anywhere reads as zero bits and takes a byte from the end. Other
/// characters outside the alphabet, white space included, throw
/// boost::archive::iterators::dataflow_exception; more "=" than bytes throws
/// std::out_of_range.
std::string Base64Decode(std::string encoded);

} // namespace Halvorix::SSOServices
