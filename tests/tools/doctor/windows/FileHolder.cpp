#include <windows.h>

#include <cstdio>

// Lets nobody else open the file that it is given, until its input ends.
int main(int count, char** arguments)
{
    HANDLE const held = ::CreateFileA(count == 2 ? arguments[1] : "", GENERIC_READ, 0, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (held == INVALID_HANDLE_VALUE)
        return 1;
    std::puts("held");
    std::fflush(stdout);
    while (std::getchar() != EOF)
        continue;
    ::CloseHandle(held);
    return 0;
}
