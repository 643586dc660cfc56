// A plugin that uses a class of the library and is not linked with it.

#include <OAuth2Token.h>
#include <plugin/ISSOClientFactory.h>

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory()
{
    if (Halvorix::WebServices::OAuth2TokenSpec() != Halvorix::WebServices::OAuth2TokenSpec())
        throw 1;
    return nullptr;
}
