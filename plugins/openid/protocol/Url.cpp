#include "openid/protocol/Texts.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>

#include <boost/url/parse.hpp>
#include <boost/url/url_view.hpp>

#include "support/SecretText.h"

namespace Halvorix::OpenId {

namespace {

namespace urls = boost::urls;

constexpr std::size_t LongestUrl = 8192;

std::optional<urls::url_view> Parse(std::string const& url)
{
    auto const parsed = urls::parse_uri(url);
    if (!parsed || !parsed->has_authority())
        return std::nullopt;
    // Boost 1.81 reads 127.0.0.1.example as the host 127.0.0.1 with the path ".example".
    auto const path = parsed->encoded_path();
    if (!path.empty() && path.front() != '/')
        return std::nullopt;
    return *parsed;
}

bool IsLoopback(urls::url_view const& url)
{
    switch (url.host_type()) {
    case urls::host_type::ipv4:
        return url.host_ipv4_address().is_loopback();
    case urls::host_type::ipv6:
        return url.host_ipv6_address().is_loopback();
    case urls::host_type::name:
        return EqualIgnoringCase(url.encoded_host(), "localhost");
    default:
        return false;
    }
}

std::uint16_t PortOf(urls::url_view const& url)
{
    if (!url.has_port() || url.port().empty())
        return url.scheme_id() == urls::scheme::https ? 443 : 80;
    return url.port_number();
}

bool IsSameHost(urls::url_view const& left, urls::url_view const& right)
{
    if (left.host_type() == urls::host_type::ipv6 && right.host_type() == urls::host_type::ipv6)
        return left.host_ipv6_address() == right.host_ipv6_address();
    return EqualIgnoringCase(left.encoded_host(), right.encoded_host());
}

} // namespace

std::string WithQuery(std::string const& url, Parameters const& parameters)
{
    if (parameters.empty())
        return url;
    std::size_t const fragment = std::min(url.find('#'), url.size());
    std::string encoded = EncodeForm(parameters);
    std::string result;
    result.reserve(url.size() + 1 + encoded.size()); // growth would leave copies of secrets
    result.append(url, 0, fragment);
    if (result.find('?') == std::string::npos)
        result += '?';
    else if (result.back() != '?' && result.back() != '&')
        result += '&';
    result.append(encoded).append(url, fragment, std::string::npos);
    SSOServices::Wipe(encoded);
    return result;
}

std::string ForLog(std::string const& url)
{
    std::string result = url.substr(0, url.find_first_of("?#"));
    std::size_t const scheme = result.find("://");
    std::size_t const host = scheme == std::string::npos ? 0 : scheme + 3;
    std::size_t const path = std::min(result.find('/', host), result.size());
    std::size_t const user = result.rfind('@', path);
    if (user != std::string::npos && user >= host)
        result.erase(host, user + 1 - host);
    return OneLine(result);
}

bool IsSecureUrl(std::string const& url)
{
    if (url.size() > LongestUrl)
        return false;
    auto const parsed = Parse(url);
    if (!parsed || parsed->has_userinfo() || parsed->has_fragment())
        return false;
    auto const host = parsed->encoded_host();
    if (host.empty() || host.find('%') != urls::string_view::npos || PortOf(*parsed) == 0)
        return false;
    return parsed->scheme_id() == urls::scheme::https ||
           (parsed->scheme_id() == urls::scheme::http && IsLoopback(*parsed));
}

bool IsSameOrigin(std::string const& left, std::string const& right)
{
    auto const one = Parse(left);
    auto const other = Parse(right);
    return one && other && one->scheme_id() != urls::scheme::unknown &&
           one->scheme_id() == other->scheme_id() && IsSameHost(*one, *other) &&
           PortOf(*one) == PortOf(*other);
}

bool UsesTls(std::string const& url)
{
    auto const parsed = Parse(url);
    return parsed && parsed->scheme_id() == urls::scheme::https;
}

} // namespace Halvorix::OpenId
