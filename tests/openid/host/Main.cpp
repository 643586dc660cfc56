// A host that does what it is told: a command on each line of its standard input, a line of JSON
// with the answer for each. For the tests of the open plugin, which know nothing else of it.
//
// Beside the library's operations there are:
//   begin COMMAND   starts a command on a thread of its own
//   await           the answer of the oldest that was started
//   leave           ends the process at once, whatever is under way

#include <cstdlib>
#include <deque>
#include <exception>
#include <future>
#include <iostream>
#include <memory>
#include <thread>

#include <boost/locale/encoding_utf.hpp>
#include <json/writer.h>

#include "openid/host/Commands.h"

std::string Arguments::Word()
{
    std::size_t const end = line.find(' ');
    std::string word = line.substr(0, end);
    line.erase(0, end == std::string::npos ? end : end + 1);
    return word;
}

int Arguments::Number() { return std::atoi(Word().c_str()); }

std::string Arguments::Rest()
{
    std::string rest;
    rest.swap(line);
    return rest;
}

std::wstring Arguments::WideRest() { return Wide(Rest()); }

std::string Utf8(std::wstring const& text) { return boost::locale::conv::utf_to_utf<char>(text); }

std::string Utf8(wchar_t const* text) { return Utf8(std::wstring(text)); }

std::wstring Wide(std::string const& text)
{
    return boost::locale::conv::utf_to_utf<wchar_t>(text);
}

Json::Value Taken(wchar_t* text)
{
    std::unique_ptr<wchar_t[]> const owned(text);
    return owned == nullptr ? Json::Value() : Json::Value(Utf8(owned.get()));
}

namespace {

class Host {
public:
    Host()
    {
        AddManager(commands);
        AddLogin(commands);
        AddTokens(commands);
        AddUI(commands);
        AddPrivate(commands);
        AddServer(commands);
    }

    Json::Value Answer(std::string const& line)
    {
        Arguments arguments(line);
        std::string const name = arguments.Word();
        if (name == "begin")
            return Begin(arguments.Rest());
        if (name == "await")
            return Await();
        if (name == "commands")
            return Names();
        return Run(name, arguments);
    }

private:
    Json::Value Run(std::string const& name, Arguments& arguments) const
    {
        Json::Value answer;
        auto const command = commands.find(name);
        try {
            if (command == commands.end())
                answer["unknown"] = name;
            else
                answer["answer"] = command->second(arguments);
        } catch (std::exception const& exception) {
            answer["exception"] = exception.what();
        }
        return answer;
    }

    struct Started {
        std::future<Json::Value> answer;
        std::thread thread;
    };

    // Not std::async, whose future would wait when the process ends. Not detached either: MinGW's
    // threads fail where one ends in the moment in which it is detached and others are started.
    Json::Value Begin(std::string const& line)
    {
        std::promise<Json::Value> promise;
        auto future = promise.get_future();
        std::thread thread([this, line, promise = std::move(promise)]() mutable {
            Arguments arguments(line);
            std::string const name = arguments.Word();
            promise.set_value(Run(name, arguments));
        });
        started.push_back({std::move(future), std::move(thread)});
        Json::Value answer;
        answer["answer"] = true;
        return answer;
    }

    Json::Value Await()
    {
        if (started.empty())
            return "nothing was begun";
        Json::Value answer = started.front().answer.get();
        started.front().thread.join();
        started.pop_front();
        return answer;
    }

    Json::Value Names() const
    {
        Json::Value answer;
        for (auto const& [name, command] : commands)
            answer["answer"].append(name);
        return answer;
    }

    Commands commands;
    std::deque<Started> started;
};

} // namespace

int main()
{
    Json::StreamWriterBuilder writer;
    writer["indentation"] = "";
    // Never destroyed: threads may still be in it when the process ends.
    static auto& host = *new Host;
    for (std::string line; std::getline(std::cin, line);) {
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (line == "leave")
            break;
        std::cout << Json::writeString(writer, host.Answer(line)) << std::endl;
    }
    return 0;
}
