#pragma once

#include <string>
#include <vector>

namespace quelt::host {

/// What the platform asks of a program before its first input and output: a broken pipe is an error and no
/// signal; the standard streams pass bytes as they are; a console shows UTF-8. The end of the scope gives the
/// console back as it was.
class ProgramScope {
public:
    ProgramScope();
    ~ProgramScope(); // NOLINT(performance-trivially-destructible): not everywhere
    ProgramScope(const ProgramScope&) = delete;
    ProgramScope& operator=(const ProgramScope&) = delete;

    /// Whether a terminal on standard error understands colours.
    [[nodiscard]] bool hasColours() const noexcept { return m_hasColours; }

private:
    bool m_hasColours = false;
};

/// Gives the console back as it was before the ProgramScope, for a program that ends without leaving the
/// scope.
void restoreConsole() noexcept;

/// The arguments behind the program's name, in UTF-8.
[[nodiscard]] std::vector<std::string> programArguments(int count, char** arguments);

/// What a person types to end the input, for messages.
[[nodiscard]] const char* endOfInputKeys() noexcept;

/// Whether a person sits at the other end of a standard stream (0, 1 or 2).
[[nodiscard]] bool isTerminal(int descriptor);

} // namespace quelt::host
