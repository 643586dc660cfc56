#include <WebServicesConfiguration.h>

#include <string>

#include "support/ReturnBuffers.h"
#include "support/SecretText.h"

namespace Halvorix::WebServices {

static_assert(sizeof(WebServicesConfiguration) == 2 * sizeof(void*));

struct WebServicesConfiguration::Record {
    WebServices::Server server{};
    std::wstring consumerKey;
    SSOServices::SecretText<wchar_t> consumerSecret;
    std::wstring serialNumber;
    std::wstring productLineCode;
    std::wstring cipUserId; // inert: nothing writes or reads it
    std::wstring upiRelease;
    std::wstring upiMaster;
    std::wstring upiBuild;
    std::wstring featureName;
    std::wstring featureVersion;
    std::wstring oauth2ConsumerKey;
    SSOServices::SecretText<wchar_t> oauth2ConsumerSecret;
    std::wstring oauth2AccessTokenScope;
};

WebServicesConfiguration::WebServicesConfiguration() : record(new Record) {}

WebServicesConfiguration::WebServicesConfiguration(WebServicesConfiguration const& other)
    : record(new Record(*other.record))
{
}

WebServicesConfiguration& WebServicesConfiguration::operator=(WebServicesConfiguration const& other)
{
    if (this != &other)
        *record = *other.record;
    return *this;
}

WebServicesConfiguration::~WebServicesConfiguration() { delete record; }

Server WebServicesConfiguration::GetServer() const { return record->server; }

void WebServicesConfiguration::SetServer(Server server) { record->server = server; }

int WebServicesConfiguration::GetConsumerKey(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->consumerKey, buffer, size);
}

void WebServicesConfiguration::SetConsumerKey(wchar_t const* text) { record->consumerKey = text; }

int WebServicesConfiguration::GetConsumerSecret(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(*record->consumerSecret, buffer, size);
}

void WebServicesConfiguration::SetConsumerSecret(wchar_t const* text)
{
    record->consumerSecret = text;
}

int WebServicesConfiguration::GetSerialNumber(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->serialNumber, buffer, size);
}

void WebServicesConfiguration::SetSerialNumber(wchar_t const* text) { record->serialNumber = text; }

int WebServicesConfiguration::GetProductLineCode(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->productLineCode, buffer, size);
}

void WebServicesConfiguration::SetProductLineCode(wchar_t const* text)
{
    record->productLineCode = text;
}

// Inert on purpose: the field always stays empty.
int WebServicesConfiguration::GetCIPUserId(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(std::wstring(), buffer, size);
}

void WebServicesConfiguration::SetCIPUserId(wchar_t const*) {}

int WebServicesConfiguration::GetUPIRelease(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->upiRelease, buffer, size);
}

void WebServicesConfiguration::SetUPIRelease(wchar_t const* text) { record->upiRelease = text; }

int WebServicesConfiguration::GetUPIMaster(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->upiMaster, buffer, size);
}

void WebServicesConfiguration::SetUPIMaster(wchar_t const* text) { record->upiMaster = text; }

int WebServicesConfiguration::GetUPIBuild(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->upiBuild, buffer, size);
}

void WebServicesConfiguration::SetUPIBuild(wchar_t const* text) { record->upiBuild = text; }

int WebServicesConfiguration::GetFeatureName(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->featureName, buffer, size);
}

void WebServicesConfiguration::SetFeatureName(wchar_t const* text) { record->featureName = text; }

int WebServicesConfiguration::GetFeatureVersion(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->featureVersion, buffer, size);
}

void WebServicesConfiguration::SetFeatureVersion(wchar_t const* text)
{
    record->featureVersion = text;
}

int WebServicesConfiguration::GetOAuth2ConsumerKey(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->oauth2ConsumerKey, buffer, size);
}

void WebServicesConfiguration::SetOAuth2ConsumerKey(wchar_t const* text)
{
    record->oauth2ConsumerKey = text;
}

int WebServicesConfiguration::GetOAuth2ConsumerSecret(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(*record->oauth2ConsumerSecret, buffer, size);
}

void WebServicesConfiguration::SetOAuth2ConsumerSecret(wchar_t const* text)
{
    record->oauth2ConsumerSecret = text;
}

int WebServicesConfiguration::GetOAuth2AccessTokenScope(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->oauth2AccessTokenScope, buffer, size);
}

void WebServicesConfiguration::SetOAuth2AccessTokenScope(wchar_t const* text)
{
    record->oauth2AccessTokenScope = text;
}

} // namespace Halvorix::WebServices
