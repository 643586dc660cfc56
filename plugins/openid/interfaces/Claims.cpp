#include "openid/interfaces/Claims.h"

#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

std::string FirstClaim(Json::Value const& claims, std::initializer_list<char const*> names)
{
    for (char const* const name : names)
        if (std::string text = TextMember(claims, name); !text.empty())
            return text;
    return {};
}

std::string FullName(Json::Value const& claims)
{
    if (std::string name = TextMember(claims, "name"); !name.empty())
        return name;
    std::string const given = TextMember(claims, "given_name");
    std::string const family = TextMember(claims, "family_name");
    if (!given.empty() && !family.empty())
        return given + " " + family;
    return FirstClaim(claims, {"given_name", "family_name", "preferred_username", "email", "sub"});
}

} // namespace Halvorix::OpenId
