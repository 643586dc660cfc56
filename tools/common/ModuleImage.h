#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "common/ByteView.h"

namespace Halvorix::Tools {

enum class ImageFormat { None, Elf, Pe };

/// What the headers of a module say, read without loading it. Of a format of
/// another system only the format is told.
struct ModuleImage {
    ImageFormat format = ImageFormat::None;
    bool isModule = false; ///< and no program
    std::string machine;   ///< "x86-64", say; for two images of one format comparable
    std::string flaw;      ///< why nothing more could be read; empty if all was

    std::vector<std::string> imports; ///< names of the modules that it needs
    std::string ownName;              ///< by which others need it; may be empty
    /// Folders in which the module's own imports are looked for.
    std::string runPath;
    /// The older kind, which counts only where there is none of the newer one.
    std::string inheritedRunPath;
    std::string loader; ///< that starts a program; may have no name
    /// Why the loader takes it for no module that another one needs; empty: it does.
    std::string refusal;
    bool hasLoader = false;           ///< for a program: the system's loader starts it
    bool hasNoDefaultFolders = false; ///< of the system, nor what the cache has there
    bool isForStartOnly = false;      ///< no running process may load it
};

/// A name that a module takes from another one.
struct Import {
    std::string symbol;
    std::string module; ///< empty: any
};

struct NeededVersion {
    std::string module;
    std::string version;
};

/// What a module takes from others.
struct ModuleNeeds {
    std::vector<Import> imports; ///< without which it is not loaded
    std::vector<NeededVersion> versions;
    std::string flaw; ///< why not all of it could be read; empty if all was
};

/// An export in whose place that of another module is taken.
struct Forward {
    std::string symbol;
    std::string target; ///< "Module.symbol" or "Module.#number"
};

/// What a module has for others.
struct ModuleOffers {
    std::vector<std::string> exports; ///< those that were asked for
    std::vector<Forward> forwards;    ///< of these
    std::vector<std::string> versions;
    std::string flaw; ///< why not all of it could be read; empty if all was
};

using SymbolTest = std::function<bool(std::string const&)>;

/// What may be read of symbols, of all modules together: a limit for each alone would let
/// many of them take any time and memory.
class SymbolBudget {
public:
    /// Symbols, relocations and versions; false if that is too much.
    bool TakeRecords(std::uint64_t count);
    /// A name that is kept.
    bool TakeName(std::size_t size);

    /// The line of what was too much; empty if nothing was.
    std::string const& Limit() const { return limit; }

private:
    std::uint64_t records = 0;
    std::uint64_t text = 0;
    std::string limit;
};

/// What of a runtime lies within the module.
struct HeldRuntimes {
    bool cpp = false;
    bool jsoncpp = false;
    bool isLibstdcxx = false; ///< the one for C++
};

// None of these throws for what the bytes are.
ModuleImage ReadModuleImage(ByteView const& bytes);
/// Of an image of this system that has no flaw.
ModuleNeeds ReadModuleNeeds(ByteView const& bytes, SymbolBudget& budget);
/// Likewise. Of the exports only what the test accepts is kept.
ModuleOffers ReadModuleOffers(ByteView const& bytes, SymbolTest const& isWanted,
                              SymbolBudget& budget);
/// Likewise, of the symbols that it has for itself: those of its whole table, where that was
/// kept. None of them where it cannot be read.
std::vector<std::string> ReadOwnSymbols(ByteView const& bytes, SymbolTest const& isWanted,
                                        SymbolBudget& budget);
/// Reads the whole file.
HeldRuntimes LookForRuntimes(ByteView const& bytes);

/// The image of a file; of no format, with the reason as its flaw, if it cannot be
/// read.
ModuleImage ReadModuleImage(std::filesystem::path const& file);

// No module needs more; what says so is damaged, or made to harm.
constexpr std::size_t MostImports = 1024;
constexpr std::size_t MostSymbols = 1000000;
constexpr std::uint64_t MostRecords = 4000000;
constexpr std::uint64_t MostSymbolText = std::uint64_t{64} << 20U;
constexpr std::uint64_t LargestModule = std::uint64_t{1} << 30U;

/// Keeps the names at these places that are asked for. The answer is the limit that was
/// reached.
std::string TakeWanted(ByteView const& bytes, std::vector<std::uint64_t> places,
                       std::size_t longest, SymbolTest const& isWanted, SymbolBudget& budget,
                       ModuleOffers& offers);

// By the reader of this system's format; the bytes begin with its mark.
extern ImageFormat const NativeFormat;
void ReadNativeImage(ByteView const& bytes, ModuleImage& image);
void ReadNativeNeeds(ByteView const& bytes, SymbolBudget& budget, ModuleNeeds& needs);
void ReadNativeOffers(ByteView const& bytes, SymbolTest const& isWanted, SymbolBudget& budget,
                      ModuleOffers& offers);
std::vector<std::string> ReadNativeOwnSymbols(ByteView const& bytes, SymbolTest const& isWanted,
                                              SymbolBudget& budget);

} // namespace Halvorix::Tools
