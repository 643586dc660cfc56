#include "framework/plugins/Call.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <iterator>
#include <mutex>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include <json/reader.h>
#include <json/writer.h>

#include <SSOClientPrivate.h>
#include <WebServicesManager.h>
#include "framework/Variable.h"

namespace Rig {

namespace {

namespace fs = std::filesystem;
using Halvorix::SSOServices::SSOClientPrivate;
using Halvorix::SSOServices::Utf8ToWide;
using Halvorix::WebServices::WebServicesManager;

Json::Value ParseScript()
{
    Json::Value script(Json::objectValue);
    std::ifstream stream(fs::u8path(Variable("HXSSO_PLUGIN_SCRIPT")), std::ios::binary);
    std::string errors;
    if (stream.is_open())
        Json::parseFromStream(Json::CharReaderBuilder(), stream, &script, &errors);
    return script;
}

// Never destroyed: threads go on calling while the process ends.
Json::Value const& ScriptOfQuietPlugin()
{
    static auto const& script = *new Json::Value(ParseScript());
    return script;
}

// By pointers, since a Json::Value shares a static of its own for what is missing.
Json::Value ActionFor(Json::Value const& script, std::string const& operation)
{
    Json::Value const* const action =
        script.find(operation.data(), operation.data() + operation.size());
    return action == nullptr ? Json::Value() : *action;
}

void WaitFor(fs::path const& file)
{
    fs::path announcement = file;
    announcement += ".waiting";
    std::ofstream(announcement) << "waiting";
    for (int i = 0; i < 10000 && !fs::exists(file); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

// Uses what needs the lock, what needs an interface, and what needs neither.
void CallBack()
{
    std::wstring path = L"%ExePath%";
    SSOClientPrivate::ExpandPathVariables(path);
    bool const initialized = WebServicesManager::IsInitialized();
    std::string const state = SSOClientPrivate::GetSessionState();
    Call("CalledBack", path, initialized, state);
}

// Asks what is searched for, with its lines, each time that it is asked.
void AskForPaths() { Call("AskedForPaths", SSOClientPrivate::GetOpenSslModule()); }

// A thread that waits for the lock goes on waiting until it is released. Joined
// then: Wine loses a detached thread that ends beside other work.
std::vector<std::thread>& ThreadsBehindTheLock()
{
    // Never destroyed: the plugin is used until the process is gone.
    static auto& threads = *new std::vector<std::thread>;
    return threads;
}

bool LockIsFree(std::chrono::seconds patience)
{
    std::packaged_task<void()> take([] { SSOClientPrivate::GetModuleDirPath(std::wstring()); });
    std::future<void> const taken = take.get_future();
    std::thread thread(std::move(take));
    bool const isFree = taken.wait_for(patience) == std::future_status::ready;
    if (isFree)
        thread.join();
    else
        ThreadsBehindTheLock().push_back(std::move(thread));
    return isFree;
}

void JoinThreadsBehindTheLock()
{
    for (std::thread& thread : ThreadsBehindTheLock())
        thread.join();
    ThreadsBehindTheLock().clear();
}

// No statics with destructors: the plugin is used until the process is gone.
template <std::size_t Count>
bool IsOneOf(char const* const (&texts)[Count], std::string const& text)
{
    return std::any_of(std::begin(texts), std::end(texts),
                       [&text](char const* candidate) { return text == candidate; });
}

bool IsReachedByPublicCalls(std::string const& operation)
{
    static constexpr char const* interfaces[] = {
        "ISSOClient", "ISSOClientModule", "ISSOClientPrivate", "ISSOClientUI", "ISSOServerManager"};
    static constexpr char const* ofTheLoad[] = {
        "ISSOServerManager::SetSSOServerAppFiles", "ISSOServerManager::SetSSOServerProcessName",
        "ISSOServerManager::SetSSOServerName", "ISSOClientModule::SetOpenSslModule"};
    return IsOneOf(interfaces, operation.substr(0, operation.find(':'))) &&
           !IsOneOf(ofTheLoad, operation);
}

std::string FromHexadecimal(std::string const& digits)
{
    std::string bytes;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2)
        bytes.push_back(static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16)));
    return bytes;
}

std::string Repeated(std::string const& text, std::size_t count)
{
    std::string whole;
    whole.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i)
        whole += text;
    return whole;
}

template <class Unit>
int FillBuffer(std::basic_string<Unit> const& text, Unit* buffer, int capacity)
{
    if (buffer == nullptr)
        return static_cast<int>(text.size());
    if (capacity < 1)
        return 0;
    std::size_t const count = std::min(text.size(), static_cast<std::size_t>(capacity) - 1);
    std::copy_n(text.data(), count, buffer);
    buffer[count] = Unit{};
    return static_cast<int>(count);
}

template <class Unit>
Unit* NewCopy(std::basic_string<Unit> const& text)
{
    Unit* const copy = new Unit[text.size() + 1];
    std::copy_n(text.c_str(), text.size() + 1, copy);
    return copy;
}

} // namespace

bool Call::Text(std::string& text) const
{
    text = action.isMember("text") ? action["text"].asString() : usualText;
    if (action.isMember("bytes"))
        text = FromHexadecimal(action["bytes"].asString());
    if (action.isMember("repeat"))
        text = Repeated(text, action["repeat"].asUInt());
    return !action.isMember("text") || !action["text"].isNull();
}

std::string Call::Text() const
{
    std::string text;
    Text(text);
    return text;
}

std::wstring Call::WideText() const { return Utf8ToWide(Text()); }

int Call::Fill(wchar_t* buffer, int capacity) const
{
    return Answer(FillBuffer(WideText(), buffer, capacity));
}

int Call::Fill(char* buffer, int capacity) const
{
    return Answer(FillBuffer(Text(), buffer, capacity));
}

wchar_t* Call::NewWideText() const
{
    std::string text;
    return Text(text) ? NewCopy(Utf8ToWide(text)) : nullptr;
}

char* Call::NewText() const
{
    std::string text;
    return Text(text) ? NewCopy(text) : nullptr;
}

Json::Value Call::AsJson(char const* text) { return text == nullptr ? Json::Value() : text; }

Json::Value Call::AsJson(wchar_t const* text)
{
    return text == nullptr ? Json::Value() : AsJson(std::wstring(text));
}

Json::Value Call::AsJson(std::vector<std::string> const& texts)
{
    Json::Value list(Json::arrayValue);
    for (std::string const& text : texts)
        list.append(text);
    return list;
}

Json::Value Call::AsJson(std::map<std::wstring, std::wstring> const& texts)
{
    Json::Value object(Json::objectValue);
    for (auto const& [name, value] : texts)
        object[AsJson(name).asString()] = AsJson(value);
    return object;
}

Json::Value Call::AsJson(std::map<std::string, std::string> const& texts)
{
    Json::Value object(Json::objectValue);
    for (auto const& [name, value] : texts)
        object[name] = value;
    return object;
}

void Call::WriteDown(Json::Value const& line)
{
    static std::mutex mutex;
    std::lock_guard<std::mutex> const lock(mutex);
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    // Opened anew each time: what was written survives whatever comes next.
    std::ofstream(fs::u8path(Variable("HXSSO_PLUGIN_RECORD")), std::ios::binary | std::ios::app)
        << Json::writeString(builder, line) << '\n';
}

bool Call::IsQuiet()
{
    static bool const quiet = !Variable("HXSSO_PLUGIN_QUIET").empty();
    return quiet;
}

void Call::Act(char const* operation)
{
    usualText = operation;
    if (IsQuiet()) {
        action = ActionFor(ScriptOfQuietPlugin(), operation);
        if (action.isNull())
            return;
    } else {
        Json::Value const script = ParseScript();
        bool const holdsNoLock = IsReachedByPublicCalls(operation);
        action = ActionFor(script, holdsNoLock && !script.isMember(operation) ? "*" : operation);
        if (holdsNoLock)
            JoinThreadsBehindTheLock();
    }
    if (action.isMember("wait"))
        WaitFor(fs::u8path(action["wait"].asString()));
    if (action["callBack"].asBool())
        CallBack();
    if (action["askForPaths"].asBool())
        AskForPaths();
    if (action["probe"].isInt()) {
        Json::Value line(Json::arrayValue);
        line.append("LockIsFree");
        line.append(operation);
        line.append(LockIsFree(std::chrono::seconds(action["probe"].asInt())));
        WriteDown(line);
    }
    if (action["throw"].isInt())
        throw action["throw"].asInt();
    if (action["throw"].isString())
        throw std::runtime_error(action["throw"].asString());
}

} // namespace Rig
