// The plugin as a whole.

#include "Interfaces.h"
#include "State.h"
#include "Texts.h"

namespace Sample {

namespace {

class ClientModule : public OnSession<ISSOClientModule> {
public:
    using OnSession::OnSession;

    void Initialize(char const* specJson) override
    {
        Json::Value const spec = ReadSpec(specJson);
        if (!spec.isNull())
            Lock()->spec = spec;
    }
    void Initialize(bool, bool) override {}
    // The user stays signed in, as with a server process that goes on.
    void Uninitialize() override { Lock()->events.clear(); }

    void InitializeUI(char const* specJson) override { Initialize(specJson); }
    void InitializeUI(bool, bool) override {}
    void UninitializeUI() override { Lock()->hostWindow = 0; }

    void SetOpenSslModule(wchar_t const* path) override { Lock()->openSslModule = Given(path); }
    std::shared_ptr<IRsaCryptor> GetRsaCryptor() override { return Lock()->cryptor; }
    void SetRsaCryptor(std::shared_ptr<IRsaCryptor> cryptor) override
    {
        // The one before is released after the lock: its end is the host's code.
        Lock()->cryptor.swap(cryptor);
    }

    int GetSupportFileSearchPaths(wchar_t* to, int size) override
    {
        return CopyText(Lock()->searchPaths, to, size);
    }
    void SetSupportFileSearchPaths(wchar_t const* paths) override
    {
        Lock()->searchPaths = Given(paths);
    }
    int GetProductName(wchar_t* to, int size) override
    {
        return CopyText(Lock()->productName, to, size);
    }
    void SetProductName(wchar_t const* name) override { Lock()->productName = Given(name); }
};

} // namespace

std::shared_ptr<ISSOClientModule> MakeClientModule(std::shared_ptr<Session> session)
{
    return std::make_shared<ClientModule>(std::move(session));
}

} // namespace Sample
