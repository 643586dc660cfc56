#pragma once

#include <string>

#include "openid/platform/Http.h"
#include "openid/platform/windows/Windows.h"

namespace Halvorix::OpenId {

/// What an error of WinHTTP means for whoever asked.
HttpFailure HttpFailureOf(DWORD error);

/// In words; `certificateFlags` are what was wrong with a certificate, 0 if nothing was.
std::string HttpErrorText(DWORD error, DWORD certificateFlags);

} // namespace Halvorix::OpenId
