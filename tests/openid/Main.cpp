// The tests, or as a process of theirs the child program that the arguments name, or a browser that
// writes its address down.

#include <gmock/gmock.h>

#include <chrono>
#include <fstream>
#include <iostream>
#include <map>
#include <thread>

#include "framework/Variable.h"
#include "openid/Child.h"

namespace Rig {

namespace {

std::map<std::string, ChildProgram>& Programs()
{
    static std::map<std::string, ChildProgram> programs;
    return programs;
}

int BeBrowser(std::string const& file, std::string const& url)
{
    std::ofstream(file, std::ios::binary) << url << '\n';
    std::string const stay = Variable("HXSSO_TEST_BROWSER_STAYS");
    if (!stay.empty())
        std::this_thread::sleep_for(std::chrono::seconds(std::stoi(stay)));
    return 0;
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
    std::string const seen = Rig::Variable("HXSSO_TEST_BROWSER");
    if (count == 2 && !seen.empty())
        return Rig::BeBrowser(seen, arguments[1]);
    ::testing::InitGoogleMock(&count, arguments);
    return RUN_ALL_TESTS();
}
