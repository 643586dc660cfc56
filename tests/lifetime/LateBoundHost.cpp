// A host that is not linked with the library: it takes it into the process and
// lets it go again. Started by the rig as any other host.

#include <filesystem>
#include <iostream>
#include <locale>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <plugin/IRsaCryptor.h>
#include "framework/HostProgram.h"
#include "framework/LateBinding.h"
#include "framework/Variable.h"

using Halvorix::WebServices::IRsaCryptor;

namespace {

/// The library, as far as these programs use it.
class Library {
public:
    explicit Library(std::string const& libraryFile)
        : file(libraryFile), module(Rig::BindModule(libraryFile))
    {
    }

    bool IsBound() const { return module != nullptr; }
    bool IsLoaded() const { return Rig::IsModuleLoaded(file); }
    void Unbind() { Rig::UnbindModule(module); }

    bool InitializeUI() const
    {
        return Call<bool>("_ZN8Halvorix13WebServicesUI20WebServicesUIManager10InitializeEv");
    }
    bool IsUIInitialized() const
    {
        return Call<bool>("_ZN8Halvorix13WebServicesUI20WebServicesUIManager13IsInitializedEv");
    }
    bool UninitializeUI() const
    {
        return Call<bool>("_ZN8Halvorix13WebServicesUI20WebServicesUIManager12UninitializeEv");
    }
    bool IsServerReady() const
    {
        return Call<bool>("_ZN8Halvorix11SSOServices16SSOServerManager23IsSSOServerProcessReadyEv");
    }
    std::shared_ptr<IRsaCryptor> GetRsaCryptor() const
    {
        return Call<std::shared_ptr<IRsaCryptor>>(
            "_ZN8Halvorix11SSOServices18SSOServicesManager13GetRsaCryptorEv");
    }
    /// Into something that is no cookie: what cannot be read is not written there.
    bool ReadsAsACookie(char const* text) const
    {
        constexpr char const* name = "_ZN18SSOServicesPrivate19JsonToNetworkCookieEPKcRN8Halvorix11"
                                     "WebServices13NetworkCookieE";
        void* nothing = nullptr;
        return reinterpret_cast<bool (*)(char const*, void*)>(Rig::FindBound(module, name))(
            text, &nothing);
    }

private:
    template <class Answer>
    Answer Call(char const* name) const
    {
        return reinterpret_cast<Answer (*)()>(Rig::FindBound(module, name))();
    }

    std::string file;
    void* module;
};

/// What a program does all the time with the locale that the library has set.
std::string UseTheLocale()
{
    std::ostringstream narrow;
    narrow << 12 << ' ' << std::boolalpha << true;
    std::wostringstream wide;
    wide << 34;
    std::locale const copy(std::locale(), std::locale::classic(), std::locale::numeric);
    bool const isUpper = std::isupper(L'A', std::locale());
    bool const collates =
        std::use_facet<std::collate<wchar_t>>(std::locale()).hash(L"a", L"a" + 1) != 0;
    return narrow.str() + (wide.str() == L"34" && isUpper && collates ? " good" : " bad");
}

HOST_PROGRAM(BindsWithoutUse)
{
    for (int i = 0; i < 20; ++i) {
        Library library(arguments[0]);
        if (!library.IsBound())
            return report("bound", false);
        library.Unbind();
        if (library.IsLoaded())
            return report("gone", false);
    }
    report("gone", true);
    report("locale", UseTheLocale());
}

HOST_PROGRAM(UnbindsAfterUse)
{
    Library library(arguments[0]);
    report("ready", library.IsServerReady());
    library.Unbind();
    report("locale", UseTheLocale());
    Library const again(arguments[0]);
    report("readyAgain", again.IsServerReady());
}

HOST_PROGRAM(BindsTwoCopies)
{
    Library const first(arguments[0]);
    Library const second(arguments[1]);
    report("bound", first.IsBound() && second.IsBound());
    report("initialized", first.InitializeUI());
    report("initializedOfFirst", first.IsUIInitialized());
    report("initializedOfSecond", second.IsUIInitialized());
    report("readyOfSecond", second.IsServerReady());
    report("uninitialized", first.UninitializeUI());
    report("readyOfSecondAgain", second.IsServerReady());
    report("readyOfFirstAgain", first.IsServerReady());
    report("locale", UseTheLocale());
}

HOST_PROGRAM(BindsByARelativeNameAndMoves)
{
    Library const library(arguments[0]);
    std::filesystem::current_path(std::filesystem::u8path(arguments[1]));
    report("ready", library.IsServerReady());
}

HOST_PROGRAM(UnbindsAfterADocument)
{
    Library library(arguments[0]);
    report("read", library.ReadsAsACookie("no JSON"));
    library.Unbind();
    report("gone", !library.IsLoaded());
    report("locale", UseTheLocale());
}

HOST_PROGRAM(UnbindsAfterItsLife)
{
    Library library(arguments[0]);
    library.InitializeUI();
    report("ready", library.IsServerReady());
    library.UninitializeUI();
    library.Unbind();
    report("locale", UseTheLocale());
}

HOST_PROGRAM(HoldsAnObjectOverTheUnbinding)
{
    Library library(arguments[0]);
    static std::shared_ptr<IRsaCryptor> held;
    held = library.GetRsaCryptor();
    library.Unbind();
    report("size", held == nullptr ? 0 : held->GetMaxBlockSize());
}

/// Its destructor runs behind those of a library that came later.
class CallsAtTheEnd {
public:
    CallsAtTheEnd() = default;
    ~CallsAtTheEnd()
    {
        Rig::Report report(Rig::Variable("HXSSO_REPORT"));
        report("readyAtTheEnd", library->IsServerReady());
        report("initializedAtTheEnd", library->InitializeUI());
        report("uninitializedAtTheEnd", library->UninitializeUI());
        report("readyAfterAll", library->IsServerReady());
        report("localeAtTheEnd", UseTheLocale());
    }
    CallsAtTheEnd(CallsAtTheEnd const&) = delete;
    CallsAtTheEnd& operator=(CallsAtTheEnd const&) = delete;

    Library const* library = nullptr;
};

CallsAtTheEnd& AtTheEnd()
{
    static CallsAtTheEnd atTheEnd;
    return atTheEnd;
}

HOST_PROGRAM(CallsBehindTheEnd)
{
    CallsAtTheEnd& atTheEnd = AtTheEnd();
    atTheEnd.library = new Library(arguments[0]); // to the very end
    report("ready", atTheEnd.library->IsServerReady());
}

HOST_PROGRAM(CallsFirstBehindTheEnd)
{
    CallsAtTheEnd& atTheEnd = AtTheEnd(); // before the library
    atTheEnd.library = new Library(arguments[0]);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3 || argv[1] != std::string("--host-program")) {
        std::cerr << "to be started by the rig\n";
        return 2;
    }
    return Rig::RunHostProgram(argv[2], std::vector<std::string>(argv + 3, argv + argc));
}
