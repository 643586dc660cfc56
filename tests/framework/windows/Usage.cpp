#include "framework/Usage.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>

#include <cstdint>

namespace Rig {

namespace {

// Wine knows nothing of what is committed; there it is what is resident.
std::size_t OwnBytes()
{
    PROCESS_MEMORY_COUNTERS_EX counters{};
    counters.cb = sizeof(counters);
    ::K32GetProcessMemoryInfo(::GetCurrentProcess(),
                              reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                              sizeof(counters));
    return counters.PrivateUsage != 0 ? counters.PrivateUsage : counters.WorkingSetSize;
}

// Wine counts none, and its server does not always survive a question for the
// table of all handles; so each number is tried that one may have.
int HandlesByNumber()
{
    constexpr std::uintptr_t highest = 1 << 12;
    int count = 0;
    for (std::uintptr_t number = 4; number <= highest; number += 4) {
        DWORD flags = 0;
        if (::GetHandleInformation(reinterpret_cast<HANDLE>(number), &flags))
            ++count;
    }
    return count;
}

int Handles()
{
    DWORD count = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &count);
    return count != 0 ? static_cast<int>(count) : HandlesByNumber();
}

int Threads()
{
    HANDLE const all = ::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    int count = 0;
    for (BOOL more = ::Thread32First(all, &entry); more; more = ::Thread32Next(all, &entry))
        if (entry.th32OwnerProcessID == ::GetCurrentProcessId())
            ++count;
    ::CloseHandle(all);
    return count;
}

} // namespace

Usage CurrentUsage() { return {OwnBytes(), Handles(), Threads()}; }

} // namespace Rig
