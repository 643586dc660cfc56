#include "openid/platform/windows/HttpError.h"

#include <winhttp.h>

namespace Halvorix::OpenId {

namespace {

std::string CertificateText(DWORD flags)
{
    std::string text;
    auto const add = [&](DWORD flag, char const* words) {
        if ((flags & flag) != 0)
            text += (text.empty() ? "" : ", ") + std::string(words);
    };
    add(WINHTTP_CALLBACK_STATUS_FLAG_INVALID_CA, "the certificate's authority is not known");
    add(WINHTTP_CALLBACK_STATUS_FLAG_CERT_CN_INVALID, "the certificate is for another name");
    add(WINHTTP_CALLBACK_STATUS_FLAG_CERT_DATE_INVALID,
        "the certificate is expired or not yet valid");
    add(WINHTTP_CALLBACK_STATUS_FLAG_CERT_REVOKED, "the certificate is revoked");
    add(WINHTTP_CALLBACK_STATUS_FLAG_CERT_REV_FAILED, "whether it is revoked cannot be told");
    add(WINHTTP_CALLBACK_STATUS_FLAG_INVALID_CERT, "the certificate is not valid");
    add(WINHTTP_CALLBACK_STATUS_FLAG_CERT_WRONG_USAGE, "the certificate is not for servers");
    return text;
}

} // namespace

HttpFailure HttpFailureOf(DWORD error)
{
    switch (error) {
    case ERROR_WINHTTP_NAME_NOT_RESOLVED:
        return HttpFailure::Name;
    case ERROR_WINHTTP_TIMEOUT:
        return HttpFailure::Timeout;
    case ERROR_WINHTTP_CANNOT_CONNECT:
    case ERROR_WINHTTP_CONNECTION_ERROR:
    case ERROR_WINHTTP_INVALID_SERVER_RESPONSE:
    case ERROR_WINHTTP_INVALID_HEADER:
    case ERROR_WINHTTP_RESEND_REQUEST:
    case ERROR_WINHTTP_HTTP_PROTOCOL_MISMATCH:
        return HttpFailure::Connection;
    case ERROR_WINHTTP_SECURE_FAILURE:
    case ERROR_WINHTTP_SECURE_CERT_DATE_INVALID:
    case ERROR_WINHTTP_SECURE_CERT_CN_INVALID:
    case ERROR_WINHTTP_SECURE_INVALID_CA:
    case ERROR_WINHTTP_SECURE_CERT_REV_FAILED:
    case ERROR_WINHTTP_SECURE_CHANNEL_ERROR:
    case ERROR_WINHTTP_SECURE_INVALID_CERT:
    case ERROR_WINHTTP_SECURE_CERT_REVOKED:
    case ERROR_WINHTTP_SECURE_CERT_WRONG_USAGE:
    case ERROR_WINHTTP_CLIENT_AUTH_CERT_NEEDED:
        return HttpFailure::Certificate;
    case ERROR_WINHTTP_BAD_AUTO_PROXY_SCRIPT:
    case ERROR_WINHTTP_UNABLE_TO_DOWNLOAD_SCRIPT:
    case ERROR_WINHTTP_UNHANDLED_SCRIPT_TYPE:
    case ERROR_WINHTTP_SCRIPT_EXECUTION_ERROR:
    case ERROR_WINHTTP_AUTO_PROXY_SERVICE_ERROR:
    case ERROR_WINHTTP_AUTODETECTION_FAILED:
    case ERROR_WINHTTP_SECURE_FAILURE_PROXY:
    case ERROR_WINHTTP_CLIENT_AUTH_CERT_NEEDED_PROXY:
        return HttpFailure::Proxy;
    case ERROR_WINHTTP_HEADER_COUNT_EXCEEDED:
    case ERROR_WINHTTP_HEADER_SIZE_OVERFLOW:
    case ERROR_WINHTTP_CHUNKED_ENCODING_HEADER_SIZE_OVERFLOW:
        return HttpFailure::TooLarge;
    default:
        return HttpFailure::Other;
    }
}

std::string HttpErrorText(DWORD error, DWORD certificateFlags)
{
    std::string const number = " (WinHTTP's error " + std::to_string(error) + ")";
    std::string const certificate = CertificateText(certificateFlags);
    if (!certificate.empty())
        return certificate + number;
    switch (HttpFailureOf(error)) {
    case HttpFailure::Name:
        return "the server's name cannot be looked up" + number;
    case HttpFailure::Connection:
        return "there is no connection to the server, or it ended early" + number;
    case HttpFailure::Certificate:
        return "the server's certificate is not trusted, or TLS with it fails" + number;
    case HttpFailure::Proxy:
        return "the system's proxy cannot be used" + number;
    case HttpFailure::Timeout:
        return "the time limit is over" + number;
    default:
        return ErrorText(error, ::GetModuleHandleW(L"winhttp.dll")) + number;
    }
}

} // namespace Halvorix::OpenId
