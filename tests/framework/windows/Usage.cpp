#include "../Usage.h"

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <psapi.h>
#include <tlhelp32.h>
#include <winternl.h>

#include <algorithm>
#include <vector>

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

// The system's table of all handles, as far as it is used here.
struct HandleEntry {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT creatorIndex;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};
struct HandleTable {
    ULONG_PTR count;
    ULONG_PTR reserved;
    HandleEntry entries[1];
};
constexpr auto ExtendedHandleInformation = static_cast<SYSTEM_INFORMATION_CLASS>(64);

int HandlesByTable()
{
    using Query = NTSTATUS(WINAPI*)(SYSTEM_INFORMATION_CLASS, void*, ULONG, ULONG*);
    auto const query = reinterpret_cast<Query>(reinterpret_cast<void (*)()>(
        ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    std::vector<ULONG_PTR> buffer(1 << 16);
    auto const* const table = reinterpret_cast<HandleTable const*>(buffer.data());
    auto const size = static_cast<ULONG>(buffer.size() * sizeof(ULONG_PTR));
    if (query == nullptr || query(ExtendedHandleInformation, buffer.data(), size, nullptr) != 0)
        return 0;
    return static_cast<int>(
        std::count_if(table->entries, table->entries + table->count, [](HandleEntry const& entry) {
            return entry.process == ::GetCurrentProcessId();
        }));
}

// Wine counts none by the short way.
int Handles()
{
    DWORD count = 0;
    ::GetProcessHandleCount(::GetCurrentProcess(), &count);
    return count != 0 ? static_cast<int>(count) : HandlesByTable();
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
