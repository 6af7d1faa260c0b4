// What the main functions and the command lines of the hosts have in common.
#ifndef EXAMPLES_COMMON_HOST_PROGRAM_H
#define EXAMPLES_COMMON_HOST_PROGRAM_H

#include <filesystem>
#include <functional>

#include "common/host/failure.h"

namespace CLI {
class App;
}

namespace examples {

// The folder of the running program: where a host looks for what it was built with.
std::filesystem::path programFolder();

// Fills the variables that the app's options are bound to. False when the command line itself
// settles the matter: *exitStatus then says how the program ends, and the help or the complaint has
// been printed.
bool parseCommandLine(CLI::App& app, int argc, char** argv, int* exitStatus);

// Does the work of a program and returns its exit status. What the work throws is told on the error
// output in the program's name; a Failure brings its own status, anything else is `failed`.
int runProgram(const char* name, const std::function<ExitStatus()>& work);

}  // namespace examples

#endif
