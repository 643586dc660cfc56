#pragma once

#include <memory>

#include <plugin/ISSOClient.h>
#include <plugin/ISSOClientModule.h>
#include <plugin/ISSOClientPrivate.h>
#include <plugin/ISSOClientUI.h>
#include <plugin/ISSOServerManager.h>
#include "host/SSOClientManager.h"

namespace Halvorix::SSOServices {

template <class Interface>
using InterfaceGetter = void (SSOClientManager::*)(std::shared_ptr<Interface>&);

template <class Interface>
constexpr InterfaceGetter<Interface> getterOf = nullptr;
template <>
inline constexpr InterfaceGetter<ISSOClient> getterOf<ISSOClient> = &SSOClientManager::GetSSOClient;
template <>
inline constexpr InterfaceGetter<ISSOClientModule> getterOf<ISSOClientModule> =
    &SSOClientManager::GetSSOClientModule;
template <>
inline constexpr InterfaceGetter<ISSOClientUI> getterOf<ISSOClientUI> =
    &SSOClientManager::GetSSOClientUI;
template <>
inline constexpr InterfaceGetter<ISSOClientPrivate> getterOf<ISSOClientPrivate> =
    &SSOClientManager::GetSSOClientPrivate;
template <>
inline constexpr InterfaceGetter<ISSOServerManager> getterOf<ISSOServerManager> =
    &SSOClientManager::GetSSOServerManager;

/// The plugin's interface, loaded first if need be; empty with no plugin. The caller keeps
/// it until its call has returned, and holds no lock meanwhile.
template <class Interface>
std::shared_ptr<Interface> Plugin()
{
    std::shared_ptr<Interface> plugin;
    (*SSOClientManager::GetInstance().*getterOf<Interface>)(plugin);
    return plugin;
}

} // namespace Halvorix::SSOServices
