#pragma once

#include <initializer_list>
#include <string>

#include <json/value.h>

namespace Halvorix::OpenId {

/// The first of these claims that is a text and not empty; empty if none is.
std::string FirstClaim(Json::Value const& claims, std::initializer_list<char const*> names);

/// The user's whole name, or what the provider tells in its place.
std::string FullName(Json::Value const& claims);

} // namespace Halvorix::OpenId
