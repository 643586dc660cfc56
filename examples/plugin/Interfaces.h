#pragma once

#include <memory>

#include <plugin/Plugin.h>

namespace Sample {

using namespace Halvorix;
using namespace Halvorix::SSOServices;
using namespace Halvorix::WebServices;

class Session;

// One source file for each. Those that take the session share it.
std::shared_ptr<ISSOLogManager> MakeLogManager();
std::shared_ptr<ISSOClientModule> MakeClientModule(std::shared_ptr<Session> session);
std::shared_ptr<ISSOClient> MakeClient(std::shared_ptr<Session> session);
std::shared_ptr<ISSOClientUI> MakeClientUI(std::shared_ptr<Session> session);
std::shared_ptr<ISSOClientPrivate> MakeClientPrivate(std::shared_ptr<Session> session);
std::shared_ptr<ISSOServerManager> MakeServerManager(std::shared_ptr<Session> session);

} // namespace Sample
