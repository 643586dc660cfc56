// Servers behind TLS that must not be trusted. On Windows the tests of whole hosts have them.

#include <gmock/gmock.h>

#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <csignal>
#include <memory>

#include "openid/TestServer.h"
#include "openid/platform/Http.h"

namespace Halvorix::OpenId {

namespace {

using Rig::HttpAnswer;
using Rig::TestServer;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

struct Free {
    void operator()(EVP_PKEY* key) const { ::EVP_PKEY_free(key); }
    void operator()(SSL* connection) const { ::SSL_free(connection); }
    void operator()(SSL_CTX* context) const { ::SSL_CTX_free(context); }
    void operator()(X509* certificate) const { ::X509_free(certificate); }
};
template <class Value>
using Own = std::unique_ptr<Value, Free>;

/// A certificate of its own making for this name.
Own<X509> SelfSigned(EVP_PKEY* key, std::string const& name)
{
    Own<X509> certificate(::X509_new());
    ::X509_set_version(certificate.get(), X509_VERSION_3);
    ::ASN1_INTEGER_set(::X509_get_serialNumber(certificate.get()), 1);
    ::X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -3600);
    ::X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
    ::X509_set_pubkey(certificate.get(), key);
    X509_NAME* const subject = ::X509_get_subject_name(certificate.get());
    ::X509_NAME_add_entry_by_txt(subject, "CN", MBSTRING_ASC,
                                 reinterpret_cast<unsigned char const*>(name.c_str()), -1, -1, 0);
    ::X509_set_issuer_name(certificate.get(), subject);
    X509_EXTENSION* const names =
        ::X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, ("DNS:" + name).c_str());
    ::X509_add_ext(certificate.get(), names, -1);
    ::X509_EXTENSION_free(names);
    ::X509_sign(certificate.get(), key, ::EVP_sha256());
    return certificate;
}

/// Answers requests behind TLS, and counts those that came so far.
class TlsServer {
public:
    explicit TlsServer(long newest = TLS1_3_VERSION)
        : key(EVP_EC_gen("P-256")), certificate(SelfSigned(key.get(), "localhost")),
          context(::SSL_CTX_new(::TLS_server_method())),
          server([this](TestServer::Connection& connection) { Serve(connection); })
    {
        ::SSL_CTX_set_security_level(context.get(), 0); // so that it can be old
        ::SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
        ::SSL_CTX_set_max_proto_version(context.get(), static_cast<int>(newest));
        ::SSL_CTX_use_certificate(context.get(), certificate.get());
        ::SSL_CTX_use_PrivateKey(context.get(), key.get());
    }

    HttpResponse Ask(std::string const& host = "localhost") const
    {
        HttpRequest request;
        request.url = "https://" + host + ":" + std::to_string(server.Port()) + "/?code=secret";
        request.timeout = std::chrono::seconds(10);
        return SendHttp(request);
    }
    int Requests() const { return requests; }
    int Connections() const { return server.Count(); }

private:
    void Serve(TestServer::Connection& connection)
    {
        connection.socket.non_blocking(false);
        connection.socket.native_non_blocking(false);
        Own<SSL> const tls(::SSL_new(context.get()));
        ::SSL_set_fd(tls.get(), connection.socket.native_handle());
        char request[4096];
        if (::SSL_accept(tls.get()) == 1 && ::SSL_read(tls.get(), request, sizeof request) > 0) {
            ++requests;
            std::string const answer = HttpAnswer("200 OK", "trusted");
            ::SSL_write(tls.get(), answer.data(), static_cast<int>(answer.size()));
        }
        ::ERR_clear_error();
    }

    Own<EVP_PKEY> const key;
    Own<X509> const certificate;
    Own<SSL_CTX> const context;
    std::atomic<int> requests{0};
    TestServer const server; // ends before what it uses
};

/// The server's OpenSSL writes to a connection that the client has ended.
class Tls : public testing::Test {
protected:
    Tls() : before(::signal(SIGPIPE, SIG_IGN)) {}
    ~Tls() override { ::signal(SIGPIPE, before); }

private:
    void (*const before)(int);
};

} // namespace

TEST_F(Tls, RefusesACertificateOfNoAuthority)
{
    TlsServer const server;

    HttpResponse const response = server.Ask();

    EXPECT_EQ(response.failure, HttpFailure::Certificate) << response.reason;
    EXPECT_THAT(response.reason, HasSubstr("certificate"));
    EXPECT_THAT(response.reason, Not(HasSubstr("secret")));
    EXPECT_THAT(response.body, IsEmpty());
    EXPECT_EQ(server.Connections(), 1);
    EXPECT_EQ(server.Requests(), 0);
}

TEST_F(Tls, RefusesItAgain)
{
    TlsServer const server;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(server.Ask().failure, HttpFailure::Certificate);
    EXPECT_EQ(server.Ask("127.0.0.1").failure, HttpFailure::Certificate);
    EXPECT_EQ(server.Requests(), 0);
}

TEST_F(Tls, RefusesVersionsBefore12)
{
    for (long const newest : {TLS1_VERSION, TLS1_1_VERSION}) {
        TlsServer const server(newest);

        HttpResponse const response = server.Ask();

        EXPECT_EQ(response.failure, HttpFailure::Certificate) << response.reason;
        // Before any certificate has come: that one would be refused anyway.
        EXPECT_THAT(response.reason, HasSubstr("version"));
    }
}

TEST_F(Tls, LeavesNoErrorBehindForTheHost)
{
    ::ERR_clear_error();
    TlsServer const server;

    server.Ask();

    EXPECT_EQ(::ERR_peek_error(), 0u);
}

} // namespace Halvorix::OpenId
