// Whole installations under the doctor: the input is a list of changes to one that is in
// order, each to one of its files.
//
// Property: the doctor comes to an end and leaves no exception; the document is JSON and
// agrees with the exit status of both reports; and nothing that it writes can steer a
// terminal or show a line in another order.

#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <json/reader.h>
#include <json/value.h>

#include "common/ModuleImage.h"
#include "doctor/Diagnosis.h"
#include "fuzz/Property.h"
#include "fuzz/ScratchFolder.h"
#include "fuzz/TextReference.h"

using namespace Fuzz;

namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;

constexpr char const* ClientConfig = R"({
    "ssoServer": {
        "appName": "HxSSO.exe",
        "searchPaths": "%ExePath%/../server;%Nothing%",
        "VersionCompatibilityConfigfilePath": "%SSOServerAppPath%"
    },
    "openssl": {"moduleName": "", "modulePath": "%ExePath%"}
}
)";

constexpr char const* Compatibility = R"({
    "ssoClientPlugin": [
        {
            "module": "Plugin",
            "modulePath": "%SSOServerAppPath%/plugin",
            "version": "1.0",
            "compatibleSsoServicesVersion": {"minVersion": "10.22", "maxVersion": "10.22.00.1800"}
        },
        {"module": "Other", "modulePath": "%AppPath%", "version": 2.10,
         "compatibleSsoServicesVersion": {"versions": ["10.22.00.1800"]}}
    ],
    "openssl": [
        {
            "module": "crypto",
            "modulePath": "%SSOServerAppPath%/openssl",
            "version": "3.0",
            "compatibleSsoServicesVersion": {"minVersion": "10"}
        }
    ]
}
)";

std::string SampleModule()
{
    bool const isElf = Halvorix::Tools::NativeFormat == Halvorix::Tools::ImageFormat::Elf;
    std::ifstream stream(fs::path(HXSSO_FUZZ_CORPUS) / "image" / (isElf ? "elf" : "pe"),
                         std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    Holds(!content.str().empty(), "the sample of a module is there");
    return content.str();
}

Files Whole()
{
    static std::string const module = SampleModule();
    return {{"app/Program", module},
            {std::string("app/") + HXSSO_FUZZ_LIBRARY, module},
            {"app/SSOClient.config", ClientConfig},
            {"server/HxSSO.exe", ""},
            {"server/SSOVersionCompatibility.config", Compatibility},
            {"server/plugin/Plugin", module},
            {"server/plugin/Needed", module},
            {"server/openssl/crypto", module},
            {"app/Other", "no module"}};
}

// Numbers and texts from the input, as far as it goes.
class Reader {
public:
    Reader(std::uint8_t const* bytes, std::size_t count) : data(bytes), size(count) {}

    bool IsAtEnd() const { return size == 0; }
    std::size_t Number(std::size_t below)
    {
        std::size_t const high = Byte();
        return (high << 8U | Byte()) % below;
    }
    std::string Text()
    {
        std::size_t const length = std::min<std::size_t>(Number(256), size);
        std::string const text = AsText(data, length);
        data += length;
        size -= length;
        return text;
    }

private:
    std::size_t Byte()
    {
        if (size == 0)
            return 0;
        --size;
        return *data++;
    }

    std::uint8_t const* data;
    std::size_t size;
};

struct Changed {
    Files files;
    std::vector<std::string> folders; ///< where a file belongs
};

Changed Change(Reader& reader)
{
    Changed changed{Whole(), {}};
    while (!reader.IsAtEnd()) {
        auto file = changed.files.begin();
        std::advance(file, reader.Number(changed.files.size()));
        std::string& content = file->second;
        std::size_t const at = reader.Number(content.size() + 1);
        switch (reader.Number(7)) {
        case 0: { // other bytes
            std::string const text = reader.Text();
            content.replace(at, text.size(), text);
            break;
        }
        case 1:
            content.insert(at, reader.Text());
            break;
        case 2:
            content.erase(at, reader.Number(256));
            break;
        case 3:
            content.resize(at);
            break;
        case 4:
            content = reader.Text();
            break;
        case 5:
            if (changed.files.size() > 1)
                changed.files.erase(file);
            break;
        default:
            if (changed.files.size() > 1) {
                changed.folders.push_back(file->first);
                changed.files.erase(file);
            }
            break;
        }
    }
    return changed;
}

struct Said {
    int status;
    std::string text;
};

Said Run(std::vector<fs::path> const& arguments)
{
    std::ostringstream said;
    std::streambuf* const before = std::cout.rdbuf(said.rdbuf());
    int const status = Halvorix::Doctor::Run(arguments);
    std::cout.rdbuf(before);
    return {status, said.str()};
}

void CheckIsSafe(std::string const& text)
{
    for (wchar_t const unit : Reference::Widen(text)) {
        auto const point = static_cast<unsigned long>(unit);
        bool const isControl = (point < 0x20 && point != '\n') || (point >= 0x7F && point <= 0x9F);
        bool const turns = point == 0x61C || point == 0x200E || point == 0x200F ||
                           (point >= 0x2028 && point <= 0x202E) ||
                           (point >= 0x2066 && point <= 0x2069);
        Holds(!isControl && !turns, "nothing steers a terminal", text);
    }
}

// Wine keeps a file that it could not look into, as a 32-bit process a 64-bit module.
void MakeWay(std::string const& folder)
{
    static int count = 0;
    std::error_code isHeld;
    fs::remove_all(folder, isHeld);
    if (isHeld)
        fs::rename(folder, folder + "-" + std::to_string(++count));
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static ScratchFolder const folder;
    Reader reader(data, size);
    Changed const changed = Change(reader);
    for (char const* const top : {"app", "server"})
        MakeWay(top);
    fs::create_directories("app");
    fs::create_directories("server");
    for (auto const& [name, content] : changed.files)
        folder.Write(name, content);
    for (std::string const& name : changed.folders)
        fs::create_directories(name);
    if (!fs::is_regular_file("app/Program"))
        return 0; // wrong use

    Said const document = Run({"--exe", "app/Program", "--json"});
    Said const text = Run({"--exe", "app/Program"});
    CheckIsSafe(document.text);
    CheckIsSafe(text.text);
    Json::Value root;
    Holds(Json::Reader().parse(document.text, root), "the document is JSON", document.text);
    bool const canWork = root["verdict"]["canWork"].asBool();
    Same("the document's verdict", canWork ? 0 : 1, document.status);
    Same("the status of the text", document.status, text.status);
    Holds(!text.text.empty() && text.text.back() == '\n', "the text has a last line", text.text);
    return 0;
}
