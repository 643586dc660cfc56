// The doctor, one run after the other in one process: each line of the standard input is a
// JSON object with its arguments, the directory that it runs in and variables of its
// environment, and behind what it writes stands a line with its exit status.

#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <json/reader.h>
#include <json/value.h>

#include "doctor/Diagnosis.h"
#include "framework/Variable.h"

int main()
{
    for (std::string line; std::getline(std::cin, line);) {
        Json::Value request;
        Json::Reader().parse(line, request);
        std::filesystem::current_path(std::filesystem::u8path(request["directory"].asString()));
        for (std::string const& name : request["environment"].getMemberNames())
            Rig::SetVariable(name, request["environment"][name].asString());
        std::vector<std::filesystem::path> arguments;
        for (Json::Value const& word : request["arguments"])
            arguments.push_back(std::filesystem::u8path(word.asString()));
        int const status = Halvorix::Doctor::Run(arguments);
        std::cout << "exit status " << status << std::endl;
    }
}
