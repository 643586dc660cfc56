// The tests, or as a process of theirs the child program that the arguments name.

#include <gmock/gmock.h>

#include <iostream>
#include <map>

#include "openid/Child.h"

namespace Rig {

namespace {

std::map<std::string, ChildProgram>& Programs()
{
    static std::map<std::string, ChildProgram> programs;
    return programs;
}

} // namespace

bool RegisterChild(std::string const& name, ChildProgram program)
{
    return Programs().emplace(name, program).second;
}

} // namespace Rig

int main(int count, char** arguments)
{
    if (count > 2 && std::string(arguments[1]) == "--child") {
        auto const found = Rig::Programs().find(arguments[2]);
        if (found != Rig::Programs().end())
            return found->second({arguments + 3, arguments + count});
        std::cerr << "no child program " << arguments[2] << '\n';
        return 2;
    }
    ::testing::InitGoogleMock(&count, arguments);
    return RUN_ALL_TESTS();
}
