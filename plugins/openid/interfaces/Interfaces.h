#pragma once

#include <filesystem>
#include <memory>

#include <plugin/Plugin.h>

#include "openid/session/Session.h"

namespace Halvorix::OpenId {

/// HxSSOOpenID.json beside the plugin.
std::filesystem::path SettingsFile();

/// Reads the configuration beside the plugin, opens the log in its store's folder, and tells
/// there what is wrong with it.
std::shared_ptr<Session> OpenSession(std::shared_ptr<LogFile> log);

// One source file for each.
std::shared_ptr<SSOServices::ISSOLogManager> MakeLogManager(std::shared_ptr<LogFile> log);
std::shared_ptr<SSOServices::ISSOClientModule> MakeClientModule(std::shared_ptr<Session> session);
std::shared_ptr<SSOServices::ISSOClient> MakeClient(std::shared_ptr<Session> session);
std::shared_ptr<SSOServices::ISSOClientUI> MakeClientUI(std::shared_ptr<Session> session);
std::shared_ptr<SSOServices::ISSOClientPrivate> MakeClientPrivate(std::shared_ptr<Session> session);
std::shared_ptr<SSOServices::ISSOServerManager> MakeServerManager();

} // namespace Halvorix::OpenId
