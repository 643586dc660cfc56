#pragma once

#include <string>

#include "platform/Platform.h"

namespace Halvorix::SSOServices {

/// The system's text for an error code, with its line end.
std::wstring FormatSystemError(Platform::ErrorCode code);

} // namespace Halvorix::SSOServices
