#pragma once

#include <cstddef>
#include <string>

namespace Halvorix::Doctor {

/// The line in pieces of at most so many columns, broken at blanks: a longer word stays
/// whole, so that a path can be copied. Those behind the first begin with `indent`
/// blanks. Sequences for colours take no column. 0 columns: the line as it is.
std::string Wrapped(std::string const& line, std::size_t columns, std::size_t indent);

} // namespace Halvorix::Doctor
