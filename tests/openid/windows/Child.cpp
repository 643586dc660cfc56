#include "openid/Child.h"

#include <stdexcept>

#include "openid/platform/windows/Windows.h"

namespace Rig {

using Halvorix::OpenId::WideFrom;

std::string ThisProgram()
{
    wchar_t file[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, file, MAX_PATH);
    return Halvorix::OpenId::Utf8From(file);
}

struct Child::Process {
    HANDLE handle = nullptr;
};

Child::Child(std::string const& name, std::vector<std::string> const& arguments)
    : process(std::make_unique<Process>())
{
    std::wstring command = L"openid --child " + WideFrom(name);
    for (std::string const& argument : arguments)
        command += L" \"" + WideFrom(argument) + L"\"";
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION started{};
    if (!::CreateProcessW(WideFrom(ThisProgram()).c_str(), command.data(), nullptr, nullptr, FALSE,
                          0, nullptr, nullptr, &start, &started))
        throw std::runtime_error("no process for " + name);
    ::CloseHandle(started.hThread);
    process->handle = started.hProcess;
}

Child::~Child()
{
    Kill();
    ::CloseHandle(process->handle);
}

void Child::Kill()
{
    ::TerminateProcess(process->handle, static_cast<UINT>(-1));
    ::WaitForSingleObject(process->handle, INFINITE);
}

int Child::Wait(std::chrono::milliseconds limit)
{
    DWORD status = 0;
    if (::WaitForSingleObject(process->handle, static_cast<DWORD>(limit.count())) == WAIT_OBJECT_0)
        ::GetExitCodeProcess(process->handle, &status);
    else
        Kill();
    ::GetExitCodeProcess(process->handle, &status);
    return static_cast<int>(status);
}

} // namespace Rig
