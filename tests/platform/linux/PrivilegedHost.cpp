// A program that may be given another user's rights: whether it has them, and what the
// platform's functions say there.

#include <sys/auxv.h>

#include <iostream>
#include <string>

#include "platform/Platform.h"
#include "platform/linux/NarrowText.h"

int main()
{
    using namespace Halvorix::Platform;
    std::cout << "secure " << ::getauxval(AT_SECURE) << '\n';
    for (KnownFolder const folder : {KnownFolder::RoamingAppData, KnownFolder::LocalAppData})
        std::cout << "folder " << ToSystem(KnownFolderPath(folder)) << '\n';
    LocationKey key = nullptr;
    std::wstring location;
    if (OpenLocationKey(LocationView::Own, key) == 0) {
        ReadLocation(key, location);
        CloseLocationKey(key);
    }
    std::cout << "location " << ToSystem(location) << '\n';
}
