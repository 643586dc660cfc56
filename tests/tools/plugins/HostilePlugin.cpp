// A plugin that does what HXSSO_HOSTILE says, where that says it: "load: exit" as the
// system loads it, "factory: abort" when it is asked.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <string>

#ifdef _WIN32
#include <io.h>
#else
#include <csignal>
#include <unistd.h>
#endif

#include <plugin/ISSOClientFactory.h>

namespace {

long Write(int descriptor, char const* text, unsigned size)
{
#ifdef _WIN32
    return _write(descriptor, text, size);
#else
    return ::write(descriptor, text, size);
#endif
}

// More than a pipe holds. At once: Wine takes a millisecond for each line.
void Print()
{
    std::string answers;
    std::string ends;
    for (int i = 0; i < 2000; ++i) {
        answers +=
            "{\"check\": \"load\", \"result\": \"ok\", \"detail\": \"all is well\"}\x1b[2J\n";
        ends += "{\"end\": true}\n";
    }
    std::fwrite(answers.data(), 1, answers.size(), stdout);
    std::fflush(stdout);
    std::fwrite(ends.data(), 1, ends.size(), stderr);
}

// In place of the program that loads it, wherever that one writes.
void Forge()
{
    constexpr char const text[] =
        "{\"check\":\"load\",\"result\":\"ok\",\"detail\":\"all is well\"}\n"
        "{\"check\":\"interfaces\",\"result\":\"ok\",\"detail\":\"ISSOClient\"}\n"
        "{\"worked\":true}\n{\"end\":true}\n";
    for (int descriptor = 3; descriptor < 256; ++descriptor)
        Write(descriptor, text, sizeof(text) - 1);
    std::abort();
}

#ifndef _WIN32
void ActAsProcess(std::string const& deed)
{
    if (deed == "kill parent") {
        ::kill(::getppid(), SIGKILL);
        ::sleep(1);
    }
    // The copy goes on in place of the process that was started.
    if (deed == "fork" && ::fork() > 0)
        ::_exit(0);
    if (deed == "copy")
        ::fork();
    // One that leaves the session and lives on.
    bool const isOrphan = deed.rfind("orphan ", 0) == 0;
    if ((isOrphan || deed.rfind("leave ", 0) == 0) && ::fork() == 0) {
        ::setsid();
        if (::fork() == 0) {
            ::sleep(3);
            std::fclose(std::fopen(deed.substr(deed.find(' ') + 1).c_str(), "w"));
        }
        ::_exit(0);
    }
    if (isOrphan) {
        ::kill(::getppid(), SIGKILL);
        ::sleep(1);
    }
}
#endif

void Act(std::string const& where)
{
    char const* const wanted = std::getenv("HXSSO_HOSTILE");
    std::string const what = wanted == nullptr ? "" : wanted;
    if (what.rfind(where + ": ", 0) != 0)
        return;
    std::string const deed = what.substr(where.size() + 2);
    if (deed == "exit")
        std::exit(0);
    if (deed == "quick exit")
        std::_Exit(0);
    if (deed == "abort")
        std::abort();
    if (deed == "null")
        *static_cast<int volatile*>(nullptr) = 1;
    if (deed == "loop")
        for (bool volatile forever = true; forever;)
            continue;
    if (deed == "print")
        Print();
    if (deed == "print and exit") {
        Print();
        std::exit(0);
    }
    if (deed == "forge and abort")
        Forge();
#ifdef _WIN32
    // Of the process that started this one, if it was handed on.
    if (deed.rfind("write to handle ", 0) == 0) {
        int const descriptor = _open_osfhandle(std::stoll(deed.substr(16)), 0);
        std::_Exit(descriptor >= 0 && Write(descriptor, "x", 1) == 1 ? 42 : 43);
    }
#else
    ActAsProcess(deed);
#endif
    // A file, to be seen whether the module was loaded at all.
    if (deed.rfind("write ", 0) == 0)
        std::fclose(std::fopen(deed.substr(6).c_str(), "w"));
}

struct AtLoad {
    AtLoad() { Act("load"); }
} const atLoad;

} // namespace

std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> GetSSOClientFactory()
{
    Act("factory");
    return nullptr;
}
