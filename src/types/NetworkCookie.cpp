#include "support/ReturnBuffers.h"
#include "types/NetworkCookieRecords.h"

namespace Halvorix::WebServices {

static_assert(sizeof(NetworkCookie) == sizeof(void*));

namespace {

wchar_t const* TextOrEmpty(wchar_t const* text) { return text == nullptr ? L"" : text; }

} // namespace

NetworkCookie::NetworkCookie() : record(new Record) {}

NetworkCookie::NetworkCookie(NetworkCookie const& other) : record(new Record(*other.record)) {}

NetworkCookie& NetworkCookie::operator=(NetworkCookie const& other)
{
    // In this order, on purpose: it shows where memory runs out half-way.
    if (this != &other) {
        record->name = other.record->name;
        record->value = other.record->value;
        record->secure = other.record->secure;
        record->httpOnly = other.record->httpOnly;
        record->expiryDate = other.record->expiryDate;
        record->domain = other.record->domain;
        record->path = other.record->path;
    }
    return *this;
}

NetworkCookie::~NetworkCookie()
{
    delete record;
    record = nullptr;
}

int NetworkCookie::GetName(char* buffer, int size) const
{
    return SSOServices::CopyBytesToBuffer(record->name, buffer, size);
}

void NetworkCookie::SetName(char const* name) { record->name = name; }

int NetworkCookie::GetValue(char* buffer, int size) const
{
    return SSOServices::CopyBytesToBuffer(*record->value, buffer, size);
}

void NetworkCookie::SetValue(char const* value) { record->value = value; }

int NetworkCookie::GetDomain(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->domain, buffer, size);
}

void NetworkCookie::SetDomain(wchar_t const* domain) { record->domain = TextOrEmpty(domain); }

int NetworkCookie::GetPath(wchar_t* buffer, int size) const
{
    return SSOServices::GetTruncated(record->path, buffer, size);
}

void NetworkCookie::SetPath(wchar_t const* path) { record->path = TextOrEmpty(path); }

bool NetworkCookie::IsSecure() const { return record->secure; }

void NetworkCookie::SetSecure(bool secure) { record->secure = secure; }

bool NetworkCookie::IsHttpOnly() const { return record->httpOnly; }

void NetworkCookie::SetHttpOnly(bool httpOnly) { record->httpOnly = httpOnly; }

long long NetworkCookie::GetExpiryDate() const { return record->expiryDate; }

void NetworkCookie::SetExpiryDate(long long expiryDate) { record->expiryDate = expiryDate; }

} // namespace Halvorix::WebServices
