#pragma once

#include "commands/RecordsCommand.h"

namespace quelt::host {

/// `decompile`: spells compiled binaries out.
class DecompileCommand : public RecordsCommand {
public:
    CLI::App& declare(CLI::App& application) override;
    [[nodiscard]] std::vector<HelpSection> helpSections() const override;

protected:
    [[nodiscard]] MakeLineConverter prepare() override;
};

} // namespace quelt::host
