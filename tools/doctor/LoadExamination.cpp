#include <exception>
#include <iostream>
#include <memory>
#include <sstream>

#include "../../include/plugin/ISSOClientModule.h"
#include "Examination.h"
#include "Text.h"
#include "discovery/PathText.h"
#include "host/SSOClientManager.h"
#include "host/SupportFileSearchPaths.h"
#include "support/ProcessState.h"

namespace Halvorix::Doctor {

namespace {

// The library echoes what waits for a logger to the console, where the report goes.
class QuietConsole {
public:
    QuietConsole() : before(std::wcout.rdbuf(&swallowed)) {}
    ~QuietConsole() { std::wcout.rdbuf(before); }
    QuietConsole(QuietConsole const&) = delete;
    QuietConsole& operator=(QuietConsole const&) = delete;

private:
    std::wstringbuf swallowed;
    std::wstreambuf* before;
};

} // namespace

void ExamineRealLoad(Options const& options, Findings& findings)
{
    findings.load = RealLoad();
    RealLoad& load = *findings.load;
    QuietConsole const quiet;
    SSOServices::StoreSupportFileSearchPaths(
        SSOServices::SplitSupportPathList(options.searchPaths));
    auto const tee = [&load](std::wstring const& text, Log::LogLevel level) {
        load.lines.push_back({static_cast<int>(level), Shown(text)});
        SSOServices::SSOClientManager::LogWrite(text, level);
    };
    SSOServices::SSOClientManager manager(tee);
    try {
        if (!options.config.empty())
            manager.Ask([&options](SSOServices::SSOPathResolver& resolver) {
                resolver.SetSSOClientConfigFileOverride(options.config);
            });
        std::shared_ptr<SSOServices::ISSOClientModule> module;
        manager.GetSSOClientModule(module);
        // An interface may be missing; the library says so of a factory that it has.
        load.worked =
            module != nullptr ||
            (!load.lines.empty() &&
             load.lines.back().text == Shown(SSOServices::Messages::NoSSOClientModule.text));
    } catch (std::exception const& exception) {
        load.isInterrupted = true;
        findings.interruptions.push_back({"the load", Tools::Presentable(exception.what()), true});
    } catch (...) {
        load.isInterrupted = true;
        findings.interruptions.push_back({"the load", "what is no std::exception", true});
    }
}

} // namespace Halvorix::Doctor
