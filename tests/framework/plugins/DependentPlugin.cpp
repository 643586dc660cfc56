// A plugin that needs another module.

#include "plugin/ISSOClientFactory.h"

int DependencyOfPlugin();

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory()
{
    return DependencyOfPlugin() != 0 ? nullptr : nullptr;
}
