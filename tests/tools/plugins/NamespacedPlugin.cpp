// A plugin that defines its factory procedure in a namespace of its own.

#include <plugin/ISSOClientFactory.h>

namespace My {

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory() { return nullptr; }

} // namespace My
