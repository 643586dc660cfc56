#include "openid/platform/Http.h"

#include "openid/platform/HttpParts.h"
#include "openid/platform/SecretBytes.h"
#include "openid/platform/WebAddress.h"
#include "openid/platform/windows/HttpError.h"
#include "openid/platform/windows/RequestSignals.h"

#include <wincrypt.h>

#include <algorithm>

namespace Halvorix::OpenId {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// Missing in older headers: the user's own credentials for a proxy, and for no server.
constexpr DWORD AutologonForProxyAlone = 3;

struct CloseInternet {
    void operator()(HINTERNET handle) const { ::WinHttpCloseHandle(handle); }
};
using Internet = std::unique_ptr<void, CloseInternet>;

/// Where a request goes.
struct Target {
    std::wstring host, object;
    INTERNET_PORT port = 0;
    bool isPlain = false;
};

bool Parse(std::string const& url, Target& target)
{
    std::wstring const wide = WideFrom(url);
    URL_COMPONENTS parts{};
    parts.dwStructSize = sizeof parts;
    parts.dwHostNameLength = parts.dwUrlPathLength = parts.dwExtraInfoLength =
        parts.dwUserNameLength = parts.dwPasswordLength = static_cast<DWORD>(-1);
    if (!::WinHttpCrackUrl(wide.c_str(), static_cast<DWORD>(wide.size()), 0, &parts) ||
        parts.dwHostNameLength == 0 || parts.dwUserNameLength != 0 || parts.dwPasswordLength != 0)
        return false;
    std::wstring const extra(parts.lpszExtraInfo, parts.dwExtraInfoLength);
    target.host.assign(parts.lpszHostName, parts.dwHostNameLength);
    target.object.assign(parts.lpszUrlPath, parts.dwUrlPathLength);
    target.object += extra.substr(0, extra.find(L'#'));
    target.port = parts.nPort;
    target.isPlain = parts.nScheme == INTERNET_SCHEME_HTTP;
    return !target.isPlain || IsLoopbackHost(Utf8From(target.host));
}

void SetNumber(Internet const& handle, DWORD option, DWORD value)
{
    ::WinHttpSetOption(handle.get(), option, &value, sizeof value);
}

/// Of those that a proxy offers the one that tells it least; 0 if none is known.
DWORD BestScheme(DWORD offered)
{
    for (DWORD const scheme : {WINHTTP_AUTH_SCHEME_NEGOTIATE, WINHTTP_AUTH_SCHEME_NTLM,
                               WINHTTP_AUTH_SCHEME_DIGEST, WINHTTP_AUTH_SCHEME_BASIC})
        if ((offered & scheme) != 0)
            return scheme;
    return 0;
}

/// One request, sent once more if a proxy wants credentials that there are.
class Transfer {
public:
    Transfer(HttpRequest const& aRequest, Target const& aTarget)
        : request(aRequest), target(aTarget), deadline(Clock::now() + request.timeout)
    {
    }

    HttpResponse Run();

private:
    enum class End { Done, Failed, TooLarge, Cancelled, Timeout };

    bool Open();
    void SetProtocols();
    bool AddHeaders();
    bool IsFromServer() const;
    bool GiveCredential();
    End Ask();
    End TakeHead();
    End TakeBody();
    End Await(BOOL begun);
    std::chrono::milliseconds Left() const;
    void Judge(End end);

    HttpRequest const& request;
    Target const& target;
    Clock::time_point const deadline;
    std::shared_ptr<RequestSignals> const signals = std::make_shared<RequestSignals>(request.body);
    DWORD_PTR context = 0;
    DWORD error = 0;
    HttpResponse response;
    Internet session, connection, handle; // the last ends first
};

std::chrono::milliseconds Transfer::Left() const
{
    return std::max(1ms, std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()));
}

void Transfer::SetProtocols()
{
    DWORD protocols = WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2 | WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_3;
    // A Windows that does not know the newer one refuses both.
    if (!::WinHttpSetOption(session.get(), WINHTTP_OPTION_SECURE_PROTOCOLS, &protocols,
                            sizeof protocols))
        SetNumber(session, WINHTTP_OPTION_SECURE_PROTOCOLS, WINHTTP_FLAG_SECURE_PROTOCOL_TLS1_2);
}

bool Transfer::AddHeaders()
{
    for (auto const& header : request.headers) {
        std::string line = HeaderLine(header);
        std::wstring wide = WideFrom(line);
        BOOL const isAdded =
            ::WinHttpAddRequestHeaders(handle.get(), wide.c_str(), static_cast<DWORD>(wide.size()),
                                       WINHTTP_ADDREQ_FLAG_ADD | WINHTTP_ADDREQ_FLAG_REPLACE);
        error = ::GetLastError();
        Wipe(line);
        Wipe(wide);
        if (!isAdded)
            return false;
    }
    return true;
}

bool Transfer::Open()
{
    DWORD const access =
        target.isPlain ? WINHTTP_ACCESS_TYPE_NO_PROXY : WINHTTP_ACCESS_TYPE_AUTOMATIC_PROXY;
    session.reset(::WinHttpOpen(WideFrom(UserAgent).c_str(), access, WINHTTP_NO_PROXY_NAME,
                                WINHTTP_NO_PROXY_BYPASS, WINHTTP_FLAG_ASYNC));
    if (session) {
        SetProtocols();
        int const limit = static_cast<int>(std::min<long long>(Left().count(), 1 << 30));
        ::WinHttpSetTimeouts(session.get(), limit, limit, limit, limit);
        connection.reset(::WinHttpConnect(session.get(), target.host.c_str(), target.port, 0));
    }
    if (connection)
        handle.reset(::WinHttpOpenRequest(
            connection.get(), WideFrom(request.method).c_str(), target.object.c_str(), nullptr,
            WINHTTP_NO_REFERER, WINHTTP_DEFAULT_ACCEPT_TYPES,
            WINHTTP_FLAG_ESCAPE_DISABLE | (target.isPlain ? 0 : WINHTTP_FLAG_SECURE)));
    if (handle) {
        SetNumber(handle, WINHTTP_OPTION_REDIRECT_POLICY, WINHTTP_OPTION_REDIRECT_POLICY_NEVER);
        SetNumber(handle, WINHTTP_OPTION_DISABLE_FEATURE,
                  WINHTTP_DISABLE_COOKIES | WINHTTP_DISABLE_REDIRECTS);
        SetNumber(handle, WINHTTP_OPTION_AUTOLOGON_POLICY, WINHTTP_AUTOLOGON_SECURITY_LEVEL_HIGH);
        SetNumber(handle, WINHTTP_OPTION_AUTOLOGON_POLICY, AutologonForProxyAlone);
        // A server that would like one, but can do without, goes on.
        ::WinHttpSetOption(handle.get(), WINHTTP_OPTION_CLIENT_CERT_CONTEXT,
                           WINHTTP_NO_CLIENT_CERT_CONTEXT, 0);
        context = RequestSignals::Watch(handle.get(), signals);
    }
    error = ::GetLastError();
    return context != 0 && AddHeaders();
}

Transfer::End Transfer::Await(BOOL begun)
{
    if (!begun) {
        error = ::GetLastError();
        return End::Failed;
    }
    while (!signals->Wait(std::min(Left(), 100ms))) {
        if (request.cancelled != nullptr && request.cancelled->load())
            return End::Cancelled;
        if (Clock::now() >= deadline)
            return End::Timeout;
    }
    error = signals->Error();
    return error == 0 ? End::Done : End::Failed;
}

Transfer::End Transfer::TakeHead()
{
    DWORD size = 0;
    ::WinHttpQueryHeaders(handle.get(), WINHTTP_QUERY_RAW_HEADERS_CRLF,
                          WINHTTP_HEADER_NAME_BY_INDEX, nullptr, &size, WINHTTP_NO_HEADER_INDEX);
    if (size / sizeof(wchar_t) > MaxHeaderBytes)
        return End::TooLarge;
    std::wstring wide(size / sizeof(wchar_t), L'\0');
    if (!::WinHttpQueryHeaders(handle.get(), WINHTTP_QUERY_RAW_HEADERS_CRLF,
                               WINHTTP_HEADER_NAME_BY_INDEX, wide.data(), &size,
                               WINHTTP_NO_HEADER_INDEX)) {
        error = ::GetLastError();
        return End::Failed;
    }
    wide.resize(size / sizeof(wchar_t));
    std::string const head = Utf8From(wide);
    for (std::size_t begin = 0; begin < head.size();) {
        std::size_t const end = std::min(head.find("\r\n", begin), head.size());
        AddHeaderLine(response, std::string_view(head).substr(begin, end - begin));
        begin = end + 2;
    }
    return End::Done;
}

Transfer::End Transfer::TakeBody()
{
    for (;;) {
        // No more than what has come: Wine 8 waits for the rest of a larger piece, and keeps the
        // connection for that, long after the handle is closed.
        signals->Begin();
        End end = Await(::WinHttpQueryDataAvailable(handle.get(), nullptr));
        DWORD const available = std::min<DWORD>(signals->Count(), sizeof signals->piece);
        if (end != End::Done || available == 0)
            return end;
        signals->Begin();
        end = Await(::WinHttpReadData(handle.get(), signals->piece, available, nullptr));
        std::size_t const count = signals->Count();
        if (end != End::Done || count == 0)
            return end;
        if (count > request.maxBody - response.body.size())
            return End::TooLarge;
        AppendSecret(response.body, signals->piece, count);
    }
}

Transfer::End Transfer::Ask()
{
    auto const size = static_cast<DWORD>(signals->body.size());
    signals->Begin();
    End end = Await(::WinHttpSendRequest(handle.get(), WINHTTP_NO_ADDITIONAL_HEADERS, 0,
                                         size == 0 ? nullptr : signals->body.data(), size, size,
                                         context));
    if (end != End::Done)
        return end;
    signals->Begin();
    end = Await(::WinHttpReceiveResponse(handle.get(), nullptr));
    if (end == End::Done)
        end = TakeHead();
    return end == End::Done && response.status != 407 ? TakeBody() : end;
}

/// Whether an answer is the server's own: to the system a 407 is a proxy's, wherever it comes from.
/// A proxy is asked over https alone, and its own answer comes before there is a certificate.
bool Transfer::IsFromServer() const
{
    CERT_CONTEXT const* certificate = nullptr;
    DWORD size = sizeof certificate;
    ::WinHttpQueryOption(handle.get(), WINHTTP_OPTION_SERVER_CERT_CONTEXT,
                         static_cast<void*>(&certificate), &size);
    if (certificate != nullptr)
        ::CertFreeCertificateContext(certificate);
    return target.isPlain || certificate != nullptr;
}

/// Whether a proxy that asked for credentials gets some.
bool Transfer::GiveCredential()
{
    if (IsFromServer())
        return false;
    // The system tells the name of the proxy, and not its port.
    ProxyCredential const* const credential =
        CredentialFor(request, Utf8From(signals->ServerName()), 0);
    DWORD offered = 0;
    DWORD first = 0;
    DWORD asking = 0;
    if (credential == nullptr ||
        !::WinHttpQueryAuthSchemes(handle.get(), &offered, &first, &asking) ||
        asking != WINHTTP_AUTH_TARGET_PROXY || BestScheme(offered) == 0)
        return false;
    std::wstring const user = WideFrom(credential->user);
    std::wstring password = WideFrom(credential->password);
    BOOL const isSet =
        ::WinHttpSetCredentials(handle.get(), WINHTTP_AUTH_TARGET_PROXY, BestScheme(offered),
                                user.c_str(), password.c_str(), nullptr);
    Wipe(password);
    return isSet != FALSE;
}

void Transfer::Judge(End end)
{
    switch (end) {
    case End::Done:
        CheckWhole(response);
        break;
    case End::Failed:
        Fail(response, HttpFailureOf(error), HttpErrorText(error, signals->CertificateFlags()));
        break;
    case End::TooLarge:
        Fail(response, HttpFailure::TooLarge, "the answer is too large");
        break;
    case End::Cancelled:
        Fail(response, HttpFailure::Cancelled, "cancelled");
        break;
    case End::Timeout:
        Fail(response, HttpFailure::Timeout, "the time limit is over");
        break;
    }
}

HttpResponse Transfer::Run()
{
    WipeAtEnd const wiping(response.body);
    if (request.cancelled != nullptr && request.cancelled->load()) {
        Judge(End::Cancelled);
        return std::move(response);
    }
    End end = Open() ? Ask() : End::Failed;
    if (end == End::Done && response.status == 407 && GiveCredential())
        end = Ask();
    Judge(end);
    return std::move(response);
}

} // namespace

struct HttpConnections::Kept {};

HttpConnections::HttpConnections() = default;
HttpConnections::~HttpConnections() = default;

HttpResponse SendHttp(HttpRequest const& request)
{
    HttpResponse refused;
    Target target;
    std::string reason = WhyNotSent(request);
    if (reason.empty() && !Parse(request.url, target))
        reason = NotSecureAddress;
    if (reason.empty())
        return Transfer(request, target).Run();
    Fail(refused, HttpFailure::Other, std::move(reason));
    return refused;
}

} // namespace Halvorix::OpenId
