#include "openid/platform/Peer.h"

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cstdio>
#include <cstring>
#include <sstream>

#include "openid/platform/Files.h"
#include "openid/platform/linux/Descriptor.h"

namespace Halvorix::OpenId {

namespace {

constexpr std::size_t LargestTable = 256 << 20;
constexpr char const* Table = "/proc/net/tcp";
constexpr char const* TableOf6 = "/proc/net/tcp6";
constexpr char const* Established = "01";

/// As the tables write it: numbers of 32 bits as this processor has them, then the port.
std::string InTable(void const* address, std::size_t size, in_port_t port)
{
    std::string text;
    char number[16];
    for (std::size_t at = 0; at < size; at += sizeof(std::uint32_t)) {
        std::uint32_t word = 0;
        std::memcpy(&word, static_cast<char const*>(address) + at, sizeof word);
        std::snprintf(number, sizeof number, "%08X", static_cast<unsigned>(word));
        text += number;
    }
    std::snprintf(number, sizeof number, ":%04X", static_cast<unsigned>(ntohs(port)));
    return text + number;
}

/// One end of a connection, in the table of IPv4 (empty if it is not of it) and in that of IPv6,
/// where programs for both stand.
struct End {
    explicit End(sockaddr_storage const& address)
    {
        if (address.ss_family == AF_INET6) {
            auto const& six = reinterpret_cast<sockaddr_in6 const&>(address);
            in6 = InTable(&six.sin6_addr, sizeof six.sin6_addr, six.sin6_port);
            return;
        }
        auto const& four = reinterpret_cast<sockaddr_in const&>(address);
        in6_addr mapped{};
        mapped.s6_addr[10] = mapped.s6_addr[11] = 0xFF;
        std::memcpy(&mapped.s6_addr[12], &four.sin_addr, sizeof four.sin_addr);
        in4 = InTable(&four.sin_addr, sizeof four.sin_addr, four.sin_port);
        in6 = InTable(&mapped, sizeof mapped, four.sin_port);
    }

    std::string in4, in6;
};

/// The user of an established connection; empty if the table has none such.
std::string UserIn(char const* table, std::string const& from, std::string const& to)
{
    FileContent const content = ReadFile(table, LargestTable);
    std::string const beginning = ": " + from + ' ' + to + ' ' + Established + ' ';
    std::size_t const row = content.bytes.find(beginning);
    if (row == std::string::npos)
        return {};
    std::istringstream words(content.bytes.substr(row + beginning.size(), 200));
    std::string queues, timer, retransmissions, user;
    words >> queues >> timer >> retransmissions >> user;
    return user;
}

/// Whether the other end has not closed it yet, nor said that nothing more comes.
bool IsOpen(int connection)
{
    tcp_info about{};
    socklen_t size = sizeof about;
    return ::getsockopt(connection, IPPROTO_TCP, TCP_INFO, &about, &size) != 0 ||
           about.tcpi_state == TCP_ESTABLISHED;
}

std::string UserOf(int connection, End const& from, End const& to)
{
    std::string user;
    // A table is read in pieces, between which a row may move out of sight. Tables may be long, and
    // have no row of a connection that has ended.
    for (int look = 0; look < 3 && user.empty() && IsOpen(connection); ++look) {
        if (!from.in4.empty())
            user = UserIn(Table, from.in4, to.in4);
        if (user.empty())
            user = UserIn(TableOf6, from.in6, to.in6);
    }
    return user;
}

/// 0 if it can be opened.
int ErrorAtOpening(char const* file)
{
    Descriptor const opened(::open(file, O_RDONLY | O_CLOEXEC));
    return opened ? 0 : errno;
}

Peer Stranger(std::string reason) { return {Peer::User::Other, std::move(reason)}; }

} // namespace

Peer PeerOf(std::intptr_t connection)
{
    sockaddr_storage own{};
    sockaddr_storage other{};
    socklen_t ownSize = sizeof own;
    socklen_t otherSize = sizeof other;
    auto const descriptor = static_cast<int>(connection);
    if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &ownSize) != 0 ||
        ::getpeername(descriptor, reinterpret_cast<sockaddr*>(&other), &otherSize) != 0)
        return Stranger("it has ended");
    char const* const table = own.ss_family == AF_INET6 ? TableOf6 : Table;
    int const error = ErrorAtOpening(table);
    if (error == ENOENT || error == EACCES || error == EPERM)
        return {Peer::User::Untold, std::string(table) + ": " + ErrorText(error)};
    std::string const user = UserOf(descriptor, End(other), End(own));
    if (user.empty())
        return Stranger("whose it is cannot be told, since it has ended or no program of this "
                        "machine has made it");
    if (user != std::to_string(::geteuid()))
        return Stranger("it is of the user with the number " + user);
    return {};
}

} // namespace Halvorix::OpenId
