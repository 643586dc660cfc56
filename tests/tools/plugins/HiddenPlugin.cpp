// A plugin that is built with hidden visibility and without hxsso_add_plugin.

#include <plugin/ISSOClientFactory.h>

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory() { return nullptr; }
