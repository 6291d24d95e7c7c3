// Writes the manual page of quelt-migrate and its completions for the shells into a folder.

#include "documentation/Completions.h"
#include "documentation/ManPage.h"

#include <fstream>
#include <iostream>

namespace {

bool write(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) {
        std::cerr << "quelt-migrate-docs: cannot write " << path << '\n';
    }
    return static_cast<bool>(file);
}

} // namespace

int main(int argumentCount, char** arguments) {
    using namespace quelt::host;
    if (argumentCount != 2) {
        std::cerr << "usage: quelt-migrate-docs FOLDER\n";
        return 2;
    }
    const std::string folder = std::string(arguments[1]) + "/";
    const CommandLine commandLine;
    const ApplicationDescription description = describe(commandLine);
    const std::string& program = description.application.name;
    const bool isWritten = write(folder + program + ".1", manPage(description, QUELT_VERSION)) &&
                           write(folder + program + ".bash", bashCompletion(description)) &&
                           write(folder + "_" + program, zshCompletion(description)) &&
                           write(folder + program + ".fish", fishCompletion(description));
    return isWritten ? 0 : 1;
}
