#include "openid/platform/windows/RequestSignals.h"

#include <new>

#include "openid/platform/SecretBytes.h"

namespace Halvorix::OpenId {

RequestSignals::~RequestSignals()
{
    Wipe(body);
    Wipe(piece, sizeof piece);
}

DWORD_PTR RequestSignals::Watch(HINTERNET request, std::shared_ptr<RequestSignals> const& signals)
{
    auto own = std::make_unique<std::shared_ptr<RequestSignals>>(signals);
    auto context = reinterpret_cast<DWORD_PTR>(own.get());
    constexpr DWORD wanted = WINHTTP_CALLBACK_FLAG_ALL_COMPLETIONS |
                             WINHTTP_CALLBACK_FLAG_SECURE_FAILURE |
                             WINHTTP_CALLBACK_FLAG_RESOLVE_NAME | WINHTTP_CALLBACK_FLAG_HANDLES;
    if (!::WinHttpSetOption(request, WINHTTP_OPTION_CONTEXT_VALUE, &context, sizeof context) ||
        ::WinHttpSetStatusCallback(request, &RequestSignals::OnStatus, wanted, 0) ==
            WINHTTP_INVALID_STATUS_CALLBACK)
        return 0;
    own.release(); // up to the last word, that the handle is closed
    return context;
}

void CALLBACK RequestSignals::OnStatus(HINTERNET, DWORD_PTR context, DWORD status,
                                       void* information, DWORD size)
{
    auto* const own = reinterpret_cast<std::shared_ptr<RequestSignals>*>(context);
    if (own == nullptr)
        return;
    if (status == WINHTTP_CALLBACK_STATUS_HANDLE_CLOSING)
        delete own;
    else
        (*own)->Take(status, information, size);
}

void RequestSignals::Take(DWORD status, void const* information, DWORD size)
{
    std::lock_guard const guard(mutex);
    switch (status) {
    case WINHTTP_CALLBACK_STATUS_RESOLVING_NAME:
        try {
            serverName = static_cast<wchar_t const*>(information);
        } catch (std::bad_alloc const&) {
            serverName.clear(); // an exception must not pass through the system
        }
        return;
    case WINHTTP_CALLBACK_STATUS_SECURE_FAILURE:
        certificateFlags = *static_cast<DWORD const*>(information);
        return;
    case WINHTTP_CALLBACK_STATUS_REQUEST_ERROR:
        error = static_cast<WINHTTP_ASYNC_RESULT const*>(information)->dwError;
        break;
    case WINHTTP_CALLBACK_STATUS_DATA_AVAILABLE:
        count = *static_cast<DWORD const*>(information);
        break;
    case WINHTTP_CALLBACK_STATUS_READ_COMPLETE:
        count = size;
        break;
    case WINHTTP_CALLBACK_STATUS_SENDREQUEST_COMPLETE:
    case WINHTTP_CALLBACK_STATUS_HEADERS_AVAILABLE:
        break;
    default:
        return;
    }
    hasEnded = true;
    changed.notify_all();
}

void RequestSignals::Begin()
{
    std::lock_guard const guard(mutex);
    hasEnded = false;
    error = 0;
    count = 0;
}

bool RequestSignals::Wait(std::chrono::milliseconds limit)
{
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, limit, [this] { return hasEnded; });
}

DWORD RequestSignals::Error()
{
    std::lock_guard const guard(mutex);
    return error;
}

DWORD RequestSignals::Count()
{
    std::lock_guard const guard(mutex);
    return count;
}

DWORD RequestSignals::CertificateFlags()
{
    std::lock_guard const guard(mutex);
    return certificateFlags;
}

std::wstring RequestSignals::ServerName()
{
    std::lock_guard const guard(mutex);
    return serverName;
}

} // namespace Halvorix::OpenId
