#include "openid/session/TokenStore.h"

#include <map>
#include <mutex>
#include <utility>

#include "openid/platform/Crypto.h"
#include "openid/protocol/Texts.h"
#include "openid/session/LoginDocument.h"
#include "openid/session/StoreLocks.h"

namespace Halvorix::OpenId {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t LargestLogin = 4 << 20;
/// For a damaged file, which nobody else may be about to replace.
constexpr std::chrono::milliseconds LimitForDamage{200};

Failure Local(std::string reason, std::string remedy)
{
    Failure failure;
    failure.kind = Failure::Kind::Local;
    failure.reason = std::move(reason);
    failure.remedy = std::move(remedy);
    return failure;
}

/// The login, or what is wrong with its file.
struct Look {
    FileContent::State state = FileContent::State::Missing;
    StoredLogin login;
    std::string reason;
    std::string remedy; ///< Of what failed.
};

Look LookAt(fs::path const& file, std::string const& issuer, std::string const& clientId)
{
    Look look;
    FileContent content = ReadPrivateFile(file, LargestLogin);
    Secret const bytes(std::move(content.bytes));
    look.state = content.state;
    look.reason = content.reason;
    look.remedy = "see that the disk works and the process has handles left";
    if (look.state != FileContent::State::Read)
        return look;
    Outcome<StoredLogin> read = ReadLogin(*bytes);
    if (read && read->issuer == issuer && read->clientId == clientId) {
        look.login = std::move(*read);
        return look;
    }
    bool const mayBeGood = !read && !read.Why().remedy.empty();
    look.state = mayBeGood ? FileContent::State::Failed : FileContent::State::Refused;
    look.reason = read ? "it is of another provider or client" : read.Why().reason;
    if (mayBeGood)
        look.remedy = read.Why().remedy;
    return look;
}

/// An error that may be gone the next time: it does not say that nobody is signed in.
Failure CannotBeRead(fs::path const& file, Look const& look)
{
    return Local(PathText(file) + " cannot be read for now: " + look.reason, look.remedy);
}

constexpr char const* SetAsideEnding = ".damaged-";

std::vector<fs::path> FilesSetAside(fs::path const& file)
{
    std::string const start = PathText(file.filename()) + SetAsideEnding;
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator entry(file.parent_path(), error), end; !error && entry != end;
         entry.increment(error))
        if (PathText(entry->path().filename()).compare(0, start.size(), start) == 0 &&
            !fs::is_directory(entry->symlink_status(error)))
            files.push_back(entry->path());
    return files;
}

fs::path FreeName(fs::path const& file)
{
    for (int number = 1;; ++number) {
        fs::path name = fs::path(file) += SetAsideEnding + std::to_string(number);
        std::error_code error;
        if (!fs::exists(fs::symlink_status(name, error)))
            return name;
    }
}

} // namespace

struct TokenStore::State {
    struct Copy {
        std::string stamp; ///< Of the file, before it was read.
        std::optional<StoredLogin> login;
    };

    StoreLocks locks;
    std::mutex mutex;
    std::map<fs::path, Copy> copies;

    /// A copy that is still good.
    bool Find(fs::path const& file, std::string const& stamp, std::optional<StoredLogin>& login)
    {
        std::lock_guard<std::mutex> const guard(mutex);
        auto const copy = copies.find(file);
        if (copy == copies.end() || copy->second.stamp != stamp)
            return false;
        login = copy->second.login;
        return true;
    }

    /// A copy, whether it is still good or not.
    bool FindLast(fs::path const& file, std::optional<StoredLogin>& login)
    {
        std::lock_guard<std::mutex> const guard(mutex);
        auto const copy = copies.find(file);
        if (copy == copies.end())
            return false;
        login = copy->second.login;
        return true;
    }

    void Keep(fs::path const& file, std::string const& stamp,
              std::optional<StoredLogin> const& login)
    {
        std::lock_guard<std::mutex> const guard(mutex);
        copies[file] = {stamp, login};
    }

    void Forget(fs::path const& file)
    {
        std::lock_guard<std::mutex> const guard(mutex);
        copies.erase(file);
    }

    Outcome<std::optional<StoredLogin>> ReadAnew(fs::path const& file, std::string const& stamp,
                                                 std::string const& issuer,
                                                 std::string const& clientId);
    Outcome<std::optional<StoredLogin>> SetAside(fs::path const& file, std::string const& issuer,
                                                 std::string const& clientId);
};

namespace {

/// Holds the store's state, too, which may be gone before it otherwise.
class HeldLock : public TokenStore::Lock {
public:
    HeldLock(std::shared_ptr<void> state, std::unique_ptr<StoreLocks::Turn> turn)
        : state(std::move(state)), turn(std::move(turn))
    {
    }

private:
    std::shared_ptr<void> const state;
    std::unique_ptr<StoreLocks::Turn> const turn;
};

} // namespace

TokenStore::TokenStore(fs::path folder)
    : folder(std::move(folder)), state(std::make_shared<State>())
{
}

fs::path TokenStore::FileOf(std::string const& issuer, std::string const& clientId) const
{
    // Half of the hash is enough to keep logins apart, and paths stay short.
    std::string const hash = Sha2(256, issuer + '\n' + clientId).substr(0, 16);
    return folder / ("login-" + ToBase64Url(hash) + ".dat");
}

Outcome<std::optional<StoredLogin>> TokenStore::Read(std::string const& issuer,
                                                     std::string const& clientId)
{
    fs::path const file = FileOf(issuer, clientId);
    // Without a stamp the file is missing, or cannot be looked at for now: reading it tells.
    std::string const stamp = FileStamp(file);
    std::optional<StoredLogin> login;
    if (!stamp.empty() && !state->locks.IsMine(file) && state->Find(file, stamp, login))
        return login;
    return state->ReadAnew(file, stamp, issuer, clientId);
}

Outcome<std::optional<StoredLogin>> TokenStore::State::ReadAnew(fs::path const& file,
                                                                std::string const& stamp,
                                                                std::string const& issuer,
                                                                std::string const& clientId)
{
    Look look = LookAt(file, issuer, clientId);
    std::optional<StoredLogin> login;
    switch (look.state) {
    case FileContent::State::Read:
        login = std::move(look.login);
        Keep(file, stamp, login);
        return login;
    case FileContent::State::Missing:
        Forget(file);
        return login;
    case FileContent::State::Failed:
        // What was known is better than to sign somebody out for a moment; but under the lock
        // nothing is decided by it.
        if (!locks.IsMine(file) && FindLast(file, login))
            return login;
        return CannotBeRead(file, look);
    case FileContent::State::Refused:
        break;
    }
    std::string reason;
    std::unique_ptr<StoreLocks::Turn> turn;
    if (!locks.IsMine(file) && !(turn = locks.Take(file, LimitForDamage, reason)))
        return Local(PathText(file) + " cannot be used: " + look.reason,
                     "try again when no other program uses it");
    return SetAside(file, issuer, clientId);
}

/// Under the lock, and after another look: what was damaged a moment ago may be replaced by now.
Outcome<std::optional<StoredLogin>> TokenStore::State::SetAside(fs::path const& file,
                                                                std::string const& issuer,
                                                                std::string const& clientId)
{
    std::string const stamp = FileStamp(file);
    Look look = LookAt(file, issuer, clientId);
    if (look.state == FileContent::State::Read)
        return std::optional<StoredLogin>(std::move(look.login));
    if (look.state == FileContent::State::Failed)
        return CannotBeRead(file, look);
    if (look.state == FileContent::State::Missing)
        return std::optional<StoredLogin>();
    fs::path const aside = FreeName(file);
    if (!RenameFile(file, aside)) {
        Keep(file, stamp, std::nullopt); // so that it is told once
        return Local(PathText(file) + " cannot be used, nor set aside: " + look.reason,
                     "remove it, then sign in again");
    }
    Forget(file);
    return Local(PathText(file) + " cannot be used and was set aside as " +
                     PathText(aside.filename()) + ": " + look.reason,
                 "sign in again");
}

Outcome<bool> TokenStore::Write(StoredLogin const& login)
{
    fs::path const file = FileOf(login.issuer, login.clientId);
    Outcome<Secret> const bytes = WriteLogin(login);
    if (!bytes)
        return Local("The login cannot be protected: " + bytes.Why().reason,
                     "see that this user's profile is loaded");
    // It would be taken for damaged.
    if ((*bytes)->size() > LargestLogin)
        return Local("The login is larger than " + std::to_string(LargestLogin) + " bytes",
                     "ask the provider's administrator for smaller tokens or fewer claims");
    std::string reason;
    if (!PreparePrivateFolder(folder, reason) || !ReplacePrivateFile(file, **bytes, reason))
        return Local(PathText(file) + " cannot be written: " + reason,
                     "make room on the disk, and let this user write there");
    state->Forget(file);
    return true;
}

Outcome<bool> TokenStore::CheckRoom() const
{
    constexpr std::uintmax_t enough = 128 << 10;
    constexpr auto untold = static_cast<std::uintmax_t>(-1);
    std::error_code error;
    fs::space_info const disk = fs::space(folder, error);
    // Some file systems tell nothing of their size. GCC's library for Windows has no 0.
    bool const isTold = !error && disk.capacity != 0 && disk.capacity != untold;
    if (!isTold || (disk.available >= enough && disk.available != untold))
        return true;
    return Local("the disk of " + PathText(folder) + " is full", "make room on the disk");
}

Outcome<bool> TokenStore::Remove(std::string const& issuer, std::string const& clientId)
{
    fs::path const file = FileOf(issuer, clientId);
    state->Forget(file);
    if (!RemovePrivateFile(file))
        return Local(PathText(file) + " cannot be removed", "remove it");
    return true;
}

std::vector<Secret> TokenStore::RemoveSetAside(std::string const& issuer,
                                               std::string const& clientId,
                                               std::vector<fs::path>& left)
{
    std::vector<Secret> tokens;
    for (fs::path const& file : FilesSetAside(FileOf(issuer, clientId))) {
        // Also one that others may open, for which it was set aside.
        Secret const bytes(ReadFile(file, LargestLogin).bytes);
        auto const login = ReadLogin(*bytes);
        if (login && (login->issuer != issuer || login->clientId != clientId))
            continue;
        if (login)
            tokens.push_back(login->refreshToken);
        if (!RemovePrivateFile(file))
            left.push_back(file);
    }
    return tokens;
}

Outcome<std::unique_ptr<TokenStore::Lock>> TokenStore::Acquire(std::string const& issuer,
                                                               std::string const& clientId,
                                                               std::chrono::milliseconds limit)
{
    fs::path const file = FileOf(issuer, clientId);
    std::string reason;
    PreparePrivateFolder(folder, reason);
    auto turn = state->locks.Take(file, limit, reason);
    if (!turn)
        return Local(PathText(file) + ": " + reason, "see which program does not go on");
    return std::unique_ptr<Lock>(std::make_unique<HeldLock>(state, std::move(turn)));
}

Outcome<bool> TokenStore::HoldForHost(std::string const& issuer, std::string const& clientId,
                                      std::chrono::milliseconds limit)
{
    fs::path const file = FileOf(issuer, clientId);
    std::string reason;
    PreparePrivateFolder(folder, reason);
    if (!state->locks.HoldForHost(file, limit, reason))
        return Local(PathText(file) + ": " + reason, "see which program does not go on");
    return true;
}

void TokenStore::ReleaseForHost(std::string const& issuer, std::string const& clientId)
{
    state->locks.ReleaseForHost(FileOf(issuer, clientId));
}

} // namespace Halvorix::OpenId
