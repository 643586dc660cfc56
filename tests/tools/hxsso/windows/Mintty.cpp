// A terminal as Cygwin and MSYS have it: to the programs in it, a pipe with a name of its kind.
// Mintty NAME PROGRAM ARGUMENT...: writes to the standard output what the program writes to that
// pipe, and ends with its status.

#include <windows.h>

#include <cstdio>
#include <string>

int wmain(int count, wchar_t** arguments)
{
    if (count < 3)
        return 99;
    std::wstring const name = std::wstring(L"\\\\.\\pipe\\") + arguments[1];
    HANDLE const terminal = ::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_INBOUND, PIPE_TYPE_BYTE, 1,
                                               65536, 65536, 0, nullptr);
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    HANDLE const output = ::CreateFileW(name.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES, 0,
                                        &inherited, OPEN_EXISTING, 0, nullptr);
    if (terminal == INVALID_HANDLE_VALUE || output == INVALID_HANDLE_VALUE)
        return 99;
    std::wstring command;
    for (int i = 2; i < count; ++i)
        command += (i == 2 ? L"\"" : L" \"") + std::wstring(arguments[i]) + L'"';
    STARTUPINFOW start{};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = ::GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = output;
    start.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION process{};
    if (::CreateProcessW(arguments[2], command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                         &start, &process) == FALSE)
        return 99;
    ::CloseHandle(output);
    char piece[4096];
    DWORD got = 0;
    while (::ReadFile(terminal, piece, sizeof piece, &got, nullptr) != FALSE && got > 0)
        std::fwrite(piece, 1, got, stdout);
    std::fflush(stdout);
    DWORD status = 99;
    ::WaitForSingleObject(process.hProcess, INFINITE);
    ::GetExitCodeProcess(process.hProcess, &status);
    return static_cast<int>(status);
}
