// hxsso-doctor: says why sign-in does not work for a program, and what to do.

#include <exception>
#include <iostream>

#include "common/Report.h"
#include "common/System.h"
#include "doctor/Diagnosis.h"

int main(int count, char** arguments)
{
    try {
        return Halvorix::Doctor::Run(Halvorix::Tools::BeginProgram(count, arguments));
    } catch (std::exception const& exception) {
        std::cerr << "hxsso-doctor: " << Halvorix::Tools::Presentable(exception.what()) << '\n';
        return 1;
    }
}
