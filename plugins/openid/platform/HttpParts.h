#pragma once

#include <string>
#include <string_view>

#include "openid/platform/Http.h"

/// @file
/// What the ways to send a request have in common.

namespace Halvorix::OpenId {

/// The client's name, as a server's log shows it.
constexpr char const* UserAgent = "HxSSOOpenID";
constexpr char const* NotSecureAddress =
    "the address is neither https nor http at this machine, or has a user's name in it";
/// Of all headers of an answer together.
constexpr std::size_t MaxHeaderBytes = std::size_t{64} * 1024;

/// A failure in place of an answer: nothing is left of what came before it.
void Fail(HttpResponse& response, HttpFailure failure, std::string reason);

/// Why a request is not sent at all; empty if nothing speaks against it. Its address is looked at
/// by whoever sends it.
std::string WhyNotSent(HttpRequest const& request);

/// "Name: value", as it goes over the line.
std::string HeaderLine(std::pair<std::string, std::string> const& header);

/// Takes up a line of the answer's head; the one with the status begins anew.
void AddHeaderLine(HttpResponse& response, std::string_view line);

/// Judges a whole answer: one that ended before the length that it gave, or a proxy's question.
void CheckWhole(HttpResponse& response);

/// How well credentials with this host and port fit a proxy: for its host and port, else for its
/// host, else for any, in which names in small and capital letters are the same. The proxy's port
/// 0 is an unknown one. 0 if they do not fit, else the better the more.
int ProxyFit(std::string const& host, int port, std::string const& proxyHost, int proxyPort);

/// The credentials that fit a proxy best; null if none do. The port 0 is an unknown one.
ProxyCredential const* CredentialFor(HttpRequest const& request, std::string const& host, int port);

} // namespace Halvorix::OpenId
