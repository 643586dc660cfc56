#include "common/Host.h"

#include <algorithm>
#include <vector>

#include "common/LoaderSearch.h"
#include "common/ModuleGraph.h"
#include "common/System.h"
#include "common/Utf8.h"
#include "platform/Platform.h"

namespace Halvorix::Tools {

namespace {

namespace fs = std::filesystem;

bool IsRegularFile(fs::path const& file)
{
    std::error_code unknown;
    return fs::is_regular_file(file, unknown);
}

// A library may be there under its versioned name alone.
fs::path LibraryIn(fs::path const& folder)
{
    std::string const name = Utf8(Platform::LibraryFileName());
    if (IsRegularFile(folder / fs::u8path(name)))
        return folder / fs::u8path(name);
    std::vector<fs::path> versioned;
    std::error_code unknown;
    for (fs::directory_iterator entry(folder, unknown), end; !unknown && entry != end;
         entry.increment(unknown))
        if (Utf8(entry->path().filename()).rfind(name + ".", 0) == 0 &&
            IsRegularFile(entry->path()))
            versioned.push_back(entry->path());
    auto const first = std::min_element(versioned.begin(), versioned.end());
    return first == versioned.end() ? fs::path() : *first;
}

fs::path FirstFile(std::vector<Candidate> const& candidates)
{
    for (Candidate const& candidate : candidates)
        if (IsRegularFile(candidate.file))
            return candidate.file;
    return {};
}

} // namespace

Host ThisProgramAsHost()
{
    fs::path const program = FromWide(Platform::ExecutableFile());
    fs::path const here = program.parent_path();
    for (fs::path const& folder : {here, here / HXSSO_LIBRARY_FOLDER})
        if (fs::path const library = LibraryIn(folder); !library.empty())
            return {program, library, {}, true};
    return {program, {}, {}, true};
}

FoundLibrary FindLibraryOf(fs::path const& program)
{
    ModuleGraph const graph(program);
    FoundLibrary found;
    for (std::size_t i = 1; i < graph.modules.size(); ++i)
        if (IsLibraryName(Utf8(graph.modules[i].file.filename())))
            found.file = graph.modules[i].file;
    if (!found.file.empty())
        return found;
    for (MissingModule const& missing : graph.missing) {
        if (IsLibraryName(missing.name)) {
            found.name = missing.name;
            found.hint = missing.hint;
            found.remedy = missing.remedy.empty()
                               ? RemedyForMissing(missing.name, graph, missing.needing)
                               : missing.remedy;
            // One that the loader passes over is told as what it is.
            found.file = FirstFile(CandidatesFor(missing.name, graph, missing.needing));
            return found;
        }
    }
    // A program that loads it by itself does so from its own folder, or by its name.
    found.file = LibraryIn(program.parent_path());
    found.name = Utf8(Platform::LibraryFileName());
    // What is not found may be what brings it.
    found.isNeeded = graph.modules.empty() || !graph.missing.empty() || !graph.limit.empty();
    if (!found.file.empty() || graph.modules.empty())
        return found;
    found.file = FirstFile(CandidatesFor(found.name, graph, 0));
    return found;
}

} // namespace Halvorix::Tools
