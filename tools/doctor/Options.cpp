#include "Options.h"

#include <set>

#include "../common/System.h"
#include "../common/Utf8.h"

namespace Halvorix::Doctor {

namespace {

namespace fs = std::filesystem;

bool IsFile(fs::path const& path)
{
    std::error_code unknown;
    return fs::is_regular_file(path, unknown);
}

void Check(Options& options)
{
    for (fs::path const* const file : {&options.executable, &options.library})
        if (options.misuse.empty() && !file->empty() && !IsFile(*file))
            options.misuse = Tools::Utf8(*file) + " is no file";
}

} // namespace

char const* const Usage =
    "usage: hxsso-doctor [--exe PATH [--library PATH]] [--config FILE] [--search PATHS]\n"
    "                    [--load] [--log] [--timeout SECONDS] [--json]\n"
    "\n"
    "Says why sign-in does not work for a program that uses HxSSOServices, and\n"
    "what to do about it. Looks at the program beside which it lies, or at the one\n"
    "that is named. Changes nothing on disk.\n"
    "\n"
    "  --exe PATH      look at it as if this executable had loaded the library\n"
    "  --library PATH  the library's file, where it does not lie beside the executable\n"
    "  --config FILE   as if the program had named its client configuration file\n"
    "  --search PATHS  as if it had set its support file search paths: A;B;C\n"
    "  --load          load the plugin and ask it for its interfaces. Without this\n"
    "                  (or --log) nothing of the plugin is executed\n"
    "  --log           let the library load the plugin as in the program, whatever is\n"
    "                  found wrong with it, and show the library's own log lines of\n"
    "                  that. Executes the plugin as --load does, which it implies\n"
    "  --timeout SECONDS  how long code of the plugin may run with --load and --log,\n"
    "                  which is in a process of its own; 30 without this\n"
    "  --json          one JSON document in place of the text\n"
    "\n"
    "The last line of the text is \"sign-in can work\" or the first thing that is\n"
    "wrong. Start it in the program's own working directory if that matters.\n"
    "Exit status: 0 sign-in can work, 1 something is wrong, 2 wrong use.\n";

Options ReadOptions(std::vector<fs::path> const& arguments)
{
    Options options;
    std::set<std::string> seen;
    for (std::size_t i = 0; i < arguments.size() && options.misuse.empty(); ++i) {
        std::string const name = Tools::Utf8(arguments[i]);
        bool const takesValue = name == "--exe" || name == "--library" || name == "--config" ||
                                name == "--search" || name == "--timeout";
        if (name == "--help") {
            options.help = true;
        } else if (name == "--load") {
            options.load = true;
        } else if (name == "--log") {
            options.load = options.log = true;
        } else if (name == "--json") {
            options.asJson = true;
        } else if (!takesValue) {
            options.misuse = "what is '" + name + "'?";
        } else if (i + 1 == arguments.size() || arguments[i + 1].empty()) {
            options.misuse = name + " needs a value";
        } else if (!seen.insert(name).second) {
            options.misuse = name + " is given twice";
        } else {
            fs::path const& value = arguments[++i];
            std::wstring const text = Tools::Wide(value);
            if (name == "--exe")
                options.executable = value;
            else if (name == "--library")
                options.library = value;
            else if (name == "--timeout") {
                if (!Tools::ReadTimeLimit(Tools::Utf8(value), options.timeLimit))
                    options.misuse = "the value of --timeout is no number of seconds up to 9999";
            } else if (text.empty())
                options.misuse = "the value of " + name + " is not UTF-8";
            else if (name == "--config")
                options.config = text;
            else
                options.searchPaths = text;
        }
    }
    Check(options);
    return options;
}

} // namespace Halvorix::Doctor
