#pragma once

#include <cstddef>
#include <string>

namespace Halvorix::SSOServices {

// The rules by which getters fill a caller's buffer. Capacities and answers are
// counts of units; answers never include the terminator.

/// Lengths beyond the range of int keep their low 32 bits.
int AsCount(std::size_t length);

/// Copies a terminated text, cutting it to fit; always terminates. Answers the
/// units stored; 0 for a capacity below 1.
int CopyWideToBuffer(wchar_t* buffer, int capacity, wchar_t const* source);

/// A null buffer asks for the length; otherwise a text too long is cut.
int GetTruncated(std::wstring const& text, wchar_t* buffer, int capacity);

/// A null buffer asks for the length; otherwise a text too long gives the empty
/// text and 0.
int GetAllOrNothing(std::wstring const& text, wchar_t* buffer, int capacity);

/// A null buffer asks for the count; otherwise bytes too many are cut, and
/// terminated only if there is room behind them.
int CopyBytesToBuffer(std::string const& bytes, char* buffer, int capacity);

} // namespace Halvorix::SSOServices
