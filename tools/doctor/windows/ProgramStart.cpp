#include "doctor/ProgramStart.h"

namespace Halvorix::Doctor {

// Any file may be executed there, and the system has one loader.
ProgramStart StartOf(std::filesystem::path const&, Tools::ModuleImage const&) { return {}; }

} // namespace Halvorix::Doctor
