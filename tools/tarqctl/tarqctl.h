#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace tarq::tools {

// The whole tool: reads the command line, without the program's name, runs the command and returns
// the exit code. coloured: out is a terminal that wants colours. May end the process itself, when
// the time is up or a followed log is left with Ctrl-C.
int runTarqctl(const std::vector<std::string>& arguments, bool coloured, std::istream& in,
               std::ostream& out, std::ostream& err);

}  // namespace tarq::tools
