#include "framework/LateBinding.h"

#include <dlfcn.h>

namespace Rig {

void* BindModule(std::string const& file) { return ::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL); }

LateBound FindBound(void* module, char const* name)
{
    return reinterpret_cast<LateBound>(::dlsym(module, name));
}

void UnbindModule(void* module) { ::dlclose(module); }

bool IsModuleLoaded(std::string const& file)
{
    void* const module = ::dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (module == nullptr)
        return false;
    ::dlclose(module);
    return true;
}

} // namespace Rig
