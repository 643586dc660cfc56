#pragma once

#include <string>

#include "openid/protocol/Outcome.h"
#include "openid/session/TokenStore.h"

namespace Halvorix::OpenId {

/// The protected bytes of a login's file.
Outcome<Secret> WriteLogin(StoredLogin const& login);

/// The way back. The failure says in a few words what is wrong with the bytes, which are damaged or
/// of a newer version of this plugin. With a remedy it says that the system cannot make them clear
/// for now, and they may be good.
Outcome<StoredLogin> ReadLogin(std::string const& bytes);

} // namespace Halvorix::OpenId
