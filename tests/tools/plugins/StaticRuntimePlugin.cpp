// A plugin that is linked with a C++ runtime of its own.

#include <stdexcept>

#include <plugin/ISSOClientFactory.h>

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory()
{
    throw std::runtime_error("this one is never asked");
}
