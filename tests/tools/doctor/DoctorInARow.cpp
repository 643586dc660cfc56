// The doctor, one run after the other in one process: each line of the standard input
// is a JSON array of arguments, and behind what it writes stands a line with its exit
// status. For tests that look at thousands of installations.

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <json/reader.h>
#include <json/value.h>

#include "doctor/Diagnosis.h"

int main()
{
    for (std::string line; std::getline(std::cin, line);) {
        Json::Value words;
        Json::Reader().parse(line, words);
        std::vector<std::filesystem::path> arguments;
        for (Json::Value const& word : words)
            arguments.push_back(std::filesystem::u8path(word.asString()));
        int const status = Halvorix::Doctor::Run(arguments);
        std::cout << "exit status " << status << std::endl;
    }
}
