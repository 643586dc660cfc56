// hxsso-plugin-check: says line by line what of a client plugin holds and what
// does not, in the order in which the library would stumble.

#include <exception>
#include <iostream>

#include "../common/FileChecks.h"
#include "../common/LoadChecks.h"
#include "../common/System.h"
#include "../common/Utf8.h"
#include "WrittenReport.h"

namespace Halvorix::PluginCheck {

namespace {

namespace fs = std::filesystem;

constexpr int AllHolds = 0;
constexpr int SomethingFails = 1;
constexpr int WrongUse = 2;

constexpr char const* Usage = "usage: hxsso-plugin-check [--json] <module>\n"
                              "\n"
                              "Loads a client plugin as the library does and says what holds.\n"
                              "Exit status: 0 all holds, 1 something does not, 2 wrong use.\n";

int Check(fs::path const& module, bool asJson)
{
    fs::path const file = fs::absolute(module).lexically_normal();
    WrittenReport report(asJson);
    try {
        Tools::FileFindings const findings =
            Tools::CheckFile(file, Tools::ThisProgramAsHost(), report);
        // Nothing of a module runs here that is known not to work.
        if (report.HasFailed())
            report.Add("load", Tools::Result::Note, "not tried, for what is said above");
        else
            Tools::CheckLoaded(file, findings, report);
    } catch (std::exception const& exception) {
        report.Add("check", Tools::Result::Failed, std::string("given up: ") + exception.what());
    }
    report.Close(Tools::Utf8(file));
    return report.HasFailed() ? SomethingFails : AllHolds;
}

int Run(std::vector<fs::path> const& arguments)
{
    bool asJson = false;
    std::vector<fs::path> modules;
    for (fs::path const& argument : arguments) {
        std::string const text = Tools::Utf8(argument);
        if (text == "--help") {
            std::cout << Usage;
            return AllHolds;
        }
        if (text == "--json")
            asJson = true;
        else if (!text.empty() && text.front() != '-')
            modules.push_back(argument);
        else
            modules.insert(modules.end(), 2, argument); // unknown: wrong use
    }
    if (modules.size() != 1) {
        std::cerr << Usage;
        return WrongUse;
    }
    return Check(modules.front(), asJson);
}

} // namespace

} // namespace Halvorix::PluginCheck

int main(int count, char** arguments)
{
    try {
        return Halvorix::PluginCheck::Run(Halvorix::Tools::BeginProgram(count, arguments));
    } catch (std::exception const& exception) {
        std::cerr << "hxsso-plugin-check: " << exception.what() << '\n';
        return 1;
    }
}
