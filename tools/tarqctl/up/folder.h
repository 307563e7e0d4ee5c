// The folders that describe boards, and what a start should know of their files.
#pragma once

#include <functional>
#include <string>

namespace tarq::tools {

// A known board by its name, or any other folder. Throws a Failure for what is none. An absolute
// path. A known name counts before a folder of that name here.
std::string boardFolder(const std::string& nameOrFolder);

// Says what is wrong with the files that the daemon reads when it starts, of which its log has no
// more than that they cannot be opened. On the board of this process. say is given a sentence for
// each file, and nothing for one that can be read.
void tellBrokenFiles(const std::function<void(const std::string&)>& say);

}  // namespace tarq::tools
