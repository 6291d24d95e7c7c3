#pragma once

#include "commands/RecordsCommand.h"

namespace quelt::host {

/// `compile`: turns effectivities that are spelt out into compiled binaries.
class CompileCommand : public RecordsCommand {
public:
    CLI::App& declare(CLI::App& application) override;
    [[nodiscard]] std::vector<HelpSection> helpSections() const override;

protected:
    [[nodiscard]] MakeLineConverter prepare() override;
};

} // namespace quelt::host
