#include "openid/platform/Http.h"

#include <curl/curl.h>
#include <openssl/err.h>
#include <pthread.h>
#include <sys/auxv.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>

#include "openid/platform/HttpParts.h"
#include "openid/platform/SecretBytes.h"
#include "openid/platform/WebAddress.h"

namespace Halvorix::OpenId {

namespace {

using Clock = std::chrono::steady_clock;

struct FreeByCurl {
    void operator()(CURL* easy) const { ::curl_easy_cleanup(easy); }
    void operator()(CURLU* url) const { ::curl_url_cleanup(url); }
    void operator()(char* text) const { ::curl_free(text); }
    void operator()(curl_slist* list) const
    {
        for (curl_slist const* line = list; line != nullptr; line = line->next)
            Wipe(line->data, std::char_traits<char>::length(line->data));
        ::curl_slist_free_all(list);
    }
};
// To the compiler it is the same type as CURL, void.
struct FreeMulti {
    void operator()(CURLM* multi) const { ::curl_multi_cleanup(multi); }
};
using Easy = std::unique_ptr<CURL, FreeByCurl>;
using Multi = std::unique_ptr<CURLM, FreeMulti>;
using Url = std::unique_ptr<CURLU, FreeByCurl>;
using Lines = std::unique_ptr<curl_slist, FreeByCurl>;

/// TLS may write to a connection that has ended, and the host would die of the signal: curl
/// changes no signal handling in a process with threads.
class WithoutPipeSignal {
public:
    WithoutPipeSignal()
    {
        ::sigemptyset(&pipe);
        ::sigaddset(&pipe, SIGPIPE);
        sigset_t pending;
        ::sigpending(&pending);
        wasPending = ::sigismember(&pending, SIGPIPE) == 1;
        ::pthread_sigmask(SIG_BLOCK, &pipe, &before);
    }
    ~WithoutPipeSignal()
    {
        timespec const atOnce{};
        if (!wasPending)
            while (::sigtimedwait(&pipe, nullptr, &atOnce) > 0) {
            }
        ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }
    WithoutPipeSignal(WithoutPipeSignal const&) = delete;
    WithoutPipeSignal& operator=(WithoutPipeSignal const&) = delete;

private:
    sigset_t pipe;
    sigset_t before;
    bool wasPending;
};

std::string Part(Url const& url, CURLUPart part, unsigned flags = 0)
{
    char* text = nullptr;
    ::curl_url_get(url.get(), part, &text, flags);
    std::unique_ptr<char, FreeByCurl> const owner(text);
    return text == nullptr ? std::string() : text;
}

Url ParseUrl(std::string const& text, unsigned flags)
{
    Url url(::curl_url());
    if (!url)
        throw std::bad_alloc();
    if (::curl_url_set(url.get(), CURLUPART_URL, text.c_str(), flags) != CURLUE_OK)
        url.reset();
    return url;
}

/// The proxy for https that the environment names, as curl finds it; null if there is none.
char const* ProxyOfEnvironment()
{
    for (char const* const name : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
        char const* const value = ::secure_getenv(name);
        if (value != nullptr && *value != '\0')
            return value;
    }
    return nullptr;
}

/// curl's words for a failure, but its general ones where the others may hold what the environment
/// has for a proxy, and with it a password.
std::string TextOf(CURLcode result, std::string const& error)
{
    char const* const proxy = ProxyOfEnvironment();
    bool const isOfProxy = result == CURLE_COULDNT_RESOLVE_PROXY ||
                           error.find("Unsupported proxy") != std::string::npos ||
                           (proxy != nullptr && error.find(proxy) != std::string::npos);
    return error.empty() || isOfProxy ? ::curl_easy_strerror(result) : error;
}

ProxyCredential const* CredentialFor(HttpRequest const& request)
{
    char const* const named = ProxyOfEnvironment();
    Url const proxy =
        named ? ParseUrl(named, CURLU_GUESS_SCHEME | CURLU_NON_SUPPORT_SCHEME) : nullptr;
    if (!proxy)
        return nullptr;
    // Where curl looks for a proxy that has no port.
    int const usual = Part(proxy, CURLUPART_SCHEME) == "https" ? 443 : 1080;
    std::string const port = Part(proxy, CURLUPART_PORT);
    return OpenId::CredentialFor(request, Part(proxy, CURLUPART_HOST),
                                 port.empty() ? usual : std::atoi(port.c_str()));
}

} // namespace

struct HttpConnections::Kept {
    ~Kept() { Close(); }

    CURLM* Open()
    {
        if (!multi)
            multi.reset(::curl_multi_init());
        return multi.get();
    }
    // A connection says goodbye when it is closed.
    void Close()
    {
        WithoutPipeSignal const quiet;
        multi.reset();
        ::ERR_clear_error();
    }

    Multi multi;
};

HttpConnections::HttpConnections() : kept(std::make_unique<Kept>()) {}
HttpConnections::~HttpConnections() = default;

namespace {

/// One request, once.
class Transfer {
public:
    explicit Transfer(HttpRequest const& aRequest) : request(aRequest), easy(::curl_easy_init())
    {
        if (!easy)
            throw std::bad_alloc();
    }

    /// @param credential may be null
    HttpResponse Run(Url const& url, ProxyCredential const* credential, Clock::time_point deadline);
    bool WantsProxyCredential() const { return proxyStatus == 407; }

private:
    template <class Value>
    void Set(CURLoption option, Value value)
    {
        ::curl_easy_setopt(easy.get(), option, value);
    }
    void SetUp(Url const& url, ProxyCredential const* credential);
    void SetHeaders();
    CURLcode Perform(CURLM* multi, Clock::time_point deadline);
    bool IsCancelled() const { return request.cancelled != nullptr && request.cancelled->load(); }
    HttpResponse Answer(CURLcode result);
    bool TakeHeader(char const* bytes, std::size_t size);
    bool TakeBody(char const* bytes, std::size_t size);

    // An exception must not pass through C.
    template <bool (Transfer::*Take)(char const*, std::size_t)>
    static std::size_t Call(char* bytes, std::size_t one, std::size_t count, void* transfer)
    {
        auto& self = *static_cast<Transfer*>(transfer);
        try {
            return (self.*Take)(bytes, one * count) ? one * count : 0;
        } catch (std::bad_alloc const&) {
            self.isOutOfMemory = true;
            return 0;
        }
    }

    HttpRequest const& request;
    HttpResponse response;
    Lines lines;
    char error[CURL_ERROR_SIZE] = {};
    std::size_t headerBytes = 0;
    long proxyStatus = 0;
    bool isTooLarge = false;
    bool isOutOfMemory = false;
    Easy const easy; // ends before what it points to
};

void Transfer::SetHeaders()
{
    // curl would wait for a server's leave to send a body.
    std::vector<std::string> all{"Expect:"};
    for (auto const& header : request.headers)
        all.push_back(header.second.empty() ? header.first + ";" : HeaderLine(header));
    for (std::string& line : all) {
        curl_slist* const longer = ::curl_slist_append(lines.get(), line.c_str());
        Wipe(line);
        if (longer == nullptr)
            throw std::bad_alloc();
        static_cast<void>(lines.release());
        lines.reset(longer);
    }
    Set(CURLOPT_HTTPHEADER, lines.get());
}

void Transfer::SetUp(Url const& url, ProxyCredential const* credential)
{
    bool const isPlain = Part(url, CURLUPART_SCHEME) == "http";
    Set(CURLOPT_CURLU, url.get());
    Set(CURLOPT_PROTOCOLS_STR, isPlain ? "http" : "https");
    // The environment is the user's, and so are no rights beyond his own.
    if (isPlain || ::getauxval(AT_SECURE) != 0)
        Set(CURLOPT_PROXY, "");
    if (credential != nullptr) {
        Set(CURLOPT_PROXYUSERNAME, credential->user.c_str());
        Set(CURLOPT_PROXYPASSWORD, credential->password.c_str());
        Set(CURLOPT_PROXYAUTH, CURLAUTH_ANY);
    }
    Set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    Set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    Set(CURLOPT_PROXY_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    Set(CURLOPT_SSL_VERIFYPEER, 1L);
    Set(CURLOPT_SSL_VERIFYHOST, 2L);
    Set(CURLOPT_FOLLOWLOCATION, 0L);
    Set(CURLOPT_NOSIGNAL, 1L);
    // Else the end of a cancelled request waits for a name server.
    Set(CURLOPT_QUICK_EXIT, 1L);
    Set(CURLOPT_USERAGENT, UserAgent);
    Set(CURLOPT_ERRORBUFFER, error);
    Set(CURLOPT_HEADERFUNCTION, &Call<&Transfer::TakeHeader>);
    Set(CURLOPT_HEADERDATA, this);
    Set(CURLOPT_WRITEFUNCTION, &Call<&Transfer::TakeBody>);
    Set(CURLOPT_WRITEDATA, this);
    if (request.method == "POST") {
        Set(CURLOPT_FRESH_CONNECT, 1L);
        Set(CURLOPT_POST, 1L);
        Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
        Set(CURLOPT_POSTFIELDS, request.body.data()); // which is not copied
    }
    SetHeaders();
}

bool Transfer::TakeHeader(char const* bytes, std::size_t size)
{
    headerBytes += size;
    isTooLarge = headerBytes > MaxHeaderBytes;
    if (!isTooLarge)
        AddHeaderLine(response, {bytes, size});
    return !isTooLarge;
}

bool Transfer::TakeBody(char const* bytes, std::size_t size)
{
    isTooLarge = size > request.maxBody - response.body.size();
    if (!isTooLarge)
        AppendSecret(response.body, bytes, size);
    return !isTooLarge;
}

/// By curl's interface for several requests: the other one asks its caller once a second at most
/// whether to go on.
CURLcode Transfer::Perform(CURLM* multi, Clock::time_point deadline)
{
    if (multi == nullptr || ::curl_multi_add_handle(multi, easy.get()) != CURLM_OK)
        throw std::bad_alloc();
    CURLcode result = CURLE_OK;
    for (int running = 1; running != 0;) {
        if (IsCancelled())
            result = CURLE_ABORTED_BY_CALLBACK;
        else if (Clock::now() >= deadline)
            result = CURLE_OPERATION_TIMEDOUT;
        else if (::curl_multi_perform(multi, &running) != CURLM_OK ||
                 (running != 0 && ::curl_multi_poll(multi, nullptr, 0, 100, nullptr) != CURLM_OK))
            result = CURLE_OUT_OF_MEMORY;
        if (result != CURLE_OK)
            break;
    }
    int others = 0;
    while (CURLMsg const* const message = ::curl_multi_info_read(multi, &others))
        if (message->msg == CURLMSG_DONE && result == CURLE_OK)
            result = message->data.result;
    ::curl_multi_remove_handle(multi, easy.get());
    return result;
}

HttpFailure FailureOf(CURLcode result)
{
    switch (result) {
    case CURLE_OPERATION_TIMEDOUT:
        return HttpFailure::Timeout;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
        return HttpFailure::Name;
    case CURLE_PROXY:
        return HttpFailure::Proxy;
    case CURLE_COULDNT_CONNECT:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_GOT_NOTHING:
    case CURLE_PARTIAL_FILE:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_UNSUPPORTED_PROTOCOL: // no HTTP, or that of 1991
    case CURLE_BAD_CONTENT_ENCODING:
        return HttpFailure::Connection;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
        return HttpFailure::Certificate;
    default:
        return HttpFailure::Other;
    }
}

HttpResponse Transfer::Answer(CURLcode result)
{
    ::curl_easy_getinfo(easy.get(), CURLINFO_HTTP_CONNECTCODE, &proxyStatus);
    if (isOutOfMemory)
        throw std::bad_alloc();
    if (isTooLarge)
        Fail(response, HttpFailure::TooLarge, "the answer is too large");
    else if (WantsProxyCredential())
        Fail(response, HttpFailure::Proxy, "the proxy asks for credentials");
    else if (proxyStatus == 401) // of proxies that take wrong ones for a server's
        Fail(response, HttpFailure::Proxy, "the proxy answered with status 401");
    else if (result == CURLE_ABORTED_BY_CALLBACK)
        Fail(response, HttpFailure::Cancelled, "cancelled");
    else if (result != CURLE_OK)
        Fail(response, FailureOf(result), TextOf(result, error));
    else
        CheckWhole(response);
    return std::move(response);
}

HttpResponse Transfer::Run(Url const& url, ProxyCredential const* credential,
                           Clock::time_point deadline)
{
    WipeAtEnd const wiping(response.body);
    WithoutPipeSignal const quiet;
    SetUp(url, credential);
    // A way through a proxy belongs to the credentials that opened it.
    bool const shares = request.connections != nullptr && !ProxyOfEnvironment();
    HttpConnections own;
    HttpConnections::Kept& kept = *(shares ? *request.connections : own).kept;
    CURLcode const result = Perform(kept.Open(), deadline);
    // By HTTP/2 a connection outlives what was cancelled on it, or refused as too large.
    if (result != CURLE_OK)
        kept.Close();
    // What curl leaves in OpenSSL's list would be found by the host's own code on this thread.
    ::ERR_clear_error();
    return Answer(result);
}

bool IsCurlReady()
{
    static bool const isReady = ::curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    return isReady;
}

} // namespace

HttpResponse SendHttp(HttpRequest const& request)
{
    auto const deadline = Clock::now() + request.timeout;
    HttpResponse refused;
    std::string reason = WhyNotSent(request);
    if (!reason.empty()) {
        Fail(refused, HttpFailure::Other, std::move(reason));
        return refused;
    }
    if (!IsCurlReady()) {
        Fail(refused, HttpFailure::Other, "libcurl cannot be used in this process");
        return refused;
    }
    Url const url = ParseUrl(request.url, CURLU_DISALLOW_USER);
    std::string const scheme = url ? Part(url, CURLUPART_SCHEME) : std::string();
    if (scheme != "https" && (scheme != "http" || !IsLoopbackHost(Part(url, CURLUPART_HOST)))) {
        Fail(refused, HttpFailure::Other, NotSecureAddress);
        return refused;
    }
    Transfer first(request);
    HttpResponse response = first.Run(url, nullptr, deadline);
    ProxyCredential const* const credential =
        first.WantsProxyCredential() ? CredentialFor(request) : nullptr;
    return credential == nullptr ? response : Transfer(request).Run(url, credential, deadline);
}

} // namespace Halvorix::OpenId
