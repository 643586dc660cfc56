// A plugin that needs another module, and declines when it has it.

#include <plugin/ISSOClientFactory.h>

void UseDependency();

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory()
{
    UseDependency();
    return nullptr;
}
