#include "openid/interfaces/TokenSpecs.h"

#include <SSOServicesPrivate.h>

#include "openid/interfaces/HostTexts.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

using namespace WebServices;

std::optional<OAuth2TokenSpec> ReadSpec(char const* json)
{
    OAuth2TokenSpec spec;
    if (!SSOServicesPrivate::JsonToOAuth2TokenSpec(json, spec))
        return std::nullopt;
    return spec;
}

TokenSpec MeantBy(OAuth2TokenSpec const& spec)
{
    std::wstring scope(static_cast<std::size_t>(spec.GetScope(nullptr, 0)), L'\0');
    spec.GetScope(scope.data(), static_cast<int>(scope.size()) + 1);
    return {spec.GetType(), NormalScope(ToUtf8(scope))};
}

char* NewTokenDocument(Secret const& token, OAuth2TokenSpec const& spec)
{
    // The library's own writer wipes what it holds meanwhile.
    SSOServices::SecretText<wchar_t> const wide(ToWide(*token));
    OAuth2Token answer;
    SSOServicesPrivate::Initialize(answer, *wide, spec);
    std::string text;
    SSOServicesPrivate::OAuth2TokenToJson(answer, text);
    return NewText(*Secret(std::move(text)));
}

} // namespace Halvorix::OpenId
