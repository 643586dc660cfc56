#include "common/ChildProcess.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <vector>

#include "common/Utf8.h"
#include "platform/Platform.h"
#include "platform/windows/Windows.h"

namespace Halvorix::Tools {

namespace {

using Clock = std::chrono::steady_clock;

class Handle {
public:
    Handle() = default;
    explicit Handle(HANDLE openHandle) : handle(openHandle) {}
    ~Handle() { Close(); }
    Handle(Handle const&) = delete;
    Handle& operator=(Handle const&) = delete;

    HANDLE Get() const { return handle; }
    HANDLE* Address() { return &handle; }
    void Close()
    {
        if (handle != nullptr && handle != INVALID_HANDLE_VALUE)
            ::CloseHandle(handle);
        handle = nullptr;
    }

private:
    HANDLE handle = nullptr;
};

std::string SystemReason(DWORD error)
{
    std::string text = Utf8(Platform::ErrorText(error));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r'))
        text.pop_back();
    return text.empty() ? "error " + std::to_string(error) : text;
}

std::string Told(DWORD status)
{
    switch (status) {
    case 3: // of the C runtime
        return "aborts the process, or ends it with exit status 3";
    case 0xC0000005:
        return "crashes the process: access violation";
    case 0xC0000017:
        return "crashes the process: no memory";
    case 0xC00000FD:
        return "crashes the process: stack overflow";
    case 0xC0000135:
        return "cannot be started: a module that it needs is missing";
    case 0xC0000139:
        return "cannot be started: a module that it needs lacks a function";
    case 0xC0000374:
        return "crashes the process: damaged heap";
    case 0xC0000409:
        return "crashes the process: fail-fast exception";
    default:
        break;
    }
    if (status < 0xC0000000)
        return "ends the process with exit status " + std::to_string(status);
    char text[64];
    std::snprintf(text, sizeof(text), "crashes the process: exception 0x%08lX", status);
    return text;
}

// Nothing else that this process has open, whoever left it to be inherited.
class InheritedHandles {
public:
    explicit InheritedHandles(std::vector<HANDLE> const& handles) : inherited(handles)
    {
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        room.resize(size);
        isWhole = ::InitializeProcThreadAttributeList(List(), 1, 0, &size) != FALSE &&
                  ::UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST,
                                              inherited.data(), inherited.size() * sizeof(HANDLE),
                                              nullptr, nullptr) != FALSE;
    }
    InheritedHandles(InheritedHandles const&) = delete;
    InheritedHandles& operator=(InheritedHandles const&) = delete;

    LPPROC_THREAD_ATTRIBUTE_LIST List()
    {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(room.data());
    }
    bool isWhole = false;

private:
    std::vector<HANDLE> inherited; // the list refers to them
    std::vector<char> room;
};

void ReadWhatIsThere(HANDLE pipe, std::string& output)
{
    std::vector<char> part(65536);
    DWORD there = 0;
    while (output.size() <= MostChildOutput &&
           ::PeekNamedPipe(pipe, nullptr, 0, nullptr, &there, nullptr) != FALSE && there > 0) {
        DWORD got = 0;
        if (::ReadFile(pipe, part.data(), static_cast<DWORD>(part.size()), &got, nullptr) == FALSE)
            break;
        output.append(part.data(), got);
    }
}

// With whatever a process starts, ended when it is closed. Null, which no process can be put
// into, if the system refuses that.
HANDLE MakeJob()
{
    HANDLE const job = ::CreateJobObjectW(nullptr, nullptr);
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    if (::SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits,
                                  sizeof(limits)) != FALSE)
        return job;
    ::CloseHandle(job);
    return nullptr;
}

} // namespace

ChildRun RunChild(std::filesystem::path const& program, std::string const& input,
                  std::chrono::seconds limit)
{
    ChildRun run;
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    Handle output;
    Handle childOutput;
    Handle request;
    Handle childRequest;
    if (::CreatePipe(output.Address(), childOutput.Address(), &inherited, 1U << 16U) == FALSE ||
        ::CreatePipe(childRequest.Address(), request.Address(), &inherited,
                     static_cast<DWORD>(input.size())) == FALSE) {
        run.end = SystemReason(::GetLastError());
        return run;
    }
    ::SetHandleInformation(output.Get(), HANDLE_FLAG_INHERIT, 0);
    ::SetHandleInformation(request.Get(), HANDLE_FLAG_INHERIT, 0);
    Handle const nothing(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                                       OPEN_EXISTING, 0, nullptr));
    STARTUPINFOEXW startup{};
    STARTUPINFOW& streams = startup.StartupInfo;
    streams.cb = sizeof(startup);
    streams.dwFlags = STARTF_USESTDHANDLES;
    streams.hStdInput = childRequest.Get();
    streams.hStdOutput = childOutput.Get();
    streams.hStdError = nothing.Get();
    InheritedHandles handles({childRequest.Get(), childOutput.Get(), nothing.Get()});
    startup.lpAttributeList = handles.List();
    PROCESS_INFORMATION started{};
    Handle const job(MakeJob());
    std::wstring command = L"\"" + program.native() + L"\"";
    if (!handles.isWhole ||
        ::CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE,
                         CREATE_SUSPENDED | CREATE_NO_WINDOW | EXTENDED_STARTUPINFO_PRESENT,
                         nullptr, nullptr, &streams, &started) == FALSE) {
        run.end = SystemReason(::GetLastError());
        return run;
    }
    Handle const process(started.hProcess);
    Handle const thread(started.hThread);
    // Without it what the child starts would outlive this call.
    if (::AssignProcessToJobObject(job.Get(), process.Get()) == FALSE) {
        run.end = "it cannot be put into a job: " + SystemReason(::GetLastError());
        ::TerminateProcess(process.Get(), 1);
        return run;
    }
    ::ResumeThread(thread.Get());
    run.isStarted = true;
    childOutput.Close();
    childRequest.Close();
    // The child reads all of it before it does anything; one that has ended fails this.
    DWORD written = 0;
    ::WriteFile(request.Get(), input.data(), static_cast<DWORD>(input.size()), &written, nullptr);
    request.Close();
    Clock::time_point const deadline = Clock::now() + limit;
    while (run.end.empty()) {
        bool const hasEnded = ::WaitForSingleObject(process.Get(), 10) == WAIT_OBJECT_0;
        ReadWhatIsThere(output.Get(), run.output);
        DWORD status = 0;
        if (run.output.size() > MostChildOutput) {
            run.end = "writes without end";
        } else if (hasEnded && ::GetExitCodeProcess(process.Get(), &status) != FALSE) {
            run.end = Told(status);
            run.isGood = status == 0;
        } else if (Clock::now() > deadline)
            run.end = "does not come back within " + std::to_string(limit.count()) + " s";
        if (!hasEnded && !run.end.empty())
            ::TerminateProcess(process.Get(), 1);
    }
    return run;
}

int TakeStandardOutput()
{
    int const descriptor = ::_dup(1);
    ::SetHandleInformation(reinterpret_cast<HANDLE>(::_get_osfhandle(descriptor)),
                           HANDLE_FLAG_INHERIT, 0);
    int const nothing = ::_wopen(L"NUL", _O_RDWR);
    for (int const stream : {0, 1, 2})
        ::_dup2(nothing, stream);
    // Of those who ask the system and not the C runtime.
    ::SetStdHandle(STD_INPUT_HANDLE, reinterpret_cast<HANDLE>(::_get_osfhandle(0)));
    ::SetStdHandle(STD_OUTPUT_HANDLE, reinterpret_cast<HANDLE>(::_get_osfhandle(1)));
    ::SetStdHandle(STD_ERROR_HANDLE, reinterpret_cast<HANDLE>(::_get_osfhandle(2)));
    ::SetErrorMode(::GetErrorMode() | SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX |
                   SEM_NOOPENFILEERRORBOX);
    return descriptor;
}

void WriteAll(int descriptor, std::string const& text)
{
    for (std::size_t done = 0; done < text.size();) {
        int const part =
            ::_write(descriptor, text.data() + done, static_cast<unsigned>(text.size() - done));
        if (part <= 0)
            return;
        done += static_cast<std::size_t>(part);
    }
}

void EndProcess()
{
    ::TerminateProcess(::GetCurrentProcess(), 0);
    ::abort();
}

} // namespace Halvorix::Tools
