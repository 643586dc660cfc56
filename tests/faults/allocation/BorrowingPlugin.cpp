// A plugin whose factory is the one that the test lends it, so that all that the
// interfaces do happens in the test's executable.

#include <plugin/ISSOClientFactory.h>

using Lender = std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> (*)();

extern "C" void LendFactory(Lender lender);

namespace {

Lender lender = nullptr;

} // namespace

void LendFactory(Lender given) { lender = given; }

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory()
{
    return lender == nullptr ? nullptr : lender();
}
