// Runs a fuzzer's committed inputs in a build without the fuzzing engine.

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/Property.h"

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: " << argv[0] << " FOLDER\n";
        return 2;
    }
    // Absolute: a fuzzer may change the current folder.
    std::vector<std::filesystem::path> files;
    for (auto const& entry :
         std::filesystem::directory_iterator(std::filesystem::absolute(argv[1])))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (std::filesystem::path const& file : files) {
        // Named first, so that the last name is the one that failed.
        std::cout << file.filename().string() << std::endl;
        std::ifstream stream(file, std::ios::binary);
        std::ostringstream content;
        content << stream.rdbuf();
        std::string const input = content.str();
        LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(input.data()), input.size());
    }
    std::cout << "inputs replayed: " << files.size() << std::endl;
    return files.empty() ? 1 : 0;
}
