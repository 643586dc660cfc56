// The sign-on server, a process that this sample only imagines: it keeps the
// account of one and starts none.

#include "Interfaces.h"
#include "State.h"
#include "Texts.h"

namespace Sample {

namespace {

class ServerManager : public OnSession<ISSOServerManager> {
public:
    using OnSession::OnSession;

    // Told by the library during the load.
    void SetSSOServerAppFiles(wchar_t const* appPath, wchar_t const* appExeFile) override
    {
        auto const state = Lock();
        state->serverAppPath = Given(appPath);
        state->serverAppExeFile = Given(appExeFile);
    }
    std::wstring GetSSOServerAppFile() override { return Lock()->serverAppPath; }
    std::wstring GetSSOServerAppExeFile() override { return Lock()->serverAppExeFile; }
    void SetSSOServerProcessName(char const* processName) override
    {
        Lock()->serverProcessName = processName;
    }
    int GetSSOServerName(char* to, int size) override
    {
        return CopyText(Lock()->serverName, to, size);
    }
    void SetSSOServerName(char const* serverName) override { Lock()->serverName = serverName; }
    int GetSSOEventServerName(char* to, int size) override
    {
        return CopyText(Lock()->serverName + ".Events", to, size);
    }

    /// A server that runs already answers true and goes on as it is.
    bool StartSSOServerProcess(std::vector<std::string> const& arguments, std::chrono::milliseconds,
                               long long& processId) override
    {
        auto const state = Lock();
        if (state->processId == 0) {
            state->processId = ++state->lastProcessId;
            state->arguments = arguments;
            state->frozen = false;
        }
        processId = state->processId;
        return true;
    }
    bool StartSSOServerProcess(std::chrono::milliseconds timeout, long long& processId) override
    {
        std::vector<std::string> const arguments = Lock()->nextArguments;
        return StartSSOServerProcess(arguments, timeout, processId);
    }
    bool GetSSOServerProcessArguments(std::vector<std::string>& arguments) override
    {
        auto const state = Lock();
        if (state->processId == 0)
            return false;
        arguments = state->arguments;
        return true;
    }
    void SetSSOServerProcessArguments(std::vector<std::string> const& arguments) override
    {
        Lock()->nextArguments = arguments;
    }
    bool IsSSOServerProcessRunning(long long& processId) override
    {
        auto const state = Lock();
        processId = state->processId;
        return processId != 0;
    }
    bool IsSSOServerProcessReady() override
    {
        auto const state = Lock();
        return state->processId != 0 && !state->frozen;
    }
    bool QuitSSOServerProcess(std::chrono::milliseconds) override
    {
        auto const state = Lock();
        bool const wasRunning = state->processId != 0;
        state->processId = 0;
        state->frozen = false;
        return wasRunning;
    }
    bool QuitAllSSOServerProcesses(std::chrono::milliseconds timeout) override
    {
        return QuitSSOServerProcess(timeout);
    }
};

} // namespace

std::shared_ptr<ISSOServerManager> MakeServerManager(std::shared_ptr<Session> session)
{
    return std::make_shared<ServerManager>(std::move(session));
}

} // namespace Sample
