#pragma once

#include <map>
#include <string>
#include <vector>

namespace quelt::host::test {

/// What a program is started with.
struct Start {
    std::vector<std::string> arguments;
    /// What it reads from a pipe, unless `inputPath` names a file.
    std::string input = {};
    std::string inputPath = {};
    /// Where its output goes, instead of into a pipe that is read to the end.
    std::string outputPath = {};
    bool appendsOutput = false;
    /// Closes the pipe before the program writes the first time.
    bool closesOutput = false;
    /// Standard input, and standard error, are a terminal.
    bool hasInputTerminal = false;
    bool hasMessageTerminal = false;
    /// Variables of the environment to set.
    std::map<std::string, std::string> environment = {};
};

/// How it ended.
struct End {
    /// The exit status, or minus the signal that ended it.
    int status = 0;
    std::string output = {};
    std::string messages = {};
};

/// Runs the built quelt-migrate to its end.
[[nodiscard]] End run(const Start& start);

} // namespace quelt::host::test
