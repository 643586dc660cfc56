#include "framework/LateBinding.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include "support/TextConversion.h"

namespace Rig {

using Halvorix::SSOServices::Utf8ToWide;

void* BindModule(std::string const& file) { return ::LoadLibraryW(Utf8ToWide(file).c_str()); }

LateBound FindBound(void* module, char const* name)
{
    return reinterpret_cast<LateBound>(::GetProcAddress(static_cast<HMODULE>(module), name));
}

void UnbindModule(void* module) { ::FreeLibrary(static_cast<HMODULE>(module)); }

bool IsModuleLoaded(std::string const& file)
{
    return ::GetModuleHandleW(Utf8ToWide(file).c_str()) != nullptr;
}

} // namespace Rig
