#include "doctor/Options.h"

#include <set>

#include "common/System.h"
#include "common/Utf8.h"

namespace Halvorix::Doctor {

namespace {

namespace fs = std::filesystem;

std::string WhyNoFile(fs::path const& path)
{
    std::error_code error;
    fs::file_status const status = fs::status(path, error);
    if (fs::is_regular_file(status))
        return {};
    return Tools::Utf8(path) + (fs::exists(status)                          ? " is not a file"
                                : status.type() == fs::file_type::not_found ? " does not exist"
                                : error == std::errc::too_many_symbolic_link_levels
                                    ? " is a link that leads in a circle"
                                    : " cannot be looked at");
}

void Check(Options& options)
{
    for (fs::path const* const file : {&options.executable, &options.library})
        if (options.misuse.empty() && !file->empty())
            options.misuse = WhyNoFile(*file);
}

} // namespace

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
        } else if (name == "--verbose") {
            options.verbose = true;
        } else if (name == "--version") {
            options.version = true;
        } else if (!takesValue) {
            options.misuse = "unknown option or argument '" + name + "'";
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
