#include "common/ModuleGraph.h"

#include <algorithm>
#include <utility>

#include "common/Files.h"
#include "common/LoaderSearch.h"
#include "common/System.h"
#include "common/Utf8.h"
#include "platform/Platform.h"

namespace Halvorix::Tools {

namespace {

namespace fs = std::filesystem;

// No process has more; a chain that was made to harm is cut.
constexpr std::size_t MostModules = 4096;
constexpr std::size_t MostLookups = 16384;
constexpr std::size_t MostQuestions = 1000000;
constexpr std::size_t MostMissing = 64;
constexpr std::uint64_t MostText = std::uint64_t{32} << 20U;
constexpr char const* EndOfSearch = ": the search for what is needed ends there";

} // namespace

char const* const ForStartOnly = "is for programs that need it at their start alone (DF_1_NOOPEN)";

std::string const& OwnMachine()
{
    static std::string const machine =
        ReadModuleImage(FromWide(Platform::ExecutableFile())).machine;
    return machine;
}

ModuleNeeds NeedsOf(MappedModule const& module, SymbolBudget& budget)
{
    OpenedFile const opened = OpenFile(module.file);
    if (opened.bytes == nullptr)
        return {};
    ModuleNeeds needs = ReadModuleNeeds(ByteView(*opened.bytes), budget);
    if (!needs.flaw.empty())
        needs.flaw.insert(0, Utf8(module.file.filename()) + ": ");
    return needs;
}

ModuleOffers OffersOf(MappedModule const& module, SymbolTest const& isWanted, SymbolBudget& budget)
{
    OpenedFile const opened = OpenFile(module.file);
    if (opened.bytes == nullptr)
        return {};
    ModuleOffers offers = ReadModuleOffers(ByteView(*opened.bytes), isWanted, budget);
    if (!offers.flaw.empty())
        offers.flaw.insert(0, Utf8(module.file.filename()) + ": ");
    return offers;
}

bool IsLibraryName(std::string const& name)
{
    std::string const library = Utf8(Platform::LibraryFileName());
    return Comparable(name) == Comparable(library) || name.rfind(library + ".", 0) == 0;
}

ModuleGraph::ModuleGraph(fs::path const& program, fs::path library)
    : programFolder(program.parent_path()), givenLibrary(std::move(library)),
      isPrivileged(IsPrivileged(program)), ownMachine(OwnMachine())
{
    environmentFolders = EnvironmentFolders(program, isPrivileged);
    if (!givenLibrary.empty())
        givenNames = {Utf8(givenLibrary.filename()), ReadModuleImage(givenLibrary).ownName};
    if (program.empty())
        return;
    ModuleImage image = ReadModuleImage(program);
    if (image.machine == ownMachine && image.flaw.empty()) {
        std::size_t const first = Add(program, std::move(image), Place::Named, NoModule);
        AddPreloaded(first);
        Follow(first);
    }
    isStarted = true;
}

// They come between the program and what it needs. What is not found is passed over.
void ModuleGraph::AddPreloaded(std::size_t program)
{
    if (modules[program].image.loader.empty())
        return; // a static one
    for (std::string const& name : PreloadedModules(modules[program].file, isPrivileged)) {
        Obstacle passedOver;
        std::size_t added = Find(name);
        if (added == NoModule)
            added = NamesPlace(name) ? Take(AsOpened(name), Place::Folder, program, passedOver)
                                     : Search(name, program, passedOver);
        if (added == NoModule)
            continue;
        names.emplace(Comparable(name), added);
        modules[program].needs.push_back(added);
    }
}

void ModuleGraph::NameDependencyFolder(fs::path const& folder)
{
    dependencyFolder = folder;
    firstDependent = modules.size();
}

std::size_t ModuleGraph::Find(std::string const& name) const
{
    auto const found = names.find(Comparable(name));
    return found == names.end() ? NoModule : found->second;
}

std::size_t ModuleGraph::Load(fs::path const& file, ModuleImage image, std::size_t loadedBy)
{
    std::size_t const module = Add(file, std::move(image), Place::Named, loadedBy);
    Follow(module);
    return module;
}

std::size_t ModuleGraph::LoadFor(std::size_t module, std::string const& name)
{
    std::size_t const added = modules.size();
    Resolve(name, module);
    Follow(added);
    return Find(name);
}

std::size_t ModuleGraph::Add(fs::path const& file, ModuleImage image, Place place,
                             std::size_t neededBy)
{
    std::size_t const module = modules.size();
    MappedModule added{
        file, std::move(image), place, neededBy == NoModule ? module : neededBy, {}, {}, {}};
    AddRunPaths(added, neededBy == NoModule ? nullptr : &modules[neededBy], isPrivileged);
    CountText(added);
    modules.push_back(std::move(added));
    std::string const ownName = OwnNameOf(modules.back());
    if (!ownName.empty())
        names.emplace(Comparable(ownName), module);
    return module;
}

// What is kept of each is limited; this is for all of them together.
void ModuleGraph::CountText(MappedModule const& module)
{
    // Even an empty name takes its place.
    constexpr std::size_t place = 64;
    text += module.image.runPath.size() + module.image.inheritedRunPath.size();
    for (std::string const& name : module.image.imports)
        text += place + name.size();
    for (auto const* folders : {&module.folders, &module.inheritedFolders})
        for (fs::path const& folder : *folders)
            text += place + folder.native().size() * sizeof(fs::path::value_type);
    if (limit.empty() && text > MostText)
        limit =
            std::string("the modules name more than 32 MiB of modules and folders") + EndOfSearch;
}

// Breadth first, as the loader: a list in place of a recursion, which somebody's
// chain of modules would overflow.
void ModuleGraph::Follow(std::size_t first)
{
    for (std::size_t i = first; i < modules.size() && limit.empty(); ++i) {
        if (modules[i].place == Place::System && !SystemModulesAreFollowed)
            continue;
        // What is found moves the list.
        std::vector<std::string> const imports = modules[i].image.imports;
        for (std::string const& name : imports) {
            if (limit.empty())
                Resolve(name, i);
        }
    }
}

void ModuleGraph::Resolve(std::string const& name, std::size_t needing)
{
    std::size_t const known = Find(name);
    if (known != NoModule) {
        modules[needing].needs.push_back(known);
        return;
    }
    if (NeedsNoFile(name) || lost.count(Comparable(name)) != 0)
        return;
    if (modules.size() >= MostModules)
        limit = "more than " + std::to_string(MostModules) + " modules are needed";
    else if (++lookups > MostLookups)
        limit = "more than " + std::to_string(MostLookups) + " names of modules are needed";
    else if (missing.size() >= MostMissing)
        limit = "more than " + std::to_string(MostMissing) + " modules are missing";
    if (!limit.empty()) {
        limit += EndOfSearch;
        return;
    }
    Obstacle obstacle;
    if (NamesPlace(name)) {
        obstacle.hint = "it is named by a place and not by a name: refused, nothing was opened";
    } else {
        std::size_t const found = Search(name, needing, obstacle);
        if (found != NoModule) {
            names.emplace(Comparable(name), found);
            modules[needing].needs.push_back(found);
        }
        if (found != NoModule || !limit.empty())
            return;
        std::error_code unknown;
        fs::path const beside = modules[needing].file.parent_path() / FileName(name);
        if (obstacle.hint.empty() && modules[needing].place != Place::System &&
            fs::exists(beside, unknown))
            obstacle.hint = HintForModuleBeside();
    }
    lost.insert(Comparable(name));
    missing.push_back({name, Utf8(modules[needing].file.filename()), needing,
                       std::move(obstacle.hint), std::move(obstacle.remedy)});
}

std::size_t ModuleGraph::Search(std::string const& name, std::size_t needing, Obstacle& obstacle)
{
    // One of another number is another library.
    bool const isGiven =
        std::any_of(givenNames.begin(), givenNames.end(), [&name](std::string const& given) {
            return Comparable(given) == Comparable(name);
        });
    std::vector<Candidate> const candidates =
        isGiven ? std::vector<Candidate>{{givenLibrary, Place::Folder}}
                : CandidatesFor(name, *this, needing);
    if (questions > MostQuestions) {
        limit = "modules are looked for in more than " + std::to_string(MostQuestions) + " places" +
                EndOfSearch;
        return NoModule;
    }
    for (Candidate const& candidate : candidates) {
        std::size_t const found = Take(candidate.file, candidate.place, needing, obstacle);
        if (found != NoModule || obstacle.endsSearch)
            return found;
    }
    return NoModule;
}

bool ModuleGraph::FolderIsThere(fs::path const& folder) const
{
    ++questions;
    auto const known = folders.find(folder.string());
    if (known != folders.end())
        return known->second;
    std::error_code unknown;
    return folders[folder.string()] = fs::is_directory(folder, unknown);
}

// NoModule if this is not the file. What is for another machine the loader passes
// over; what is no module at all ends its search.
std::size_t ModuleGraph::Take(fs::path const& file, Place place, std::size_t needing,
                              Obstacle& obstacle)
{
    if (!FolderIsThere(file.parent_path()))
        return NoModule;
    OpenedFile const opened = OpenFile(file);
    std::string const where = "the one in " + Utf8(file.parent_path()) + " ";
    if (opened.bytes == nullptr) {
        if (opened.reason != "does not exist" && (obstacle.hint.empty() || opened.endsSearch))
            obstacle = {where + opened.reason,
                        opened.endsSearch ? "remove or replace " + Utf8(file) : opened.remedy,
                        opened.endsSearch};
        return NoModule;
    }
    ModuleImage image = ReadModuleImage(ByteView(*opened.bytes));
    bool const isForStart = image.isForStartOnly && isStarted;
    if (image.format == NativeFormat && image.machine == ownMachine && image.flaw.empty() &&
        image.refusal.empty() && !isForStart)
        return Add(file, std::move(image), place, needing);
    if (image.format == NativeFormat && image.machine != ownMachine) {
        obstacle = {where + "is for " + image.machine, {}, false};
        return NoModule;
    }
    obstacle.hint = where + (!image.flaw.empty()      ? "is damaged: " + image.flaw
                             : !image.refusal.empty() ? image.refusal
                             : isForStart             ? ForStartOnly
                                                      : "is no module");
    obstacle.remedy = "remove or replace " + Utf8(file);
    obstacle.endsSearch = true;
    return NoModule;
}

std::vector<std::size_t> ModuleGraph::ClosureOf(std::size_t module) const
{
    std::vector<std::size_t> closure{module};
    std::vector<bool> seen(modules.size());
    seen[module] = true;
    for (std::size_t i = 0; i < closure.size(); ++i) {
        for (std::size_t const needed : modules[closure[i]].needs) {
            if (seen[needed])
                continue;
            seen[needed] = true;
            closure.push_back(needed);
        }
    }
    return closure;
}

} // namespace Halvorix::Tools
