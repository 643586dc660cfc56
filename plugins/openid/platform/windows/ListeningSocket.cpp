#include "openid/platform/ListeningSocket.h"

#include <boost/asio/detail/winsock_init.hpp>

#include <winsock2.h>

// Boost.Asio would start Winsock when the module is loaded, under the loader's lock.
#ifdef _MSC_VER
#pragma warning(disable : 4073)
#pragma init_seg(lib)
#define FIRST
#else
#define FIRST __attribute__((init_priority(101)))
#endif

namespace Halvorix::OpenId {

FIRST static boost::asio::detail::winsock_init<>::manual const notByAsio;

std::intptr_t NewListeningSocket(bool isIpv6)
{
    // Stays started, as in any program that uses it.
    static bool const isStarted = [] {
        WSADATA data;
        return WSAStartup(MAKEWORD(2, 2), &data) == 0;
    }();
    if (!isStarted)
        return -1;
    SOCKET const handle = WSASocketW(isIpv6 ? AF_INET6 : AF_INET, SOCK_STREAM, IPPROTO_TCP, nullptr,
                                     0, WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT);
    if (handle == INVALID_SOCKET)
        return -1;
    BOOL const yes = TRUE;
    if (setsockopt(handle, SOL_SOCKET, SO_EXCLUSIVEADDRUSE, reinterpret_cast<char const*>(&yes),
                   sizeof yes) != 0) {
        closesocket(handle);
        return -1;
    }
    return static_cast<std::intptr_t>(handle);
}

void KeepFromChildren(std::intptr_t socket)
{
    ::SetHandleInformation(reinterpret_cast<HANDLE>(socket), HANDLE_FLAG_INHERIT, 0);
}

} // namespace Halvorix::OpenId
