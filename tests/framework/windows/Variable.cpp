#include "framework/Variable.h"

#include <cstdlib>

#include "support/TextConversion.h"

namespace Rig {

std::string Variable(char const* name)
{
    using namespace Halvorix::SSOServices;
    wchar_t const* const value = ::_wgetenv(Utf8ToWide(name).c_str());
    return value == nullptr ? "" : WideToUtf8(value);
}

void SetVariable(std::string const& name, std::string const& value)
{
    ::_putenv_s(name.c_str(), value.c_str());
}

} // namespace Rig
