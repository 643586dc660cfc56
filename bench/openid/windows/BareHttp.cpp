#include "openid/BareHttp.h"

#include <windows.h>
// After windows.h.
#include <winhttp.h>

#include <array>
#include <stdexcept>

namespace Bench {

struct BareHttp::Handles {
    HINTERNET const session =
        ::WinHttpOpen(L"bench", WINHTTP_ACCESS_TYPE_NO_PROXY, nullptr, nullptr, 0);
    HINTERNET connection = nullptr;
};

namespace {

void Require(BOOL done, char const* what)
{
    if (!done)
        throw std::runtime_error(what + std::string(": error ") + std::to_string(::GetLastError()));
}

} // namespace

BareHttp::BareHttp() : handles(std::make_unique<Handles>())
{
    // The others are off in Wine 8 at first.
    DWORD protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2;
    ::WinHttpSetOption(handles->session, WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols,
                       sizeof protocols);
}

BareHttp::~BareHttp()
{
    ::WinHttpCloseHandle(handles->connection);
    ::WinHttpCloseHandle(handles->session);
}

std::string BareHttp::Ask(std::string const& url, std::string const& bearer,
                          std::string const& body)
{
    std::wstring const wide(url.begin(), url.end());
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength = 1;
    Require(::WinHttpCrackUrl(wide.c_str(), 0, 0, &parts), "an address");
    // All requests go to one server.
    if (handles->connection == nullptr)
        handles->connection = ::WinHttpConnect(
            handles->session, std::wstring(parts.lpszHostName, parts.dwHostNameLength).c_str(),
            parts.nPort, 0);
    HINTERNET const request = ::WinHttpOpenRequest(
        handles->connection, body.empty() ? L"GET" : L"POST", parts.lpszUrlPath, nullptr,
        WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES, WINHTTP_FLAG_SECURE);
    std::wstring headers;
    if (!body.empty())
        headers = L"Content-Type: application/x-www-form-urlencoded\r\n";
    if (!bearer.empty())
        headers += L"Authorization: Bearer " + std::wstring(bearer.begin(), bearer.end()) + L"\r\n";
    auto const size = static_cast<DWORD>(body.size());
    Require(::WinHttpSendRequest(request, headers.empty() ? nullptr : headers.c_str(),
                                 headers.empty() ? 0 : static_cast<DWORD>(-1),
                                 body.empty() ? nullptr : const_cast<char*>(body.data()), size,
                                 size, 0),
            "WinHttpSendRequest");
    Require(::WinHttpReceiveResponse(request, nullptr), "WinHttpReceiveResponse");
    std::string answer;
    std::array<char, 8192> piece;
    for (DWORD count = 1; count != 0; answer.append(piece.data(), count))
        Require(::WinHttpReadData(request, piece.data(), static_cast<DWORD>(piece.size()), &count),
                "WinHttpReadData");
    DWORD status = 0;
    DWORD bytes = sizeof status;
    ::WinHttpQueryHeaders(request, WINHTTP_QUERY_STATUS_CODE | WINHTTP_QUERY_FLAG_NUMBER, nullptr,
                          &status, &bytes, nullptr);
    ::WinHttpCloseHandle(request);
    if (status != 200)
        throw std::runtime_error(url + ": " + std::to_string(status) + " " + answer);
    return answer;
}

} // namespace Bench
