// The library's log goes where our own goes.

#include <plugin/Defaults.h>

#include "openid/interfaces/Interfaces.h"

namespace Halvorix::OpenId {

namespace {

using namespace SSOServices;

class OpenIdLogger : public LoggerDefaults {
public:
    explicit OpenIdLogger(std::shared_ptr<LogFile> log) : log(std::move(log)) {}

    void WriteLine(wchar_t const* message, Log::LogLevel level) override
    {
        if (message != nullptr)
            log->Write(level, message);
    }

private:
    std::shared_ptr<LogFile> const log;
};

class OpenIdLogManager : public SSOLogManagerDefaults {
public:
    explicit OpenIdLogManager(std::shared_ptr<LogFile> log)
        : logger(std::make_shared<OpenIdLogger>(std::move(log)))
    {
    }

    // One for all names. The library asks for "HxSSOServices" alone.
    std::shared_ptr<ILogger> GetLogger(std::wstring) override { return logger; }

private:
    std::shared_ptr<ILogger> const logger;
};

} // namespace

std::shared_ptr<ISSOLogManager> MakeLogManager(std::shared_ptr<LogFile> log)
{
    return std::make_shared<OpenIdLogManager>(std::move(log));
}

} // namespace Halvorix::OpenId
