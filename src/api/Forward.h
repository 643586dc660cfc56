#pragma once

#include <memory>
#include <type_traits>
#include <utility>

#include "../../include/plugin/ISSOClient.h"
#include "../../include/plugin/ISSOClientModule.h"
#include "../../include/plugin/ISSOClientPrivate.h"
#include "../../include/plugin/ISSOClientUI.h"
#include "../../include/plugin/ISSOServerManager.h"
#include "../host/SSOClientManager.h"

// How every public member reaches the plugin: get an interface, give the fixed
// answer if there is none, and otherwise call it with no lock held. Each use
// names the fixed answer first and then the call; a member without an answer
// names the call alone.
namespace Halvorix::SSOServices {

template <class Interface>
using InterfaceGetter = void (SSOClientManager::*)(std::shared_ptr<Interface>&);

template <class Interface>
std::shared_ptr<Interface> Fetch(InterfaceGetter<Interface> getter)
{
    std::shared_ptr<Interface> plugin;
    (*SSOClientManager::GetInstance().*getter)(plugin);
    return plugin;
}

template <class Interface, class Answer, class Call>
std::invoke_result_t<Call, Interface&> Forward(InterfaceGetter<Interface> getter,
                                               Answer&& answerWithoutPlugin, Call call)
{
    std::shared_ptr<Interface> const plugin = Fetch(getter);
    if (!plugin)
        return std::forward<Answer>(answerWithoutPlugin);
    return call(*plugin);
}

template <class Interface, class Call>
void Forward(InterfaceGetter<Interface> getter, Call call)
{
    if (std::shared_ptr<Interface> const plugin = Fetch(getter))
        call(*plugin);
}

template <class... AnswerAndCall>
decltype(auto) AskClient(AnswerAndCall&&... answerAndCall)
{
    return Forward<ISSOClient>(&SSOClientManager::GetSSOClient,
                               std::forward<AnswerAndCall>(answerAndCall)...);
}

template <class... AnswerAndCall>
decltype(auto) AskModule(AnswerAndCall&&... answerAndCall)
{
    return Forward<ISSOClientModule>(&SSOClientManager::GetSSOClientModule,
                                     std::forward<AnswerAndCall>(answerAndCall)...);
}

template <class... AnswerAndCall>
decltype(auto) AskUI(AnswerAndCall&&... answerAndCall)
{
    return Forward<ISSOClientUI>(&SSOClientManager::GetSSOClientUI,
                                 std::forward<AnswerAndCall>(answerAndCall)...);
}

template <class... AnswerAndCall>
decltype(auto) AskPrivate(AnswerAndCall&&... answerAndCall)
{
    return Forward<ISSOClientPrivate>(&SSOClientManager::GetSSOClientPrivate,
                                      std::forward<AnswerAndCall>(answerAndCall)...);
}

template <class... AnswerAndCall>
decltype(auto) AskServer(AnswerAndCall&&... answerAndCall)
{
    return Forward<ISSOServerManager>(&SSOClientManager::GetSSOServerManager,
                                      std::forward<AnswerAndCall>(answerAndCall)...);
}

} // namespace Halvorix::SSOServices
