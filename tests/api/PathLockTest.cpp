// Which questions for paths hold the library's lock: two, and no other.

#include <chrono>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include <SSOClientPrivate.h>
#include <plugin/ILogger.h>
#include "host/SSOClientManager.h"
#include "support/LogSink.h"
#include "support/SSOClientManagerMutex.h"

using namespace Halvorix;
using namespace Halvorix::SSOServices;
using testing::Each;

namespace {

struct Question {
    char const* name;
    void (*ask)();
    bool holdsTheLock;
};

void PrintTo(Question const& question, std::ostream* out) { *out << question.name; }

template <wchar_t const* Text>
void Expand()
{
    std::wstring path = Text;
    SSOClientPrivate::ExpandPathVariables(path);
}

constexpr wchar_t ofTheServer[] = L"%SSOServerAppPath%";
constexpr wchar_t ofTheExecutable[] = L"%ExePath%";

template <std::wstring (*Function)()>
void Ask()
{
    Function();
}

/// They log, in a library that knows nothing yet.
std::vector<Question> QuestionsThatSearch()
{
    using Class = SSOClientPrivate;
    return {
        {"ExpandPathVariables", Expand<ofTheServer>, true},
        {"GetSSOServerAppPath", Ask<Class::GetSSOServerAppPath>, false},
        {"GetSSOServerAppExeDirPath", Ask<Class::GetSSOServerAppExeDirPath>, false},
        {"GetSSOClientPluginModule", Ask<Class::GetSSOClientPluginModule>, false},
        {"GetOpenSslModule", Ask<Class::GetOpenSslModule>, false},
        {"GetSSOClientConfigFile", Ask<Class::GetSSOClientConfigFile>, false},
        {"SetSSOClientConfigFileOverride",
         [] { SSOClientPrivate::SetSSOClientConfigFileOverride(L"x"); }, false},
    };
}

std::vector<Question> QuestionsThatLogNothing()
{
    using Class = SSOClientPrivate;
    return {
        {"ExpandPathVariables", Expand<ofTheExecutable>, true},
        {"GetModuleDirPath", [] { SSOClientPrivate::GetModuleDirPath(L"none"); }, true},
        {"GetSSOClientConfigFileOverride", Ask<Class::GetSSOClientConfigFileOverride>, false},
        {"GetLogFile", Ask<Class::GetLogFile>, false},
    };
}

/// The log holds the lock once itself, for as long as a line is written: whether
/// somebody holds it besides shows while that one hold is let go.
class ProbingLogger : public ILogger {
public:
    void WriteLine(wchar_t const*, Log::LogLevel) override
    {
        SSOClientManagerMutex.unlock();
        heldBesides.push_back(!IsFree());
        SSOClientManagerMutex.lock();
    }

    std::vector<bool> heldBesides; // at each line

private:
    static bool IsFree()
    {
        return std::async(std::launch::async,
                          [] {
                              bool const isFree = SSOClientManagerMutex.try_lock();
                              if (isFree)
                                  SSOClientManagerMutex.unlock();
                              return isFree;
                          })
            .get();
    }
};

class PathLock : public testing::TestWithParam<Question> {
protected:
    PathLock()
    {
        SSOClientManager::ReleaseInstance();
        SSOClientManager::GetInstance(); // whose creation takes the lock
    }
    ~PathLock() override
    {
        InstallLogger(nullptr);
        TakeEarlyLog();
        SSOClientManager::ReleaseInstance();
    }
};

class PathLockOfASearch : public PathLock {};
class PathLockOfASilentAnswer : public PathLock {};

std::string NameOf(testing::TestParamInfo<Question> const& info) { return info.param.name; }

} // namespace

TEST_P(PathLockOfASearch, IsHeldFromBeginningToEndOrNever)
{
    auto const logger = std::make_shared<ProbingLogger>();
    InstallLogger(logger);
    GetParam().ask();
    EXPECT_FALSE(logger->heldBesides.empty());
    EXPECT_THAT(logger->heldBesides, Each(GetParam().holdsTheLock));
}

INSTANTIATE_TEST_SUITE_P(SSOClientPrivate, PathLockOfASearch,
                         testing::ValuesIn(QuestionsThatSearch()), NameOf);

// Seen from the other side: whether it is waited for.
TEST_P(PathLockOfASilentAnswer, IsWaitedForOrNot)
{
    std::unique_lock<std::recursive_mutex> lock(SSOClientManagerMutex);
    std::future<void> const asked = std::async(std::launch::async, GetParam().ask);
    auto const patience = std::chrono::milliseconds(GetParam().holdsTheLock ? 200 : 20000);
    EXPECT_EQ(asked.wait_for(patience),
              GetParam().holdsTheLock ? std::future_status::timeout : std::future_status::ready);
    lock.unlock();
    asked.wait();
}

INSTANTIATE_TEST_SUITE_P(SSOClientPrivate, PathLockOfASilentAnswer,
                         testing::ValuesIn(QuestionsThatLogNothing()), NameOf);
