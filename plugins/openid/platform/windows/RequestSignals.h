#pragma once

#include "openid/platform/windows/Windows.h"

#include <winhttp.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

namespace Halvorix::OpenId {

/// What WinHTTP tells of a request, from threads of its own, and the memory that it works on. It
/// may go on with that after its caller has given up, until the request's handle is closed for
/// good: so both own it.
class RequestSignals {
public:
    explicit RequestSignals(std::string const& aBody) : body(aBody) {}
    ~RequestSignals();
    RequestSignals(RequestSignals const&) = delete;
    RequestSignals& operator=(RequestSignals const&) = delete;

    /// Has a request tell these; the value that WinHttpSendRequest is given again. 0 if it cannot.
    static DWORD_PTR Watch(HINTERNET request, std::shared_ptr<RequestSignals> const& signals);

    /// Before a step is begun.
    void Begin();
    /// Whether the step has ended within this time.
    bool Wait(std::chrono::milliseconds limit);

    /// Of the step that has ended; 0 if it went well.
    DWORD Error();
    /// Bytes that are there to be read, or were read.
    DWORD Count();
    /// What was wrong with the server's certificate.
    DWORD CertificateFlags();
    /// The server that the system looked up: the proxy if there is one.
    std::wstring ServerName();

    std::string body; ///< To be sent.
    char piece[16384] = {};

private:
    static void CALLBACK OnStatus(HINTERNET request, DWORD_PTR context, DWORD status,
                                  void* information, DWORD size);
    void Take(DWORD status, void const* information, DWORD size);

    std::mutex mutex; // of what follows
    std::condition_variable changed;
    bool hasEnded = false;
    DWORD error = 0;
    DWORD count = 0;
    DWORD certificateFlags = 0;
    std::wstring serverName;
};

} // namespace Halvorix::OpenId
