#include "framework/Installation.h"

#include <algorithm>
#include <fstream>
#include <ostream>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>
#include <json/reader.h>
#include <json/writer.h>

#include "framework/Secrets.h"
#include "framework/Variable.h"

namespace Rig {

namespace {

namespace fs = std::filesystem;

std::string ReadWhole(fs::path const& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    return content.str();
}

std::vector<std::string> Lines(std::string const& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        while (!line.empty() && line.back() == '\r')
            line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

Json::Value Parsed(std::string const& text)
{
    Json::Value value;
    std::istringstream stream(text);
    std::string errors;
    if (!Json::parseFromStream(Json::CharReaderBuilder(), stream, &value, &errors))
        throw std::runtime_error("not JSON: " + text + ": " + errors);
    return value;
}

// In one pass: what a logger that never ends has written may be long.
std::string Replaced(std::string const& text, std::string const& from, std::string const& to)
{
    std::string result;
    std::size_t copied = 0;
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, copied)) {
        result.append(text, copied, at - copied).append(to);
        copied = at + from.size();
    }
    return result.append(text, copied, std::string::npos);
}

// Entries in which "modulePath" is the path that this process reads, and the other one
// the path for processes of the other kind.
std::string ForThisProcess(std::string const& entries)
{
    if (!IsWoW64())
        return entries;
    std::string const own = "\"modulePath\"";
    std::string const other = "\"modulePathWoW64\"";
    return Replaced(Replaced(Replaced(entries, other, "\"the other\""), own, other),
                    "\"the other\"", own);
}

// A call as it reads best in a test: name(argument, argument).
std::string Spelled(Json::Value const& call)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    std::string text = call[0].asString() + "(";
    for (Json::ArrayIndex i = 1; i < call.size(); ++i)
        text += (i > 1 ? ", " : "") + Json::writeString(builder, call[i]);
    return text + ")";
}

// A folder of this process's own.
fs::path RigFolder(std::string const& name)
{
    return ThisExecutable().parent_path().parent_path() / "rig" /
           (std::to_string(ProcessNumber()) + "-" + name);
}

fs::path NewRoot(std::string const& folderName)
{
    static int count = 0;
    return RigFolder(std::to_string(++count)) / fs::u8path(folderName);
}

/// Copies of built files, for as long as this process runs.
class Copies {
public:
    Copies() { fs::remove_all(folder); } // of a process with this number that crashed
    ~Copies()
    {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }
    Copies(Copies const&) = delete;
    Copies& operator=(Copies const&) = delete;

    fs::path Of(fs::path const& file) const
    {
        fs::path const copy = folder / file.filename();
        if (!fs::exists(copy)) {
            fs::create_directories(folder);
            fs::copy_file(file, copy);
        }
        return copy;
    }

private:
    fs::path const folder = RigFolder("files");
};

// Windows removes no name of a file that is in use, as this process's own executable
// is: there it is a copy that gets further names.
fs::path ToBeLinked(fs::path const& file)
{
    static Copies const copies;
    return IsWindows() ? copies.Of(file) : fs::canonical(file);
}

void ExpectNoSecretIn(std::string const& text, char const* where)
{
    for (std::string const& secret : Secrets::FoundIn(text))
        ADD_FAILURE() << "the " << where << " tells the secret " << secret << ":\n" << text;
}

void ExpectNoSanitizerReportIn(std::string const& errors)
{
    if (errors.find("Sanitizer:") != std::string::npos ||
        errors.find("runtime error:") != std::string::npos)
        ADD_FAILURE() << "a sanitizer reports:\n" << errors;
}

// The report and the record are the test's own: only there may a secret show.
void ExpectNoSecretIn(Outcome const& outcome)
{
    for (LogMessage const& line : outcome.log)
        ExpectNoSecretIn(line.text, "log");
    for (std::string const& line : outcome.console)
        ExpectNoSecretIn(line, "console");
    ExpectNoSecretIn(outcome.errors, "standard error");
}

} // namespace

Json::Value Outcome::operator[](std::string const& name) const
{
    auto const found = values.find(name);
    return found == values.end() ? Json::Value() : found->second;
}

int Outcome::Logged(std::string const& text) const
{
    return static_cast<int>(std::count_if(
        log.begin(), log.end(), [&text](LogMessage const& line) { return line.text == text; }));
}

int Outcome::LoggedAt(int level, std::string const& text) const
{
    return static_cast<int>(std::count(log.begin(), log.end(), LogMessage{level, text}));
}

int Outcome::OnConsole(std::string const& text) const
{
    return static_cast<int>(std::count(console.begin(), console.end(), text));
}

int Outcome::Called(std::string const& call) const
{
    return static_cast<int>(std::count(calls.begin(), calls.end(), call));
}

Installation::Installation() : Installation("tree") {}

Installation::Installation(std::string const& folderName) : root(NewRoot(folderName))
{
    fs::remove_all(root.parent_path());
    for (char const* folder : {"app", "lib", "server", "work", "home", "xdg"})
        Folder(folder);
    Place(ThisExecutable().filename().string(), "app", ExecutableName("host"));
    for (std::string const& file : LibraryFiles())
        Place(file, "lib", file);
    environment["HOME"] = Path("home").u8string();
    environment["XDG_CONFIG_DIRS"] = Path("xdg").u8string();
    environment["XDG_CONFIG_HOME"] = "";
    environment["XDG_DATA_HOME"] = "";
    environment["LC_ALL"] = "C.UTF-8";
    environment["HXSSO_REPORT"] = Path("report").u8string();
    environment["HXSSO_PLUGIN_RECORD"] = Path("record").u8string();
    environment["HXSSO_PLUGIN_SCRIPT"] = Path("script").u8string();
    if (IsWindows())
        environment["PATH"] = Path("lib").u8string() + ";" + Variable("PATH");
}

Installation::~Installation()
{
    std::error_code ignored;
    fs::remove_all(root.parent_path(), ignored);
}

Installation& Installation::Complete()
{
    ClientConfig(R"({"ssoServer": {"searchPaths": "{root}/server"}})");
    ServerApp();
    Compatibility(CompatibilityFor("RecordingPlugin"));
    Plugin();
    return File("server/openssl/" + ModuleName("openssl"), "placeholder");
}

fs::path Installation::Path(std::string const& relative) const
{
    return root / fs::u8path(relative);
}

std::string Installation::Text(std::string const& relative) const
{
    return Path(relative).generic_u8string();
}

Installation& Installation::File(std::string const& relative, std::string const& content)
{
    fs::create_directories(Path(relative).parent_path());
    std::ofstream(Path(relative), std::ios::binary)
        << (Path(relative).filename() == "SSOClient.config" ? content : ForThisProcess(content));
    return *this;
}

Installation& Installation::Folder(std::string const& relative)
{
    fs::create_directories(Path(relative));
    return *this;
}

Installation& Installation::Remove(std::string const& relative)
{
    fs::remove_all(Path(relative));
    return *this;
}

Installation& Installation::ClientConfig(std::string const& content, std::string const& folder)
{
    return File(folder + "/SSOClient.config", WithRoot(content));
}

Installation& Installation::Compatibility(std::string const& content, std::string const& folder)
{
    return File(folder + "/SSOVersionCompatibility.config", WithRoot(content));
}

Installation& Installation::ServerApp(std::string const& folder)
{
    return File(folder + "/HxSSO.exe", "placeholder");
}

Installation& Installation::Plugin(std::string const& kind, std::string const& folder)
{
    Place(ModuleName(kind), folder, ModuleName(kind));
    return *this;
}

Installation& Installation::LibraryBesideExecutable()
{
    for (std::string const& file : LibraryFiles()) {
        Place(file, "app", file);
        Remove("lib/" + file);
    }
    return *this;
}

Installation& Installation::Script(std::string const& operation, std::string const& action)
{
    script[operation] = Parsed(WithRoot(action));
    return *this;
}

Installation& Installation::Quiet() { return Environment("HXSSO_PLUGIN_QUIET", "1"); }

Installation& Installation::Limit(std::chrono::seconds longest)
{
    limit = longest;
    return *this;
}

Installation& Installation::Host(std::string const& executable)
{
    Remove("app/" + ExecutableName("host"));
    Place(ExecutableName(executable), "app", ExecutableName("host"));
    return *this;
}

Installation& Installation::Environment(std::string const& name, std::string const& value)
{
    environment[name] = WithRoot(value);
    return *this;
}

bool Installation::UseLocale(std::string const& language, std::string const& characters)
{
    Environment("LC_ALL", language + "." + characters);
    if (IsWindows())
        return true;
    Environment("LOCPATH", "{root}/locales");
    Folder("locales");
    Process process;
    process.program = "/usr/bin/localedef";
    process.directory = Path("work");
    process.arguments = {"-i", language, "-f", characters,
                         Text("locales/" + language + "." + characters)};
    process.output = Path("localedef.output");
    process.errors = Path("localedef.errors");
    return fs::exists(process.program) && RunToEnd(process).status == 0;
}

Outcome Installation::Run(std::string const& program, std::vector<std::string> const& arguments)
{
    for (char const* file : {"report", "record", "output", "errors"})
        Remove(file);
    File("script", Json::writeString(Json::StreamWriterBuilder(), script));
    Process process;
    process.program = Path("app/" + ExecutableName("host"));
    process.arguments = {"--host-program", program};
    process.arguments.insert(process.arguments.end(), arguments.begin(), arguments.end());
    process.environment = environment;
    process.directory = Path("work");
    process.output = Path("output");
    process.errors = Path("errors");
    process.limit = limit;

    Outcome outcome;
    outcome.ending = RunToEnd(process);
    outcome.console = Lines(WithoutRoot(ReadWhole(process.output)));
    outcome.errors = ReadWhole(process.errors);
    for (std::string const& line : Lines(ReadWhole(Path("report")))) {
        Json::Value const entry = Parsed(WithoutRoot(line));
        outcome.values[entry[0].asString()] = entry[1];
    }
    for (std::string const& line : Lines(ReadWhole(Path("record")))) {
        Json::Value const call = Parsed(WithoutRoot(line));
        if (call[0] == "ILogger::WriteLine")
            outcome.log.push_back({call[2].asInt(), call[1].asString()});
        else
            outcome.calls.push_back(Spelled(call));
    }
    ExpectNoSecretIn(outcome);
    ExpectNoSanitizerReportIn(outcome.errors);
    return outcome;
}

void Installation::Place(std::string const& file, std::string const& folder, std::string const& as)
{
    fs::path const source = ThisExecutable().parent_path() / file;
    fs::path const target = Path(folder) / as;
    fs::create_directories(target.parent_path());
    fs::remove(target);
    // A link costs nothing and looks like a file: programs have 20 MB.
    std::error_code refused;
    fs::create_hard_link(ToBeLinked(source), target, refused);
    if (refused)
        fs::copy_file(source, target);
}

std::string Installation::WithRoot(std::string content) const
{
    return Replaced(content, "{root}", root.generic_u8string());
}

std::string Installation::WithoutRoot(std::string text) const
{
    return Replaced(text, root.generic_u8string(), "{root}");
}

} // namespace Rig
