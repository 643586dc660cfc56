#include <cstddef>
#include <memory>

#include "support/ReturnBuffers.h"
#include "types/NetworkCookieRecords.h"

namespace Halvorix::WebServices {

static_assert(sizeof(NetworkCookieJar) == sizeof(void*));

NetworkCookieJar::NetworkCookieJar() : record(new Record) {}

NetworkCookieJar::~NetworkCookieJar() { delete record; }

bool NetworkCookieJar::AddCookie(NetworkCookie const& cookie)
{
    record->cookies.push_back(std::make_unique<NetworkCookie>(cookie));
    return true;
}

int NetworkCookieJar::GetCookieCount() const
{
    return SSOServices::AsCount(record->cookies.size());
}

NetworkCookie NetworkCookieJar::GetCookie(int index) const
{
    if (index < 0 || index >= GetCookieCount())
        return {};
    return *record->cookies[static_cast<std::size_t>(index)];
}

void NetworkCookieJar::DeleteAll() { record->cookies.clear(); }

} // namespace Halvorix::WebServices
