#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace Halvorix::SSOServices {
class ISSOClientFactory;
}

// What the benchmarks need of the operating system. Each system has a folder of
// its own beside this header.
namespace Bench {

/// Where the executable, the library and the bench's files lie.
std::filesystem::path ThisFolder();

/// The plugin's file in the folder that the bench's compatibility file names.
std::filesystem::path PluginFile();

using FactoryProcedure = std::shared_ptr<Halvorix::SSOServices::ISSOClientFactory> (*)();

/// Maps the plugin and finds its procedure by hand; the program ends where that
/// fails.
FactoryProcedure LoadPlugin(std::filesystem::path const& file);

/// Runs a program of this folder to its end and answers its standard output.
/// Throws unless it ends with status 0.
std::string Run(std::string const& program, std::vector<std::string> const& arguments);

/// Time that counts for this process, and for those that it started and that have ended: of the
/// processor, which nobody else takes away, or of the clock where the system's steps are too
/// coarse.
std::chrono::nanoseconds OwnTime();
std::chrono::nanoseconds TimeWithChildren();

/// How often this process has read from files, pipes and sockets, but for this function's own
/// reads; 0 where the system does not count.
long long ReadsSoFar();

} // namespace Bench
