#include "openid/interfaces/Interfaces.h"
#include "openid/platform/Files.h"
#include "openid/protocol/Texts.h"

namespace Halvorix::OpenId {

std::filesystem::path SettingsFile() { return ModuleFolder() / "HxSSOOpenID.json"; }

std::shared_ptr<Session> OpenSession(std::shared_ptr<LogFile> log)
{
    auto configuration = ReadConfiguration(SettingsFile());
    auto const folder = configuration ? configuration->store : DefaultStore();
    if (!folder.empty())
        log->Open(folder);
    if (configuration)
        for (std::string const& remark : configuration->remarks)
            log->Write(Log::LogLevel::Warning, ToWide(remark));
    else
        log->Failed("Nobody can sign in", configuration.Why());
    return std::make_shared<Session>(std::move(configuration), std::move(log));
}

} // namespace Halvorix::OpenId
