#include "openid/platform/ListeningSocket.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace Halvorix::OpenId {

std::intptr_t NewListeningSocket(bool isIpv6)
{
    int const descriptor =
        socket(isIpv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, IPPROTO_TCP);
    // Two that listen are refused all the same. Without it the next login would find its port
    // taken for a minute.
    int const yes = 1;
    if (descriptor >= 0)
        setsockopt(descriptor, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    return descriptor;
}

void KeepFromChildren(std::intptr_t socket)
{
    ::fcntl(static_cast<int>(socket), F_SETFD, FD_CLOEXEC);
}

} // namespace Halvorix::OpenId
